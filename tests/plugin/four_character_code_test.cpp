// Four-character codes read from host strings.
#include "plugin/four_character_code.h"
#include "tests/plugin/host_fixture.h"

namespace {

class FourCharacterCodeTest : public HostTest {
protected:
    std::uint32_t codeOf(const char* bytes, std::uint32_t encoding)
    {
        REALstringStruct* text = bytes ? host.newString(bytes, encoding) : nullptr;
        const std::uint32_t code = REALstringToOSType(text);
        if (text) host.drop(text);
        EXPECT_EQ(host.live(), Notes{});
        return code;
    }
};

constexpr double hosts[] = {0.0, 2011.5, 2012.0, 2015.03, 2016.0};

TEST_F(FourCharacterCodeTest, IsTheFirstFourCharactersInOrder)
{
    // clang-format off
    const struct { const char* text; std::uint32_t encoding, code; const char* why; } facts[] = {
        {"TEXT",         encodingASCII,     0x54455854, "the first character is the most significant byte"},
        {"TEXT",         encodingUTF8,      0x54455854, "in any encoding"},
        {"TEXT",         encodingMacRoman,  0x54455854, "in any encoding"},
        {"TEXT",         encodingUnknown,   0x54455854, "unknown encoding"},
        {"abcd",         encodingUTF8,      0x61626364, "four characters"},
        {"abcdef",       encodingUTF8,      0x61626364, "the rest is ignored"},
        {"abcdef",       encodingUnknown,   0x61626364, "the rest is ignored"},
        {"abc",          encodingUTF8,      0x20626300, "three: read backwards from the fourth byte"},
        {"ab",           encodingUTF8,      0x20200000, "two"},
        {"a",            encodingUTF8,      0x20202000, "one"},
        {"abc",          encodingUnknown,   0x20626300, "three, unknown encoding"},
        {"ab",           encodingUnknown,   0x20200000, "two, unknown encoding"},
        {"a",            encodingUnknown,   0x20202000, "one, unknown encoding"},
        {"",             encodingUTF8,      0x20202020, "an empty text"},
        {"",             encodingUnknown,   0x20202020, "an empty text, unknown encoding"},
        {nullptr,        0,                 0x20202020, "null"},
        {"caf\xC3\xA9",  encodingUTF8,      0x6361668E, "one byte per Mac Roman character"},
        {"\xC3\xA9" "abc", encodingUTF8,    0x8E616263, "a byte with its top bit set"},
        {"caf\x8E",      encodingMacRoman,  0x6361668E, "Mac Roman"},
        {"caf\x8E",      encodingUnknown,   0x6361668E, "an unknown encoding is read as Mac Roman"},
        {"caf\xE9",      encodingWindowsLatin1, 0x6361668E, "Windows Latin 1"},
        {"\xE2\x82\xAC" "abc", encodingUTF8, 0x20202020, "an unconvertible text is empty"},
        {"    ",         encodingUTF8,      0x20202020, "four spaces"},
    };
    // clang-format on
    for (double version : hosts)
        for (const char* after :
             // With "#" after the text, the plug-in makes a private copy, which has zeros after the text,
             // like the host's storage.
             {"", "#"})
            for (const auto& fact : facts) {
                if (*after && fact.encoding == encodingUnknown) continue; // text that is not copied
                SCOPED_TRACE(testing::Message() << version << ": " << fact.why);
                if (*after) host.afterText = after;
                enter(version);
                EXPECT_EQ(codeOf(fact.text, fact.encoding), fact.code);
                host.afterText.assign(5, '\0');
            }
}

TEST_F(FourCharacterCodeTest, ContainsTheBytesAfterAShortText)
{
    using namespace std::string_literals;
    // clang-format off
    const struct { const char* text; std::string after; std::uint32_t code; const char* why; } facts[] = {
        {"abc", "\0XYZ"s,  0x20626300, "the terminator"},
        {"ab",  "\0Q\0\0"s, 0x20200051, "the terminator and what follows"},
        {"a",   "\0QR\0"s, 0x20202052, "the fourth byte only"},
    };
    // clang-format on
    for (double version : hosts)
        for (std::uint32_t encoding : {encodingUTF8, encodingUnknown})
            for (const auto& fact : facts) {
                SCOPED_TRACE(testing::Message() << version << ": " << fact.why);
                host.afterText = fact.after;
                enter(version);
                EXPECT_EQ(codeOf(fact.text, encoding), fact.code);
            }
}

TEST_F(FourCharacterCodeTest, NeedsOnlyTheServicesOfItsHostVersion)
{
    // clang-format off
    const struct { double version; const char* missing; std::uint32_t encoding, code; const char* why; } facts[] = {
        {2016.0, "",                     encodingUTF8,    0x54455854, "nothing is missing"},
        {2016.0, "PluginGetStringData",  encodingUTF8,    0x20202020, "no conversion: an empty text"},
        {2016.0, "PluginGetStringData",  encodingUnknown, 0x54455854, "ASCII needs no conversion"},
        {2016.0, "PluginDisposeStringData", encodingUnknown, 0x54455854, "there is no data to release"},
        {2016.0, "REALGetStringEncoding", encodingUTF8,   0x54455854, "the encoding counts as known"},
        {2016.0, "REALGetStringEncoding", encodingUnknown, 0x20202020, "the host does not convert from an unknown encoding"},
        {2016.0, "StringGetCString",     encodingUnknown, 0x20202020, "the bytes cannot be read"},
        {2016.0, "LenB",                 encodingUnknown, 0x20202020, "the length cannot be read"},
        {2016.0, "REALLoadGlobalMethod", encodingUnknown, 0x20202020, "the length method cannot be found"},
        {2016.0, "REALConvertString",    encodingUTF8,    0x54455854, "used on older hosts only"},
        {2012.0, "PluginGetStringData",  encodingUTF8,    0x20202020, "the first version with string data"},
        {2012.0, "StringGetCString",     encodingUnknown, 0x20202020, "the bytes cannot be read"},
        {2011.5, "PluginGetStringData",  encodingUTF8,    0x54455854, "older hosts do not use it"},
        {2011.5, "REALConvertString",    encodingUTF8,    0x20202020, "no conversion: an empty text"},
        {2011.5, "REALConvertString",    encodingUnknown, 0x54455854, "ASCII needs no conversion"},
        {2011.5, "StringGetCString",     encodingUnknown, 0x54455854, "the record is read"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.version << " without " << fact.missing << ": " << fact.why);
        enter(fact.version);
        withhold(fact.missing);
        EXPECT_EQ(codeOf("TEXT", fact.encoding), fact.code);
        EXPECT_EQ(host.raised().size(), 0u);
        host.provide(fact.missing);
    }
}

TEST_F(FourCharacterCodeTest, IsFourSpacesWithoutAHost)
{
    REALstringStruct* text = host.newString("TEXT", encodingUTF8);
    gResolver = nullptr;
    forgetServices();
    EXPECT_EQ(REALstringToOSType(text), 0x20202020u);
    gResolver = fake::Host::resolve;
    EXPECT_EQ(host.references(text), 1);
    host.drop(text);
}

} // namespace
