// Host strings built from bytes: the contents of the strings, and the host services that build them in each
// host version.
#include "plugin/host_string.h"
#include "tests/plugin/host_fixture.h"

#include <cmath>
#include <cstring>

namespace {

const double before2012 = std::nextafter(2012.0, 0), before2013 = std::nextafter(2013.0, 0);

std::string utf16(std::u16string_view units)
{
    return {reinterpret_cast<const char*>(units.data()), units.size() * 2};
}

std::string utf32(std::initializer_list<std::uint32_t> points)
{
    return {reinterpret_cast<const char*>(points.begin()), points.size() * 4};
}

class HostStringTest : public HostTest {
protected:
    REALstringStruct* build(const std::string& bytes, unsigned long encoding)
    {
        return REALBuildUnicodeString(bytes.data(), static_cast<long long>(bytes.size()), encoding);
    }

    void expectString(REALstringStruct* text, const std::string& bytes, std::uint32_t encoding)
    {
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(host.bytesOf(text), bytes);
        EXPECT_EQ(host.encodingOf(text), encoding);
        EXPECT_EQ(host.references(text), 1) << "the reference for the caller";
        host.drop(text);
        EXPECT_EQ(host.live(), Notes{});
        EXPECT_TRUE(host.raised().empty());
    }
};

// ---- encodings that are kept, and encodings that depend on the bytes ----

TEST_F(HostStringTest, IsLabelledWithTheEncodingOfItsBytes)
{
    const std::string ascii = "abc\x7F", high = "caf\xE9";
    // clang-format off
    const struct { const std::string& bytes; std::uint32_t encoding, label; const char* why; } facts[] = {
        {ascii, 0x0000,     0x0600,     "Mac Roman that is ASCII"},
        {high,  0x0000,     0x0000,     "Mac Roman"},
        {ascii, 0x0500,     0x0600,     "Windows Latin 1 that is ASCII"},
        {high,  0x0500,     0x0500,     "Windows Latin 1"},
        {ascii, 0xFFFF,     0x0600,     "an unknown encoding that is ASCII"},
        {high,  0xFFFF,     0xFFFF,     "an unknown encoding"},
        {ascii, 0x0600,     0x0600,     "ASCII"},
        {high,  0x0600,     0x0600,     "ASCII is kept without a check"},
        {ascii, 0x08000100, 0x08000100, "UTF-8 that is ASCII"},
        {high,  0x08000100, 0x08000100, "UTF-8"},
        {ascii, 0x0201,     0x0201,     "any other encoding"},
        {high,  0x0201,     0x0201,     "any other encoding"},
        {ascii, 0x14000100, 0x14000100, "another form of Unicode"},
    };
    // clang-format on
    for (double version : {0.0, 2012.0, 2013.0, 2016.0})
        for (const auto& fact : facts) {
            SCOPED_TRACE(testing::Message() << version << ": " << fact.why);
            enter(version);
            REALstringStruct* text = build(fact.bytes, fact.encoding);
            ASSERT_EQ(host.calls().size(), 2u);
            EXPECT_EQ(host.calls()[0].substr(0, 16), "REALBuildString(");
            EXPECT_EQ(host.calls()[1].substr(0, 22), "REALSetStringEncoding(");
            expectString(text, fact.bytes, fact.label);
        }
}

TEST_F(HostStringTest, IsASCIIOnlyIfAllBytesAre)
{
    // clang-format off
    const struct { std::string bytes; bool isAscii; const char* why; } facts[] = {
        {"\x7F",                 true,  "the last ASCII byte"},
        {"\x80",                 false, "the first that is not"},
        {"\xFF",                 false, "the last byte"},
        {"\xE9" "abc",           false, "at the start"},
        {"abc\xE9",              false, "at the end"},
        {std::string("\0a", 2),  true,  "a zero is ASCII"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        enter(2016.0);
        expectString(build(fact.bytes, 0x0000), fact.bytes, fact.isAscii ? 0x0600u : 0x0000u);
    }
}

TEST_F(HostStringTest, UsesTheLengthNotTheTerminator)
{
    REALstringStruct* text = REALBuildUnicodeString("ab\0cdefgh", 4, 0x0600);
    EXPECT_EQ(host.calls(),
              (Notes{"REALBuildString(\"ab\\x00c\", 4) = s1", "REALSetStringEncoding(s1, 0x600)"}));
    expectString(text, std::string("ab\0c", 4), 0x0600);
}

TEST_F(HostStringTest, IsNullWithoutBytesOrAValidLength)
{
    const char byte[] = "abcd";
    for (double version : {0.0, 2012.0, 2013.0, 2016.0})
        for (unsigned long encoding : {0x0000ul, 0x0100ul, 0x0600ul, 0x08000100ul, 0x0C000100ul, 0xFFFFul}) {
            SCOPED_TRACE(testing::Message() << version << ", encoding " << encoding);
            // clang-format off
            const struct { const void* bytes; long long length; const char* why; } facts[] = {
                {nullptr, 4,                     "no bytes"},
                {byte,    0,                     "no length"},
                {byte,    -1,                    "a negative length"},
                {byte,    0x80000000LL,          "above the largest length"},
                {byte,    0x100000004LL,         "more than 32 bits"},
                {byte,    -0x7FFFFFFFFFFFFFFFLL, "the most negative length"},
            };
            // clang-format on
            enter(version);
            for (const auto& fact : facts)
                EXPECT_EQ(REALBuildUnicodeString(fact.bytes, fact.length, encoding), nullptr) << fact.why;
            EXPECT_EQ(host.notes(), Notes{}) << "the host is not called";
        }
}

TEST_F(HostStringTest, HasLengthsFromOneTo31Bits)
{
    expectString(REALBuildUnicodeString("x", 1, 0x08000100), "x", 0x08000100);
    enter(2016.0);
    host.failNext("REALBuildString");
    EXPECT_EQ(REALBuildUnicodeString("x", 0x7FFFFFFF, 0x08000100), nullptr);
    EXPECT_EQ(host.calls(), Notes{"REALBuildString(<2147483647 bytes>, 2147483647) = null"})
        << "requested; no encoding is set";
}

TEST_F(HostStringTest, IsNullOrWithoutEncodingWhenAServiceIsMissing)
{
    withhold("REALBuildString");
    EXPECT_EQ(build("abc", 0x0600), nullptr);
    EXPECT_EQ(host.calls(), Notes{});
    host.provide("REALBuildString");
    withhold("REALSetStringEncoding");
    REALstringStruct* text = build("abc", 0x0600);
    expectString(text, "abc", 0xFFFF);
}

// ---- UTF-16 ----

TEST_F(HostStringTest, UTF16IsConvertedByTheHost)
{
    const Notes older = {"REALBuildString(\"h\\x00\\xE9\\x00\", 4) = s1", "REALSetStringEncoding(s1, 0x100)",
                         "REALConvertString(s1, 0x8000100) = s2", "REALUnlockString(s1)"};
    const Notes newer = {"REALBuildStringWithEncoding(\"h\\x00\\xE9\\x00\", 4, 0x100) = s1",
                         "REALConvertString(s1, 0x8000100) = s2", "REALUnlockString(s1)"};
    // clang-format off
    const struct { double version; const Notes& calls; } facts[] = {
        {0.0, older}, {2011.5, older}, {before2012, older}, {2012.0, newer}, {2013.0, newer}, {2016.0, newer},
        {std::nan(""), older},
    };
    // clang-format on
    const std::string bytes = utf16(u"h\u00E9");
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.version);
        enter(fact.version);
        REALstringStruct* text = REALBuildUnicodeStringUTF16(bytes.data(), 4);
        EXPECT_EQ(host.calls(), fact.calls);
        expectString(text, "h\xC3\xA9", encodingUTF8);
        enter(fact.version);
        text = build(bytes, 0x0100);
        EXPECT_EQ(host.calls(), fact.calls) << "the same by its encoding";
        expectString(text, "h\xC3\xA9", encodingUTF8);
    }
}

