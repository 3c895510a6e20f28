// Tests of the conversion to and from each text encoding, with every character of the one-byte encodings and
// the limits of the other encodings.
#include "tests/platform/corefoundation/text.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace std::string_view_literals;

std::string hex(std::string_view bytes)
{
    std::string result;
    for (const unsigned char byte : bytes) {
        char number[4];
        std::snprintf(number, sizeof number, "%02X ", byte);
        result += number;
    }
    return result;
}

// The characters of the bytes 0x80 to 0xFF in ascending order; 0 for a byte without a character.
constexpr std::u16string_view macRoman = u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü"
                                         u"†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªº\u03A9æø"
                                         u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
                                         u"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ"sv;
constexpr std::u16string_view windowsFirst = u"€\0‚ƒ„…†‡ˆ‰Š‹Œ\0Ž\0\0‘’“”•–—˜™š›œ\0žŸ"sv;

std::u16string latin(std::u16string_view first)
{
    std::u16string result(first);
    for (unsigned c = 0x80 + static_cast<unsigned>(first.size()); c < 0x100; ++c)
        result += static_cast<char16_t>(c);
    return result;
}

TEST(Encodings, OfOneByteConvertEveryCharacterBothWays)
{
    const struct {
        const char* name;
        CFStringEncoding encoding;
        std::u16string upper;
    } tables[] = {
        {"Mac Roman", kCFStringEncodingMacRoman, std::u16string(macRoman)},
        {"Windows Latin 1", kCFStringEncodingWindowsLatin1, latin(windowsFirst)},
        {"ISO Latin 1", kCFStringEncodingISOLatin1, latin({})},
        {"ASCII", kCFStringEncodingASCII, std::u16string(128, u'\0')},
    };
    for (const auto& table : tables) {
        SCOPED_TRACE(table.name);
        ASSERT_EQ(table.upper.size(), 128u);
        for (unsigned byte = 1; byte < 0x100; ++byte) {
            SCOPED_TRACE(byte);
            const char cText[] = {static_cast<char>(byte), '\0'};
            const char16_t unit = byte < 0x80 ? static_cast<char16_t>(byte) : table.upper[byte - 0x80];
            const CFStringRef string = CFStringCreateWithCString(kCFAllocatorDefault, cText, table.encoding);
            ASSERT_EQ(string != nullptr, unit != 0);
            if (!string) continue;
            EXPECT_EQ(text::readable(text::units(string)), text::readable({&unit, 1}));
            EXPECT_EQ(text::bytes(string, table.encoding), cText);
            CFRelease(string);
        }
        // The conversion to this encoding fails for every other character.
        for (unsigned unit = 0x80; unit < 0x10000; ++unit) {
            const auto character = static_cast<char16_t>(unit);
            if (table.upper.find(character) != table.upper.npos) continue;
            char buffer[4];
            const text::Owned string = text::make({&character, 1});
            ASSERT_FALSE(CFStringGetCString(string.get(), buffer, sizeof buffer, table.encoding)) << unit;
        }
    }
}

