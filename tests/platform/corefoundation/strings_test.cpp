// Making texts, their lengths, copies, and the sizes that buffers need.
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
        {u""sv, "nothing"},
        {u"a"sv, "a letter"},
        {u"a\0b"sv, "a zero inside"},
        {u"\U0001F3B5"sv, "a pair counts as two"},
        {u"\xD800"sv, "a surrogate alone"},
        {u"\xFFFF\xFEFF"sv, "no character, and a byte order mark"},
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

TEST(Strings, AreRefusedWithoutSense)
{
    const UniChar unit = 'a';
    EXPECT_EQ(CFStringCreateWithCharacters(kCFAllocatorDefault, &unit, -1), nullptr) << "a negative count";
    EXPECT_EQ(CFStringCreateWithCharacters(kCFAllocatorDefault, nullptr, 1), nullptr) << "no units of one";
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, nullptr, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(text::alive(), 0u);

    const CFStringRef empty = CFStringCreateWithCharacters(kCFAllocatorDefault, nullptr, 0);
    ASSERT_NE(empty, nullptr) << "no units of none is the empty text";
    EXPECT_EQ(CFStringGetLength(empty), 0);
    CFRelease(empty);
}

TEST(Strings, AreCopiedWholeWhateverTheirCallerPromised)
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

TEST(Strings, FitABufferThatCountsTheirZero)
{
    const struct {
        std::u16string_view units;
        CFStringEncoding encoding;
        CFIndex bufferSize;
        bool fits;
        const char* why;
    } facts[] = {
        {u"abc", kCFStringEncodingUTF8, 4, true, "three bytes and the zero"},
        {u"abc", kCFStringEncodingUTF8, 5, true, "room to spare"},
        {u"abc", kCFStringEncodingUTF8, 3, false, "no room for the zero"},
        {u"abc", kCFStringEncodingUTF8, 1, false, "room for the zero only"},
        {u"abc", kCFStringEncodingUTF8, 0, false, "no room at all"},
        {u"abc", kCFStringEncodingUTF8, -1, false, "less than none"},
        {u"", kCFStringEncodingUTF8, 1, true, "the zero alone"},
        {u"", kCFStringEncodingUTF8, 0, false, "not even the zero"},
        {u"é", kCFStringEncodingUTF8, 3, true, "two bytes and the zero"},
        {u"é", kCFStringEncodingUTF8, 2, false, "two bytes without it"},
        {u"é", kCFStringEncodingMacRoman, 2, true, "one byte there"},
        {u"\U0001F3B5", kCFStringEncodingUTF8, 5, true, "four bytes and the zero"},
        {u"\U0001F3B5", kCFStringEncodingUTF8, 4, false, "four bytes without it"},
        {u"ab", kCFStringEncodingUTF16, 5, true, "two wide units, and one zero byte"},
        {u"ab", kCFStringEncodingUTF16, 4, false, "two wide units without it"},
        {u"a", kCFStringEncodingUTF32, 5, true, "one number of four bytes"},
        {u"a", kCFStringEncodingUTF32, 4, false, "without its zero"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const text::Owned string = text::make(fact.units);
        char buffer[9];
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(CFStringGetCString(string.get(), buffer, fact.bufferSize, fact.encoding), fact.fits);
        const std::size_t size = fact.bufferSize > 0 ? static_cast<std::size_t>(fact.bufferSize) : 0;
        for (std::size_t i = size; i < sizeof buffer; ++i)
            EXPECT_EQ(buffer[i], '#') << "written past the end, at " << i;
        if (!fact.fits && size > 0) {
            EXPECT_EQ(buffer[0], '\0') << "a refused text is empty";
        }
    }
}

TEST(Strings, AreRefusedABufferThatIsNotThere)
{
    const text::Owned string = text::make(u"");
    EXPECT_FALSE(CFStringGetCString(string.get(), nullptr, 10, kCFStringEncodingUTF8));
}

TEST(Strings, NeverExceedTheirLongestSize)
{
    constexpr CFIndex most = std::numeric_limits<CFIndex>::max();
    const struct {
        CFIndex length;
        CFStringEncoding encoding;
        CFIndex size;
        const char* why;
    } facts[] = {
        {0, kCFStringEncodingUTF8, 0, "the zero is not counted"},
        {1, kCFStringEncodingUTF8, 3, "three bytes a unit; a pair takes four for two"},
        {10, kCFStringEncodingUTF8, 30, "likewise"},
        {10, kCFStringEncodingASCII, 10, "one byte a unit"},
        {10, kCFStringEncodingMacRoman, 10, "likewise"},
        {10, kCFStringEncodingWindowsLatin1, 10, "likewise"},
        {10, kCFStringEncodingISOLatin1, 10, "likewise"},
        {10, kCFStringEncodingUnicode, 20, "two"},
        {10, kCFStringEncodingUTF16BE, 20, "two"},
        {10, kCFStringEncodingUTF16LE, 20, "two"},
        {10, kCFStringEncodingUTF32, 40, "four"},
        {10, kCFStringEncodingUTF32BE, 40, "four"},
        {10, kCFStringEncodingUTF32LE, 40, "four"},
        {most, kCFStringEncodingASCII, most, "the longest there is"},
        {most / 3, kCFStringEncodingUTF8, most / 3 * 3, "the longest that fits"},
        {most / 3 + 1, kCFStringEncodingUTF8, kCFNotFound, "one more does not"},
        {most, kCFStringEncodingUTF32, kCFNotFound, "nor does this"},
        {-1, kCFStringEncodingUTF8, kCFNotFound, "less than nothing"},
        {10, kCFStringEncodingNextStepLatin, kCFNotFound, "an encoding that is known by name only"},
        {10, kCFStringEncodingInvalidId, kCFNotFound, "no encoding"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(CFStringGetMaximumSizeForEncoding(fact.length, fact.encoding), fact.size) << fact.why;
}

} // namespace
