#include "host/runtime/values/text_encoding.h"

#include "abi/host_values.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using host::convertText;

struct Fact {
    std::string bytes;
    std::uint32_t from, to;
    std::string answer;
    const char* why;
};

TEST(TextEncoding, ConvertsAsTheFactsSay)
{
    // clang-format off
    const Fact facts[] = {
        // bytes                 from                   to                     answer                    why
        {"",                     encodingMacRoman,      encodingUTF8,          "",                       "nothing is nothing"},
        {"a\0b"s,                encodingASCII,         encodingUTF8,          "a\0b"s,                  "zero is a character"},
        {"\x8E",                 encodingMacRoman,      encodingUTF8,          "\xC3\xA9",               "e acute"},
        {"\x80",                 encodingMacRoman,      encodingUTF8,          "\xC3\x84",               "the first of the upper half"},
        {"\xFF",                 encodingMacRoman,      encodingUTF8,          "\xCB\x87",               "the last: caron"},
        {"\xDB",                 encodingMacRoman,      encodingUTF8,          "\xE2\x82\xAC",           "the euro sign"},
        {"\xF0",                 encodingMacRoman,      encodingUTF8,          "\xEF\xA3\xBF",           "the private logo"},
        {"\xC3\xA9",             encodingUTF8,          encodingMacRoman,      "\x8E",                   "and back"},
        {"e\xCC\x81",            encodingUTF8,          encodingMacRoman,      "\x8E",                   "letter and accent find one byte"},
        {"\xCE\xA9",             encodingUTF8,          encodingMacRoman,      "\xBD",                   "omega"},
        {"\xE2\x84\xA6",         encodingUTF8,          encodingMacRoman,      "\xBD",                   "ohm is an omega"},
        {"\xF0\x9F\x98\x80",     encodingUTF8,          encodingMacRoman,      "?",                      "one mark for one character that is not there"},
        {"\x80\x9F\xA0\xFF",     encodingWindowsLatin1, encodingUTF16,         "\xAC\x20\x78\x01\xA0\x00\xFF\x00"s, "both ends of the Windows part, then Latin 1"},
        {"\x81",                 encodingWindowsLatin1, encodingUTF32,         "\x81\0\0\0"s,            "a hole is a control character"},
        {"\xE2\x82\xAC\xC3\xBF", encodingUTF8,          encodingWindowsLatin1, "\x80\xFF",               "euro and y diaeresis"},
        {"\xCC\x8C",             encodingUTF8,          encodingWindowsLatin1, "?",                      "a lone accent has no byte"},
        {"\x7F\x80",             encodingASCII,         encodingUTF8,          "\x7F\xEF\xBF\xBD",       "ASCII ends at 7F"},
        {"\xC3\xA9z",            encodingUTF8,          encodingASCII,         "?z",                     "not in ASCII"},
        {"\xF0\x9F\x98\x80",     encodingUTF8,          encodingUTF16,         "\x3D\xD8\x00\xDE"s,      "a pair of surrogates"},
        {"\x3D\xD8\x00\xDE"s,    encodingUTF16,         encodingUTF8,          "\xF0\x9F\x98\x80",       "and back"},
        {"\xFF\xFF"s,            encodingUTF16,         encodingUTF8,          "\xEF\xBF\xBF",           "the last unit"},
        {"\x3D\xD8\x41\x00"s,    encodingUTF16,         encodingUTF8,          "\xEF\xBF\xBD" "A",       "half a pair in front"},
        {"\x41\x00\x3D\xD8"s,    encodingUTF16,         encodingUTF8,          "A\xEF\xBF\xBD",          "half a pair at the end"},
        {"\x00\xDE\x3D\xD8"s,    encodingUTF16,         encodingUTF8,          "\xEF\xBF\xBD\xEF\xBF\xBD","a pair the wrong way round"},
        {"\x41\x00\x42"s,        encodingUTF16,         encodingUTF8,          "A\xEF\xBF\xBD",          "half a unit"},
        {"\x00\xF6\x01\x00"s,    encodingUTF32,         encodingUTF8,          "\xF0\x9F\x98\x80",       "beyond 16 bits"},
        {"\xFF\xFF\x10\x00"s,    encodingUTF32,         encodingUTF8,          "\xF4\x8F\xBF\xBF",       "the last code point"},
        {"\x00\x00\x11\x00"s,    encodingUTF32,         encodingUTF8,          "\xEF\xBF\xBD",           "one behind the last"},
        {"\x00\xD8\x00\x00"s,    encodingUTF32,         encodingUTF8,          "\xEF\xBF\xBD",           "a surrogate is no character"},
        {"\x41\x00\x00\x00\x42"s,encodingUTF32,         encodingUTF8,          "A\xEF\xBF\xBD",          "a quarter of a character"},
        {"a\xFF" "b",            encodingUTF8,          encodingUTF8,          "a\xEF\xBF\xBD" "b",      "a byte that never stands in UTF-8"},
        {"\xC3",                 encodingUTF8,          encodingUTF8,          "\xEF\xBF\xBD",           "cut off"},
        {"\xE2\x82",             encodingUTF8,          encodingUTF16,         "\xFD\xFF\xFD\xFF"s,      "one for each byte that fits nowhere"},
        {"\xED\xA0\x80",         encodingUTF8,          encodingUTF32,         "\xFD\xFF\0\0\xFD\xFF\0\0\xFD\xFF\0\0"s, "a surrogate in UTF-8"},
        {"\xC0\x80",             encodingUTF8,          encodingUTF8,          "\xEF\xBF\xBD\xEF\xBF\xBD","longer than it need be"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const auto answer = convertText(fact.bytes, fact.from, fact.to);
        ASSERT_TRUE(answer.has_value());
        EXPECT_EQ(*answer, fact.answer);
    }
}

TEST(TextEncoding, EveryByteOfTheTablesComesBack)
{
    for (std::uint32_t encoding : {encodingMacRoman, encodingWindowsLatin1}) {
        for (std::uint32_t through : {encodingUTF8, encodingUTF16, encodingUTF32}) {
            for (int byte = 0; byte < 256; ++byte) {
                SCOPED_TRACE(testing::Message()
                             << "byte " << byte << " of " << encoding << " through " << through);
                const std::string one(1, static_cast<char>(byte));
                EXPECT_EQ(convertText(*convertText(one, encoding, through), through, encoding), one);
            }
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

TEST(TextEncoding, UnknownCodesConvertNothing)
{
    for (std::uint32_t unknown : {encodingUnknown, static_cast<HostTextEncoding>(0x0201)}) {
        EXPECT_FALSE(host::isKnownEncoding(unknown));
        EXPECT_FALSE(convertText("a", unknown, encodingUTF8));
        EXPECT_FALSE(convertText("a", encodingUTF8, unknown));
    }
    EXPECT_TRUE(host::isKnownEncoding(encodingMacRoman));
}

TEST(TextEncoding, ToldApart)
{
    EXPECT_TRUE(host::isAscii(""));
    EXPECT_TRUE(host::isAscii("\x7F"));
    EXPECT_FALSE(host::isAscii("a\x80"));
    EXPECT_TRUE(host::isUTF8(""));
    EXPECT_TRUE(host::isUTF8("\xC3\xA9"));
    EXPECT_FALSE(host::isUTF8("\xC3"));
    EXPECT_FALSE(host::isUTF8("\xED\xA0\x80"));
}

} // namespace