TEST_F(HostStringTest, UTF16IsNullWhenAServiceFails)
{
    // clang-format off
    const struct { double version; const char* service; Notes calls; } facts[] = {
        {2011.5, "REALBuildString",             {"REALBuildString(\"a\\x00\", 2) = null"}},
        {2011.5, "REALConvertString",           {"REALBuildString(\"a\\x00\", 2) = s1", "REALSetStringEncoding(s1, 0x100)", "REALConvertString(s1, 0x8000100) = null", "REALUnlockString(s1)"}},
        {2012.0, "REALBuildStringWithEncoding", {"REALBuildStringWithEncoding(\"a\\x00\", 2, 0x100) = null"}},
        {2012.0, "REALConvertString",           {"REALBuildStringWithEncoding(\"a\\x00\", 2, 0x100) = s1", "REALConvertString(s1, 0x8000100) = null", "REALUnlockString(s1)"}},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.version << ": " << fact.service);
        enter(fact.version);
        host.failNext(fact.service);
        EXPECT_EQ(REALBuildUnicodeStringUTF16("a\0", 2), nullptr);
        EXPECT_EQ(host.calls(), fact.calls);

        enter(fact.version);
        host.failNext(fact.service, 0);
        withhold(fact.service);
        EXPECT_EQ(REALBuildUnicodeStringUTF16("a\0", 2), nullptr) << "the service is missing";
        EXPECT_EQ(host.live(), Notes{});
        EXPECT_TRUE(host.raised().empty());
        host.provide(fact.service);
    }
}

