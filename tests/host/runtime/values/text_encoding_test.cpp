#include "host/runtime/values/text_encoding.h"

#include "abi/host_values.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>

namespace {

using namespace std::string_literals;
using host::convertText;

TEST(TextEncoding, ConvertsEachFact)
{
    const struct {
        std::string bytes;
        std::uint32_t from, to;
        std::string result;
        const char* why;
    } facts[] = {
        // clang-format off
        // bytes                 from                   to                     result                    why
        {"",                     encodingMacRoman,      encodingUTF8,          "",                       "an empty text"},
        {"a\0b"s,                encodingASCII,         encodingUTF8,          "a\0b"s,                  "zero is a character"},
        {"\xC3\xA9",             encodingUTF8,          encodingMacRoman,      "\x8E",                   "e with an acute accent"},
        {"e\xCC\x81",            encodingUTF8,          encodingMacRoman,      "\x8E",                   "a letter and its accent become one byte"},
        {"\xCE\xA9",             encodingUTF8,          encodingMacRoman,      "\xBD",                   "omega"},
        {"\xE2\x84\xA6",         encodingUTF8,          encodingMacRoman,      "\xBD",                   "the ohm sign is composed to omega"},
        {"\xF0\x9F\x98\x80",     encodingUTF8,          encodingMacRoman,      "?",                      "one '?' for one missing character"},
        {"\x80\x9F\xA0\xFF",     encodingWindowsLatin1, encodingUTF16,         "\xAC\x20\x78\x01\xA0\x00\xFF\x00"s, "both ends of the Windows part, then Latin 1"},
        {"\x81",                 encodingWindowsLatin1, encodingUTF32,         "\x81\0\0\0"s,            "an unassigned byte is a control character"},
        {"\xE2\x82\xAC\xC3\xBF", encodingUTF8,          encodingWindowsLatin1, "\x80\xFF",               "the euro sign, and y with a diaeresis"},
        {"\xCC\x8C",             encodingUTF8,          encodingWindowsLatin1, "?",                      "an accent without a letter has no byte"},
        {"\x7F\x80",             encodingASCII,         encodingUTF8,          "\x7F\xEF\xBF\xBD",       "7F is the last ASCII byte"},
        {"\xC3\xA9z",            encodingUTF8,          encodingASCII,         "?z",                     "ASCII has no accented letters"},
        {"\xF0\x9F\x98\x80",     encodingUTF8,          encodingUTF16,         "\x3D\xD8\x00\xDE"s,      "a surrogate pair"},
        {"\x3D\xD8\x00\xDE"s,    encodingUTF16,         encodingUTF8,          "\xF0\x9F\x98\x80",       "a surrogate pair to UTF-8"},
        {"\xFF\xFF"s,            encodingUTF16,         encodingUTF8,          "\xEF\xBF\xBF",           "the last UTF-16 unit"},
        {"\x3D\xD8\x41\x00"s,    encodingUTF16,         encodingUTF8,          "\xEF\xBF\xBD" "A",       "a high surrogate before a letter"},
        {"\x41\x00\x3D\xD8"s,    encodingUTF16,         encodingUTF8,          "A\xEF\xBF\xBD",          "a high surrogate at the end"},
        {"\x00\xDE\x3D\xD8"s,    encodingUTF16,         encodingUTF8,          "\xEF\xBF\xBD\xEF\xBF\xBD","a low surrogate before a high one"},
        {"\x41\x00\x42"s,        encodingUTF16,         encodingUTF8,          "A\xEF\xBF\xBD",          "half a UTF-16 unit"},
        {"\x00\xF6\x01\x00"s,    encodingUTF32,         encodingUTF8,          "\xF0\x9F\x98\x80",       "a character above U+FFFF"},
        {"\xFF\xFF\x10\x00"s,    encodingUTF32,         encodingUTF8,          "\xF4\x8F\xBF\xBF",       "the last code point"},
        {"\x00\x00\x11\x00"s,    encodingUTF32,         encodingUTF8,          "\xEF\xBF\xBD",           "one past the last code point"},
        {"\x00\xD8\x00\x00"s,    encodingUTF32,         encodingUTF8,          "\xEF\xBF\xBD",           "a surrogate in UTF-32"},
        {"\x41\x00\x00\x00\x42"s,encodingUTF32,         encodingUTF8,          "A\xEF\xBF\xBD",          "a quarter of a UTF-32 unit"},
        {"a\xFF" "b",            encodingUTF8,          encodingUTF8,          "a\xEF\xBF\xBD" "b",      "a byte that UTF-8 never uses"},
        {"\xC3",                 encodingUTF8,          encodingUTF8,          "\xEF\xBF\xBD",           "an incomplete character"},
        {"\xE2\x82",             encodingUTF8,          encodingUTF16,         "\xFD\xFF\xFD\xFF"s,      "one U+FFFD for each invalid byte"},
        {"\xED\xA0\x80",         encodingUTF8,          encodingUTF32,         "\xFD\xFF\0\0\xFD\xFF\0\0\xFD\xFF\0\0"s, "a surrogate in UTF-8"},
        {"\xC0\x80",             encodingUTF8,          encodingUTF8,          "\xEF\xBF\xBD\xEF\xBF\xBD","an overlong form"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const auto result = convertText(fact.bytes, fact.from, fact.to);
        ASSERT_TRUE(result.has_value());
        EXPECT_EQ(*result, fact.result);
    }
}

// ---- single-byte encodings ----

/// The characters of the bytes 0x80 to 0xFF in Mac Roman. Byte 0xF0 is in the private use area of Unicode.
const std::u16string macRoman = u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü"
                                u"†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
                                u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
                                u"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";

/// The characters of the bytes 0x80 to 0xFF in Windows Latin 1; unassigned bytes are control characters.
std::u16string windowsLatin1()
{
    std::u16string characters = u"€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008DŽ\u008F\u0090‘’“”•–—˜™š›œ\u009DžŸ";
    for (char16_t c = 0xA0; c <= 0xFF; ++c) characters.push_back(c);
    return characters;
}

const std::map<std::uint32_t, std::u16string> upperHalves = {{encodingMacRoman, macRoman},
                                                             {encodingWindowsLatin1, windowsLatin1()}};

std::string bytesOf(std::u16string_view units)
{
    return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)};
}

