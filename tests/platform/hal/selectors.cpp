#include "tests/platform/hal/selectors.h"

namespace haltest {

// clang-format off
const std::vector<Selector> systemSelectors = {
    {'dev#', Kind::words}, {'dIn ', Kind::word}, {'dOut', Kind::word}, {'sOut', Kind::word}, {'duid', Kind::translation},
    {'mast', Kind::word}, {'inot', Kind::word}, {'euid', Kind::word}, {'pmut', Kind::word}, {'slep', Kind::word},
    {'unld', Kind::word}, {'hogr', Kind::word}, {'user', Kind::word}, {'stmo', Kind::word}, {'rnlp', Kind::record},
    {'pibi', Kind::translation}, {'bbvs', Kind::single}, {'bbvd', Kind::single}, {'bbd#', Kind::range},
    {'bv2d', Kind::single}, {'bd2v', Kind::single}, {'bvtf', Kind::word},
    {'clas', Kind::word}, {'stdv', Kind::word}, {'oplg', Kind::string}, {'lnam', Kind::string}, {'lmak', Kind::string},
    {'ownd', Kind::words},
};

const std::vector<Selector> deviceSelectors = {
    {'clas', Kind::word}, {'stdv', Kind::word}, {'oplg', Kind::string}, {'ownd', Kind::words},
    {'lnam', Kind::string}, {'lmak', Kind::string}, {'lchn', Kind::string}, {'lccn', Kind::string}, {'lcnn', Kind::string},
    {'name', Kind::text}, {'makr', Kind::text}, {'chnm', Kind::text}, {'ccnm', Kind::text}, {'cnnm', Kind::text},
    {'plug', Kind::word}, {'capp', Kind::string}, {'uid ', Kind::string}, {'muid', Kind::string}, {'tran', Kind::word},
    {'akin', Kind::words}, {'clkd', Kind::word}, {'livn', Kind::word}, {'diff', Kind::word}, {'goin', Kind::word},
    {'gone', Kind::word}, {'dflt', Kind::word}, {'sflt', Kind::word}, {'over', Kind::word}, {'oink', Kind::word},
    {'ltnc', Kind::word}, {'saft', Kind::word}, {'fsiz', Kind::word}, {'fsz#', Kind::range}, {'vfsz', Kind::word},
    {'bsiz', Kind::word}, {'bsz#', Kind::range}, {'rbuf', Kind::record}, {'mix?', Kind::word}, {'ncyc', Kind::single},
    {'suse', Kind::record}, {'nsrt', Kind::real}, {'asrt', Kind::real}, {'nsr#', Kind::ranges},
    {'stm#', Kind::words}, {'slay', Kind::record}, {'sfmt', Kind::format}, {'sfm#', Kind::formats},
    {'sfm?', Kind::format}, {'sfmm', Kind::format}, {'dch2', Kind::record}, {'srnd', Kind::record},
    {'icon', Kind::record}, {'hidn', Kind::word}, {'jack', Kind::word},
    {'volm', Kind::single}, {'vold', Kind::single}, {'vdb#', Kind::range}, {'v2db', Kind::single}, {'db2v', Kind::single},
    {'vctf', Kind::word}, {'span', Kind::single}, {'spn#', Kind::record}, {'mute', Kind::word}, {'solo', Kind::word},
    {'thru', Kind::word}, {'ssrc', Kind::word}, {'ssc#', Kind::words}, {'sscn', Kind::translation},
    {'lscn', Kind::translation}, {'csrc', Kind::word}, {'csc#', Kind::words}, {'cscn', Kind::translation},
    {'lcsn', Kind::translation}, {'thrs', Kind::word}, {'mvsc', Kind::single}, {'mvdb', Kind::single},
    {'mvd#', Kind::range}, {'mv2d', Kind::single}, {'mv2s', Kind::single}, {'mspn', Kind::single},
    {'msp#', Kind::record}, {'mdds', Kind::word}, {'mdd#', Kind::words}, {'mddc', Kind::translation},
    {'mddn', Kind::translation}, {'nlvl', Kind::word}, {'nlv#', Kind::words}, {'lcnl', Kind::translation},
    {'cnlv', Kind::translation}, {'isub', Kind::word}, {'svlm', Kind::single}, {'svld', Kind::single},
    {'svd#', Kind::range}, {'sv2d', Kind::single}, {'sd2v', Kind::single}, {'smut', Kind::word},
};

const std::vector<Selector> streamSelectors = {
    {'clas', Kind::word}, {'stdv', Kind::word}, {'sdir', Kind::word}, {'term', Kind::word}, {'schn', Kind::word},
    {'ltnc', Kind::word}, {'sfmt', Kind::format}, {'sfma', Kind::ranged}, {'pft ', Kind::format}, {'pfta', Kind::ranged},
    {'pft#', Kind::formats}, {'pft?', Kind::format}, {'pftm', Kind::format}, {'lnam', Kind::string},
    {'oplg', Kind::string}, {'ownd', Kind::words},
};
// clang-format on

} // namespace haltest