// ---- UTF-32 ----

TEST_F(HostStringTest, UTF32IsConvertedByTheHostFrom2013)
{
    const std::string bytes = utf32({0x61, 0x1F600});
    const Notes calls = {
        "REALBuildStringWithEncoding(\"a\\x00\\x00\\x00\\x00\\xF6\\x01\\x00\", 8, 0xC000100) = s1",
        "REALConvertString(s1, 0x8000100) = s2", "REALUnlockString(s1)"};
    for (double version : {2013.0, 2013.02, 2015.03, 2016.0}) {
        SCOPED_TRACE(version);
        enter(version);
        REALstringStruct* text = build(bytes, 0x0C000100);
        EXPECT_EQ(host.calls(), calls);
        expectString(text, "a\xF0\x9F\x98\x80", encodingUTF8);
    }
    for (const char* service : {"REALBuildStringWithEncoding", "REALConvertString"}) {
        enter(2013.0);
        host.failNext(service);
        EXPECT_EQ(build(bytes, 0x0C000100), nullptr) << service;
        EXPECT_EQ(host.live(), Notes{}) << service;
    }
}

TEST_F(HostStringTest, UTF32IsConvertedByThePluginBefore2013)
{
    const std::string bytes = utf32({0x61, 0x1F600});
    const Notes older = {"REALBuildString(\"a\\x00=\\xD8\\x00\\xDE\", 6) = s1",
                         "REALSetStringEncoding(s1, 0x100)", "REALConvertString(s1, 0x8000100) = s2",
                         "REALUnlockString(s1)"};
    const Notes newer = {"REALBuildStringWithEncoding(\"a\\x00=\\xD8\\x00\\xDE\", 6, 0x100) = s1",
                         "REALConvertString(s1, 0x8000100) = s2", "REALUnlockString(s1)"};
    // clang-format off
    const struct { double version; const Notes& calls; } facts[] = {
        {0.0, older}, {before2012, older}, {2012.0, newer}, {2012.99, newer}, {before2013, newer},
        {std::nan(""), older},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.version);
        enter(fact.version);
        REALstringStruct* text = build(bytes, 0x0C000100);
        EXPECT_EQ(host.calls(), fact.calls);
        expectString(text, "a\xF0\x9F\x98\x80", encodingUTF8);
    }
}

