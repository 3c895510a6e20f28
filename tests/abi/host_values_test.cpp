// The positions of the fields of host values that the plug-in reads, and the codes of the text encodings.
#include "abi/host_values.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

TEST(HostValues, AStringHasBufferLengthAndEncodingInItsSecondFourthAndFifthWord)
{
    EXPECT_EQ(offsetof(REALstringStruct, buffer), 1 * sizeof(Word));
    EXPECT_EQ(offsetof(REALstringStruct, length), 3 * sizeof(Word));
    EXPECT_EQ(offsetof(REALstringStruct, encoding), 4 * sizeof(Word));
}

TEST(HostValues, AnArrayHasItsElementsInItsEighthWord)
{
    EXPECT_EQ(offsetof(REALarrayStruct, elements), 7 * sizeof(Word));
}

TEST(HostValues, StringDataHas64BytesAndStartsWithAddressAndLength)
{
    EXPECT_EQ(offsetof(REALstringData, bytes), 0u);
    EXPECT_EQ(offsetof(REALstringData, length), sizeof(Word));
    EXPECT_EQ(offsetof(REALstringData, bookkeeping), 2 * sizeof(Word));
    EXPECT_EQ(sizeof(REALstringData), 64u);
}

TEST(HostValues, EncodingsHaveThePlatformsCodes)
{
    // clang-format off
    const struct { std::uint32_t code, expected; const char* name; } facts[] = {
        {encodingMacRoman,      0x0000,     "Mac Roman"},
        {encodingUTF16,         0x0100,     "UTF-16"},
        {encodingWindowsLatin1, 0x0500,     "Windows Latin 1"},
        {encodingASCII,         0x0600,     "ASCII"},
        {encodingUnknown,       0xFFFF,     "no known encoding"},
        {encodingUTF8,          0x08000100, "UTF-8"},
        {encodingUTF32,         0x0C000100, "UTF-32"},
    };
    // clang-format on
    for (const auto& fact : facts) EXPECT_EQ(fact.code, fact.expected) << fact.name;
}

} // namespace
