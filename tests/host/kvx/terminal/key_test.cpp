// Bytes of a terminal as keys.
#include "host/kvx/terminal/key.h"

#include <gtest/gtest.h>

namespace {

using kvx::Key;
using Keys = std::vector<Key>;

TEST(Key, IsReadFromWhatATerminalSends)
{
    const struct {
        const char* bytes;
        Keys keys;
        const char* why;
    } facts[] = {
        {"", {}, "nothing typed"},
        {" ", {Key::pause}, "space"},
        {"[]", {Key::loopIn, Key::loopOut}, "two at once"},
        {"l", {Key::loop}, "a letter"},
        {"+-", {Key::faster, Key::slower}, "rate"},
        {"=_", {Key::faster, Key::slower}, "the same places without and with shift"},
        {"<>", {Key::lower, Key::higher}, "pitch"},
        {"q", {Key::quit}, "quit"},
        {"xyz\r\n\t", {}, "keys that mean nothing"},
        {"\x1b[A\x1b[B\x1b[C\x1b[D", {Key::louder, Key::softer, Key::forward, Key::back}, "arrows"},
        {"\x1bOA\x1bOB\x1bOC\x1bOD",
         {Key::louder, Key::softer, Key::forward, Key::back},
         "in the other mode"},
        {"\x1b[1;5C", {Key::forward}, "with a modifier held"},
        {"\x1b[3~q", {Key::quit}, "a key of no meaning is skipped whole"},
        {"\x1b[15~[", {Key::loopIn}, "so is a function key: its bracket is none of ours"},
        {"\x1bq", {}, "a key with Alt held is another one"},
        {"\x1b\x1b[A", {Key::louder}, "a lone Escape in front"},
        {"\xc3\xa4 ", {Key::pause}, "characters of more bytes than one"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::KeyReader().read(fact.bytes), fact.keys) << fact.why;
}

TEST(Key, MayArriveInPieces)
{
    for (const std::string sequence : {"\x1b[C", "\x1bOC", "\x1b[1;2C"}) {
        kvx::KeyReader reader;
        for (std::size_t i = 0; i + 1 < sequence.size(); ++i)
            EXPECT_EQ(reader.read(sequence.substr(i, 1)), Keys());
        EXPECT_EQ(reader.read("C"), Keys({Key::forward}));
        EXPECT_EQ(reader.read("q"), Keys({Key::quit})) << "and then starts anew";
    }
}

TEST(Key, HasItsPlaceInTheHelp)
{
    for (const char* name : {"space", "arrows", "[ ]", "l loop", "+ -", "< >", "q quit"})
        EXPECT_NE(std::string(kvx::keyHelp()).find(name), std::string::npos) << name;
}

} // namespace