TEST_F(HostStringTest, UTF32CodePointsBecomeTheirUTF16Units)
{
    // clang-format off
    const struct { std::uint32_t point; std::u16string units; const char* why; } facts[] = {
        {0x00000000, std::u16string(1, 0),     "zero is a character"},
        {0x00000041, u"A",                     "ASCII"},
        {0x000000E9, u"\u00E9",                "Latin 1"},
        {0x0000D7FF, std::u16string(1, 0xD7FF), "the last before the surrogates"},
        {0x0000D800, u"",                      "the first surrogate is dropped"},
        {0x0000DBFF, u"",                      "the last high surrogate"},
        {0x0000DC00, u"",                      "the first low surrogate"},
        {0x0000DFFF, u"",                      "the last surrogate"},
        {0x0000E000, std::u16string(1, 0xE000), "the first after the surrogates"},
        {0x0000FFFD, std::u16string(1, 0xFFFD), "the replacement character itself"},
        {0x0000FFFF, std::u16string(1, 0xFFFF), "the last single unit"},
        {0x00010000, {char16_t(0xD800), char16_t(0xDC00)}, "the first pair"},
        {0x000103FF, {char16_t(0xD800), char16_t(0xDFFF)}, "the last low surrogate"},
        {0x00010400, {char16_t(0xD801), char16_t(0xDC00)}, "the next high surrogate"},
        {0x0001F600, {char16_t(0xD83D), char16_t(0xDE00)}, "a face"},
        {0x0001D800, {char16_t(0xD836), char16_t(0xDC00)}, "the low 16 bits are those of a surrogate"},
        {0x0010FFFF, {char16_t(0xDBFF), char16_t(0xDFFF)}, "the last character"},
        {0x00110000, std::u16string(1, 0xFFFD), "the first above Unicode"},
        {0x0011D800, std::u16string(1, 0xFFFD), "above Unicode, with the low 16 bits of a surrogate"},
        {0x80000041, std::u16string(1, 0xFFFD), "the top bit set"},
        {0xFFFFFFFF, std::u16string(1, 0xFFFD), "the last number"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << std::hex << fact.point << ": " << fact.why);
        enter(2012.99);
        // The code point is between two other characters, so that its removal is visible.
        REALstringStruct* text = build(utf32({0x3C, fact.point, 0x3E}), 0x0C000100);
        const std::string units = utf16(u"<" + fact.units + u">");
        EXPECT_EQ(host.calls().at(0), "REALBuildStringWithEncoding(" + fake::quoted(units) + ", " +
                                          std::to_string(units.size()) + ", 0x100) = s1");
        if (text) host.drop(text);
    }
}

TEST_F(HostStringTest, UTF32UsesWholeCodePointsOnly)
{
    const std::string points = utf32({0x61, 0x62, 0x63});
    // clang-format off
    const struct { long long length; const char* units; } facts[] = {
        {1, "\"\", 0"}, {3, "\"\", 0"}, {4, "\"a\\x00\", 2"}, {5, "\"a\\x00\", 2"}, {7, "\"a\\x00\", 2"},
        {8, "\"a\\x00b\\x00\", 4"}, {11, "\"a\\x00b\\x00\", 4"}, {12, "\"a\\x00b\\x00c\\x00\", 6"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.length);
        enter(2012.0);
        REALstringStruct* text = REALBuildUnicodeString(points.data(), fact.length, 0x0C000100);
        EXPECT_EQ(host.calls().at(0),
                  "REALBuildStringWithEncoding(" + std::string(fact.units) + ", 0x100) = s1");
        host.drop(text);
    }
}

TEST_F(HostStringTest, UTF32OfAnyLengthIsComplete)
{
    for (std::size_t count : {1u, 198u, 199u, 200u, 201u, 5000u})
        for (std::uint32_t point : {0x62u, 0x1F600u}) {
            SCOPED_TRACE(testing::Message() << count << " of " << std::hex << point);
            std::string bytes, expected;
            for (std::size_t i = 0; i < count; ++i) {
                bytes += utf32({point});
                expected += point == 0x62 ? "b" : "\xF0\x9F\x98\x80";
            }
            for (std::size_t odd = 0; odd < 4; ++odd) {
                enter(2012.0);
                expectString(build(bytes + std::string(odd, 'x'), 0x0C000100), expected, encodingUTF8);
            }
        }
}

TEST_F(HostStringTest, UTF32MayBeUnaligned)
{
    const std::string bytes = " " + utf32({0x61, 0x1F600});
    enter(2012.0);
    expectString(REALBuildUnicodeString(bytes.data() + 1, 8, 0x0C000100), "a\xF0\x9F\x98\x80", encodingUTF8);
}

} // namespace
