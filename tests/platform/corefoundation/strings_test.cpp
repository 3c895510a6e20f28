// Tests of strings: creation, length, copies and buffer sizes.
#include "tests/platform/corefoundation/text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace {

using namespace std::string_view_literals;

TEST(Strings, HoldAnyUnits)
{
    const struct {
        std::u16string_view units;
        const char* why;
    } facts[] = {
        {u""sv, "an empty text"},
        {u"a"sv, "a letter"},
        {u"a\0b"sv, "a zero inside"},
        {u"\U0001F3B5"sv, "a pair counts as two"},
        {u"\xD800"sv, "an unpaired surrogate"},
        {u"\xFFFF\xFEFF"sv, "a noncharacter and a byte order mark"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const text::Owned string = text::make(fact.units);
        ASSERT_TRUE(string);
        EXPECT_EQ(CFStringGetLength(string.get()), static_cast<CFIndex>(fact.units.size()));
        EXPECT_EQ(text::units(string.get()), fact.units);
    }
}

TEST(Strings, CopyTheirUnits)
{
    UniChar units[] = {'a', 'b'};
    const CFStringRef string = CFStringCreateWithCharacters(kCFAllocatorDefault, units, 2);
    units[0] = 'x';
    EXPECT_EQ(text::units(string), u"ab");
    CFRelease(string);

    char bytes[] = "cd";
    const CFStringRef other = CFStringCreateWithCString(kCFAllocatorDefault, bytes, kCFStringEncodingUTF8);
    bytes[0] = 'x';
    EXPECT_EQ(text::units(other), u"cd");
    CFRelease(other);
}

TEST(Strings, AreNotMadeFromInvalidArguments)
{
    const UniChar unit = 'a';
    EXPECT_EQ(CFStringCreateWithCharacters(kCFAllocatorDefault, &unit, -1), nullptr) << "a negative count";
    EXPECT_EQ(CFStringCreateWithCharacters(kCFAllocatorDefault, nullptr, 1), nullptr)
        << "no units for a count of 1";
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, nullptr, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(text::alive(), 0u);

    const CFStringRef empty = CFStringCreateWithCharacters(kCFAllocatorDefault, nullptr, 0);
    ASSERT_NE(empty, nullptr) << "no units for a count of 0: the empty text";
    EXPECT_EQ(CFStringGetLength(empty), 0);
    CFRelease(empty);
}

TEST(Strings, AreCopiedWholeForAnyMaximumLength)
{
    const text::Owned string = text::make(u"four");
    for (const CFIndex longest : {0, 1, 4, 100, -1}) {
        const CFMutableStringRef copy = CFStringCreateMutableCopy(kCFAllocatorDefault, longest, string.get());
        ASSERT_NE(copy, nullptr);
        EXPECT_NE(copy, string.get());
        EXPECT_EQ(text::units(copy), u"four") << longest;
        CFRelease(copy);
    }
}

TEST(Strings, NeedABufferWithSpaceForTheNul)
{
    const struct {
        std::u16string_view units;
        CFStringEncoding encoding;
        CFIndex bufferSize;
        bool isWritten;
        const char* why;
    } facts[] = {
        {u"abc", kCFStringEncodingUTF8, 4, true, "three bytes and the NUL"},
        {u"abc", kCFStringEncodingUTF8, 5, true, "a longer buffer"},
        {u"abc", kCFStringEncodingUTF8, 3, false, "no space for the NUL"},
        {u"abc", kCFStringEncodingUTF8, 1, false, "space for the NUL only"},
        {u"abc", kCFStringEncodingUTF8, 0, false, "no space"},
        {u"abc", kCFStringEncodingUTF8, -1, false, "a negative size"},
        {u"", kCFStringEncodingUTF8, 1, true, "the NUL alone"},
        {u"", kCFStringEncodingUTF8, 0, false, "no space for the NUL of an empty text"},
        {u"é", kCFStringEncodingUTF8, 3, true, "two bytes and the NUL"},
        {u"é", kCFStringEncodingUTF8, 2, false, "two bytes without the NUL"},
        {u"é", kCFStringEncodingMacRoman, 2, true, "one byte in this encoding"},
        {u"\U0001F3B5", kCFStringEncodingUTF8, 5, true, "four bytes and the NUL"},
        {u"\U0001F3B5", kCFStringEncodingUTF8, 4, false, "four bytes without the NUL"},
        {u"ab", kCFStringEncodingUTF16, 5, true, "two wide units and one NUL byte"},
        {u"ab", kCFStringEncodingUTF16, 4, false, "two wide units without the NUL"},
        {u"a", kCFStringEncodingUTF32, 5, true, "one wide unit and one NUL byte"},
        {u"a", kCFStringEncodingUTF32, 4, false, "one wide unit without the NUL"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const text::Owned string = text::make(fact.units);
        char buffer[9];
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(CFStringGetCString(string.get(), buffer, fact.bufferSize, fact.encoding), fact.isWritten);
        const std::size_t size = fact.bufferSize > 0 ? static_cast<std::size_t>(fact.bufferSize) : 0;
        for (std::size_t i = size; i < sizeof buffer; ++i)
            EXPECT_EQ(buffer[i], '#') << "written past the end, at " << i;
        if (!fact.isWritten && size > 0) {
            EXPECT_EQ(buffer[0], '\0') << "a refused text is empty";
        }
    }
}

TEST(Strings, AreNotWrittenToANullBuffer)
{
    const text::Owned string = text::make(u"");
    EXPECT_FALSE(CFStringGetCString(string.get(), nullptr, 10, kCFStringEncodingUTF8));
}

TEST(Strings, HaveAMaximumSizePerEncoding)
{
    constexpr CFIndex most = std::numeric_limits<CFIndex>::max();
    const struct {
        CFIndex length;
        CFStringEncoding encoding;
        CFIndex size;
        const char* why;
    } facts[] = {
        {0, kCFStringEncodingUTF8, 0, "the NUL is not counted"},
        {1, kCFStringEncodingUTF8, 3, "three bytes a unit; a pair takes four bytes"},
        {10, kCFStringEncodingUTF8, 30, "three bytes a unit"},
        {10, kCFStringEncodingASCII, 10, "one byte a unit"},
        {10, kCFStringEncodingMacRoman, 10, "one byte a unit"},
        {10, kCFStringEncodingWindowsLatin1, 10, "one byte a unit"},
        {10, kCFStringEncodingISOLatin1, 10, "one byte a unit"},
        {10, kCFStringEncodingUnicode, 20, "two bytes a unit"},
        {10, kCFStringEncodingUTF16BE, 20, "two bytes a unit"},
        {10, kCFStringEncodingUTF16LE, 20, "two bytes a unit"},
        {10, kCFStringEncodingUTF32, 40, "four bytes a unit"},
        {10, kCFStringEncodingUTF32BE, 40, "four bytes a unit"},
        {10, kCFStringEncodingUTF32LE, 40, "four bytes a unit"},
        {most, kCFStringEncodingASCII, most, "the longest length"},
        {most / 3, kCFStringEncodingUTF8, most / 3 * 3, "the longest whose size fits CFIndex"},
        {most / 3 + 1, kCFStringEncodingUTF8, kCFNotFound, "one unit more does not fit"},
        {most, kCFStringEncodingUTF32, kCFNotFound, "the size does not fit"},
        {-1, kCFStringEncodingUTF8, kCFNotFound, "a negative length"},
        {10, kCFStringEncodingNextStepLatin, kCFNotFound, "an unsupported encoding"},
        {10, kCFStringEncodingInvalidId, kCFNotFound, "an unknown encoding"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(CFStringGetMaximumSizeForEncoding(fact.length, fact.encoding), fact.size) << fact.why;
}

} // namespace