TEST(TextEncoding, EveryByteOfMacRomanAndWindowsLatin1HasItsCharacter)
{
    std::u16string ascii;
    for (char16_t c = 0; c < 0x80; ++c) ascii.push_back(c);
    std::string allBytes;
    for (int byte = 0; byte < 256; ++byte) allBytes.push_back(static_cast<char>(byte));
    for (const auto& [encoding, upperHalf] : upperHalves) {
        SCOPED_TRACE(encoding);
        ASSERT_EQ(upperHalf.size(), 128u);
        const std::string characters = bytesOf(ascii + upperHalf);
        EXPECT_EQ(convertText(allBytes, encoding, encodingUTF16), characters);
        EXPECT_EQ(convertText(characters, encodingUTF16, encoding), allBytes);
    }
}

TEST(TextEncoding, MissingCharactersBecomeAQuestionMark)
{
    // Characters that the canonical composition of Unicode (NFC) replaces by another character.
    const std::map<char16_t, char16_t> composed = {
        {u'\u0374', u'\u02B9'}, {u'\u037E', u';'},      {u'\u0387', u'\u00B7'}, {u'\u1FEF', u'`'},
        {u'\u1FFD', u'\u00B4'}, {u'\u2126', u'\u03A9'}, {u'\u212A', u'K'},      {u'\u212B', u'\u00C5'},
    };
    for (const auto& [encoding, upperHalf] : upperHalves) {
        for (int code = 0x80; code <= 0xFFFF; ++code) {
            if (code >= 0xD800 && code <= 0xDFFF) continue;
            const auto c = static_cast<char16_t>(code);
            const auto other = composed.find(c);
            const char16_t target = other == composed.end() ? c : other->second;
            const auto slot = upperHalf.find(target);
            SCOPED_TRACE(testing::Message() << "U+" << std::hex << code << " in encoding " << encoding);
            const std::string result = *convertText(bytesOf({&c, 1}), encodingUTF16, encoding);
            EXPECT_NE(result, "");
            if (target < 0x80)
                EXPECT_EQ(result, std::string(1, static_cast<char>(target)));
            else if (slot != upperHalf.npos)
                EXPECT_EQ(result, std::string(1, static_cast<char>(0x80 + slot)));
            else // some characters have no composed form, and become several
                EXPECT_EQ(result, std::string(result.size(), '?'));
        }
    }
}

TEST(TextEncoding, EveryCharacterSurvivesTheThreeUnicodeForms)
{
    std::string all; // in UTF-32
    for (char32_t c = 0; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 251) {
        if (c < 0xD800 || c > 0xDFFF) all.append(reinterpret_cast<const char*>(&c), sizeof c);
    }
    for (std::uint32_t through : {encodingUTF8, encodingUTF16})
        EXPECT_EQ(convertText(*convertText(all, encodingUTF32, through), through, encodingUTF32), all);
}

TEST(TextEncoding, UnknownEncodingsConvertNothing)
{
    for (std::uint32_t unknown : {encodingUnknown, static_cast<HostTextEncoding>(0x0201)}) {
        EXPECT_FALSE(host::isKnownEncoding(unknown));
        EXPECT_FALSE(convertText("a", unknown, encodingUTF8));
        EXPECT_FALSE(convertText("a", encodingUTF8, unknown));
    }
    EXPECT_TRUE(host::isKnownEncoding(encodingMacRoman));
}

TEST(TextEncoding, AsciiAndUTF8AreRecognised)
{
    EXPECT_TRUE(host::isAscii(""));
    EXPECT_TRUE(host::isAscii("\x7F"));
    EXPECT_FALSE(host::isAscii("a\x80"));
    EXPECT_TRUE(host::isUTF8(""));
    EXPECT_TRUE(host::isUTF8("\xC3\xA9"));
    EXPECT_TRUE(host::isUTF8("\xEF\xBF\xBD"));
    EXPECT_FALSE(host::isUTF8("\xC3"));
    EXPECT_FALSE(host::isUTF8("\xED\xA0\x80"));
}

} // namespace