TEST(Encodings, EncodeCharactersToTheirBytes)
{
    const struct {
        CFStringEncoding encoding;
        std::u16string_view units;
        std::optional<std::string_view> bytes;
        const char* why;
    } facts[] = {
        {kCFStringEncodingUTF8, u"\x7F"sv, "\x7F"sv, "the last of one byte"},
        {kCFStringEncodingUTF8, u"\x80"sv, "\xC2\x80"sv, "the first of two"},
        {kCFStringEncodingUTF8, u"\u07FF"sv, "\xDF\xBF"sv, "the last of two"},
        {kCFStringEncodingUTF8, u"\u0800"sv, "\xE0\xA0\x80"sv, "the first of three"},
        {kCFStringEncodingUTF8, u"\xD7FF"sv, "\xED\x9F\xBF"sv, "the last before the surrogates"},
        {kCFStringEncodingUTF8, u"\xD800"sv, {}, "a high surrogate alone"},
        {kCFStringEncodingUTF8, u"\xDFFF"sv, {}, "a low surrogate alone"},
        {kCFStringEncodingUTF8, u"\xDC00\xD800"sv, {}, "a pair in reverse order"},
        {kCFStringEncodingUTF8, u"\xD800\xD800\xDC00"sv, {}, "an extra surrogate before a pair"},
        {kCFStringEncodingUTF8, u"\xE000"sv, "\xEE\x80\x80"sv, "the first after the surrogates"},
        {kCFStringEncodingUTF8, u"\xFFFF"sv, "\xEF\xBF\xBF"sv, "the last of 16 bits"},
        {kCFStringEncodingUTF8, u"\xD800\xDC00"sv, "\xF0\x90\x80\x80"sv, "the first pair"},
        {kCFStringEncodingUTF8, u"\xDBFF\xDFFF"sv, "\xF4\x8F\xBF\xBF"sv, "the last pair"},
        {kCFStringEncodingUTF8, u"a\0b"sv, "a\0b"sv, "a zero is a character"},
        {kCFStringEncodingASCII, u"a\u0301"sv, {}, "no character is dropped"},
        {kCFStringEncodingMacRoman, u"e\u0301"sv, {}, "no character is composed"},
        {kCFStringEncodingMacRoman, u"a\U0001F3B5"sv, {}, "a character past 16 bits"},
        {kCFStringEncodingISOLatin1, u"\u0100"sv, {}, "the first character past the encoding"},
        {kCFStringEncodingUTF16, u"a\u20AC"sv, "a\0\xAC\x20"sv, "the processor's order, no byte order mark"},
        {kCFStringEncodingUTF16LE, u"a\u20AC"sv, "a\0\xAC\x20"sv, "low byte first"},
        {kCFStringEncodingUTF16BE, u"a\u20AC"sv, "\0a\x20\xAC"sv, "high byte first"},
        {kCFStringEncodingUTF16BE, u"\xD83C\xDFB5"sv, "\xD8\x3C\xDF\xB5"sv, "a pair"},
        {kCFStringEncodingUTF16LE, u"\xD83C"sv, "\x3C\xD8"sv, "an unpaired surrogate is encoded"},
        {kCFStringEncodingUTF32, u"\xD83C\xDFB5"sv, "\xB5\xF3\x01\x00"sv,
         "the processor's order, no byte order mark"},
        {kCFStringEncodingUTF32LE, u"\xD83C\xDFB5"sv, "\xB5\xF3\x01\x00"sv, "low byte first"},
        {kCFStringEncodingUTF32BE, u"\xD83C\xDFB5"sv, "\x00\x01\xF3\xB5"sv, "high byte first"},
        {kCFStringEncodingUTF32BE, u"\xDBFF\xDFFF"sv, "\x00\x10\xFF\xFF"sv, "the last character"},
        {kCFStringEncodingUTF32BE, u"\xD83C"sv, {}, "an unpaired surrogate is refused"},
        {kCFStringEncodingNextStepLatin, u"a"sv, {}, "an unsupported encoding"},
        {kCFStringEncodingNonLossyASCII, u"a"sv, {}, "an unsupported encoding"},
        {kCFStringEncodingInvalidId, u"a"sv, {}, "an unknown encoding"},
        {0x1234, u""sv, {}, "an unknown encoding, for an empty text too"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const text::Owned string = text::make(fact.units);
        const auto bytes = text::bytes(string.get(), fact.encoding);
        ASSERT_EQ(bytes.has_value(), fact.bytes.has_value());
        if (bytes) {
            EXPECT_EQ(hex(*bytes), hex(*fact.bytes));
        }
    }
}

TEST(Encodings, DecodeOnlyValidBytes)
{
    const struct {
        CFStringEncoding encoding;
        const char* bytes;
        std::optional<std::u16string_view> units;
        const char* why;
    } facts[] = {
        {kCFStringEncodingUTF8, "", u""sv, "no bytes"},
        {kCFStringEncodingUTF8, "\x7F", u"\x7F"sv, "one byte"},
        {kCFStringEncodingUTF8, "\xC2\x80", u"\x80"sv, "two"},
        {kCFStringEncodingUTF8, "\xED\x9F\xBF", u"\xD7FF"sv, "the last before the surrogates"},
        {kCFStringEncodingUTF8, "\xEE\x80\x80", u"\xE000"sv, "the first after the surrogates"},
        {kCFStringEncodingUTF8, "\xF0\x9F\x8E\xB5", u"\xD83C\xDFB5"sv, "four make a pair"},
        {kCFStringEncodingUTF8, "\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"sv, "the last character"},
        {kCFStringEncodingUTF8, "\xEF\xBB\xBF", u"\xFEFF"sv, "a byte order mark is a character"},
        {kCFStringEncodingUTF8, "\x80", {}, "a continuation byte alone"},
        {kCFStringEncodingUTF8, "a\xC2", {}, "a start byte alone"},
        {kCFStringEncodingUTF8, "\xE2\x82", {}, "cut in the middle"},
        {kCFStringEncodingUTF8, "\xC2z", {}, "a start byte, then a letter"},
        {kCFStringEncodingUTF8, "\xC0\x80", {}, "a zero in two bytes"},
        {kCFStringEncodingUTF8, "\xC1\xBF", {}, "a letter in two bytes"},
        {kCFStringEncodingUTF8, "\xE0\x9F\xBF", {}, "a two-byte character in three bytes"},
        {kCFStringEncodingUTF8, "\xF0\x8F\xBF\xBF", {}, "a three-byte character in four bytes"},
        {kCFStringEncodingUTF8, "\xED\xA0\x80", {}, "a surrogate"},
        {kCFStringEncodingUTF8, "\xED\xBF\xBF", {}, "the last surrogate"},
        {kCFStringEncodingUTF8, "\xF4\x90\x80\x80", {}, "past the last character"},
        {kCFStringEncodingUTF8, "\xFF", {}, "a byte that UTF-8 never uses"},
        {kCFStringEncodingASCII, "plain", u"plain"sv, "ASCII"},
        {kCFStringEncodingASCII, "pl\x80in", {}, "not ASCII"},
        {kCFStringEncodingMacRoman, "\x8E", u"é"sv, "Mac Roman"},
        {kCFStringEncodingUTF16, "ab", u"\x6261"sv, "two bytes make a unit"},
        {kCFStringEncodingUTF16BE, "ab", u"\x6162"sv, "the other byte order"},
        {kCFStringEncodingUTF16, "a", {}, "half a unit"},
        {kCFStringEncodingUTF16BE, "\xD8\x3C\xDF\xB5", u"\xD83C\xDFB5"sv, "a pair"},
        {kCFStringEncodingUTF16BE, "\xD8\x3C", u"\xD83C"sv, "an unpaired surrogate"},
        {kCFStringEncodingUTF16, "\xFF\xFE", u"\xFEFF"sv, "a byte order mark is a character"},
        {kCFStringEncodingUTF32BE, "abcd", {}, "past the last character"},
        {kCFStringEncodingUTF32, "a", {}, "a quarter of a unit"},
        {kCFStringEncodingNextStepLatin, "a", {}, "an unsupported encoding"},
        {kCFStringEncodingNonLossyASCII, "a", {}, "an unsupported encoding"},
        {kCFStringEncodingInvalidId, "", {}, "an unknown encoding, for an empty text too"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const CFStringRef string = CFStringCreateWithCString(kCFAllocatorDefault, fact.bytes, fact.encoding);
        ASSERT_EQ(string != nullptr, fact.units.has_value());
        if (!string) continue;
        EXPECT_EQ(text::readable(text::units(string)), text::readable(*fact.units));
        CFRelease(string);
    }
    EXPECT_EQ(text::alive(), 0u);
}

} // namespace
