// Tests of Pascal strings, which consist of a length byte and the text.
#include <Carbon/Carbon.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

/// Make a text that repeats the byte values 1 to 255.
std::string text(std::size_t length)
{
    std::string made;
    for (std::size_t i = 0; i < length; ++i) made += static_cast<char>(1 + i % 255);
    return made;
}

std::string asPascal(const std::string& text) { return static_cast<char>(text.size()) + text; }

TEST(PascalText, IsConvertedFromCAndBack)
{
    const struct {
        std::size_t length, kept;
    } facts[] = {{0, 0}, {1, 1}, {13, 13}, {254, 254}, {255, 255}, {256, 255}, {1000, 255}};
    for (const auto& fact : facts) {
        const std::string source = text(fact.length), kept = source.substr(0, fact.kept);
        Byte pascal[257];
        std::memset(pascal, 0xA5, sizeof pascal);
        CopyCStringToPascal(source.c_str(), pascal);
        EXPECT_EQ(std::string(pascal, pascal + 1 + fact.kept), asPascal(kept)) << fact.length;
        for (std::size_t i = 1 + fact.kept; i < sizeof pascal; ++i) ASSERT_EQ(pascal[i], 0xA5) << i;

        char back[257];
        std::memset(back, 0x5A, sizeof back);
        CopyPascalStringToC(pascal, back);
        EXPECT_EQ(std::string(back, fact.kept + 1), kept + '\0');
        for (std::size_t i = fact.kept + 1; i < sizeof back; ++i) ASSERT_EQ(back[i], 0x5A) << i;
    }
}

TEST(PascalText, MayBeConvertedInPlace)
{
    for (std::size_t length : {0u, 1u, 100u, 255u}) {
        char buffer[257] = {};
        std::memcpy(buffer, text(length).c_str(), length + 1);
        CopyCStringToPascal(buffer, reinterpret_cast<StringPtr>(buffer));
        EXPECT_EQ(std::string(buffer, length + 1), asPascal(text(length)));
        CopyPascalStringToC(reinterpret_cast<ConstStr255Param>(buffer), buffer);
        EXPECT_EQ(std::string(buffer, length + 1), text(length) + '\0');
    }
    char longer[400];
    std::memcpy(longer, text(300).c_str(), 301);
    CopyCStringToPascal(longer, reinterpret_cast<StringPtr>(longer));
    EXPECT_EQ(std::string(longer, 256), asPascal(text(255)));
    char shifted[300] = "..hello";
    CopyCStringToPascal(shifted + 2, reinterpret_cast<StringPtr>(shifted));
    EXPECT_EQ(std::string(shifted, 6), asPascal("hello"));
}

TEST(PascalText, IsCopiedIntoAHandle)
{
    for (std::size_t length : {0u, 1u, 13u, 255u}) {
        const std::string pascal = asPascal(text(length));
        const StringHandle made = NewString(reinterpret_cast<ConstStr255Param>(pascal.data()));
        ASSERT_NE(made, nullptr);
        const auto handle = reinterpret_cast<Handle>(made);
        EXPECT_EQ(GetHandleSize(handle), static_cast<Size>(length + 1));
        EXPECT_EQ(std::string(*handle, length + 1), pascal);
        DisposeHandle(handle);
        EXPECT_EQ(MemError(), noErr);
    }
    EXPECT_EQ(NewString(nullptr), nullptr);
}

} // namespace
