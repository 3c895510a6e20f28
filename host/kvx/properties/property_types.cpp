#include "host/kvx/properties/property_types.h"

#include <algorithm>
#include <iterator>

namespace kvx {
namespace {

constexpr Extent one = Extent::one, many = Extent::many;

constexpr PropertyType value(Code selector, Form form, Extent extent = one)
{
    return {selector, form, extent, Asks::nothing};
}
constexpr PropertyType question(Code selector, Asks asks, Form form = Form::text)
{
    return {selector, form, one, asks};
}

// clang-format off
constexpr PropertyType types[] = {
    // ---- properties of every object ----
    value('clas', Form::code),      value('stdv', Form::object),    value('ownd', Form::object, many),
    value('oplg', Form::reference), value('lnam', Form::reference), value('lmak', Form::reference),
    value('lchn', Form::reference), value('lccn', Form::reference), value('lcnn', Form::reference),

    // ---- properties of the system ----
    value('dev#', Form::object, many),
    value('dIn ', Form::object), value('dOut', Form::object), value('sOut', Form::object),
    value('mast', Form::flag),   value('inot', Form::flag),   value('euid', Form::number),
    value('pmut', Form::flag),   value('slep', Form::flag),   value('unld', Form::flag),
    value('hogr', Form::flag),   value('user', Form::flag),   value('stmo', Form::flag),
    value('bbvs', Form::single), value('bbvd', Form::single), value('bbd#', Form::range),
    question('bv2d', Asks::inPlace, Form::single), question('bd2v', Asks::inPlace, Form::single),
    value('bvtf', Form::number),
    question('duid', Asks::byReference), question('pibi', Asks::byReference),
    question('rnlp', Asks::byReference),

    // ---- properties of devices: identity ----
    value('plug', Form::integer),
    value('uid ', Form::reference), value('muid', Form::reference), value('capp', Form::reference),
    value('name', Form::text),      value('makr', Form::text),
    value('chnm', Form::text),      value('ccnm', Form::text),      value('cnnm', Form::text),
    value('tran', Form::code),      value('akin', Form::object, many), value('clkd', Form::number),
    value('dflt', Form::flag),      value('sflt', Form::flag),      value('hidn', Form::flag),
    question('icon', Asks::byReference),

    // ---- properties of devices: operation ----
    value('livn', Form::flag),   value('diff', Form::flag),  value('goin', Form::flag),
    value('gone', Form::flag),   value('over', Form::flag),  value('oink', Form::integer),
    value('ltnc', Form::number), value('saft', Form::number),
    value('fsiz', Form::number), value('fsz#', Form::range), value('vfsz', Form::number),
    value('bsiz', Form::number), value('bsz#', Form::range), value('rbuf', Form::bufferList),
    value('mix?', Form::flag),   value('ncyc', Form::single), question('suse', Asks::byReference),
    value('nsrt', Form::real),   value('asrt', Form::real),  value('nsr#', Form::range, many),

    // ---- properties of devices: streams and formats ----
    value('stm#', Form::object, many), value('slay', Form::bufferList),
    value('sfmt', Form::format),       value('sfm#', Form::format, many),
    question('sfm?', Asks::whether, Form::format), question('sfmm', Asks::inPlace, Form::format),
    value('dch2', Form::number, many), value('srnd', Form::channelLayout),

    // ---- properties of devices: controls ----
    value('jack', Form::flag),
    value('volm', Form::single), value('vold', Form::single), value('vdb#', Form::range),
    question('v2db', Asks::inPlace, Form::single), question('db2v', Asks::inPlace, Form::single),
    value('vctf', Form::number), value('span', Form::single), value('spn#', Form::number, many),
    value('mute', Form::flag),   value('solo', Form::flag),   value('thru', Form::flag),
    value('ssrc', Form::code),   value('ssc#', Form::code, many),
    question('sscn', Asks::byCode), question('lscn', Asks::byReference),
    value('csrc', Form::code),   value('csc#', Form::code, many),
    question('cscn', Asks::byCode), question('lcsn', Asks::byReference),
    value('thrs', Form::flag),
    value('mvsc', Form::single), value('mvdb', Form::single), value('mvd#', Form::range),
    question('mv2d', Asks::inPlace, Form::single), question('mv2s', Asks::inPlace, Form::single),
    value('mspn', Form::single), value('msp#', Form::number, many),
    value('mdds', Form::code),   value('mdd#', Form::code, many),
    question('mddn', Asks::byCode), question('mddc', Asks::byReference),
    value('nlvl', Form::code),   value('nlv#', Form::code, many),
    question('cnlv', Asks::byCode), question('lcnl', Asks::byReference),
    value('isub', Form::flag),
    value('svlm', Form::single), value('svld', Form::single), value('svd#', Form::range),
    question('sv2d', Asks::inPlace, Form::single), question('sd2v', Asks::inPlace, Form::single),
    value('smut', Form::flag),

    // ---- properties of streams ----
    value('sdir', Form::number), value('term', Form::code), value('schn', Form::number),
    value('sfma', Form::rangedFormat, many),
    value('pft ', Form::format), value('pft#', Form::format, many), value('pfta', Form::rangedFormat, many),
    question('pft?', Asks::whether, Form::format), question('pftm', Asks::inPlace, Form::format),
};
// clang-format on

} // namespace

PropertyTypes propertyTypes() { return {types, std::size(types)}; }

const PropertyType* findPropertyType(Code selector)
{
    const auto* found =
        std::find_if(std::begin(types), std::end(types),
                     [selector](const PropertyType& type) { return type.selector == selector; });
    return found == std::end(types) ? nullptr : found;
}

} // namespace kvx
