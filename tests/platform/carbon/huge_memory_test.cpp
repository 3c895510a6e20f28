// Sizes that no machine has. Under a sanitizer, which ends the program for them, there is nothing to see.
#include "tests/support/sanitizers.h"

#include <Carbon/Carbon.h>

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

TEST(HugeHandles, AreRefused)
{
    if (support::hasAddressSanitizer || support::hasThreadSanitizer)
        GTEST_SKIP() << "the sanitizer ends the program";
    const Handle handle = NewHandle(4);
    std::memcpy(*handle, "abcd", 4);
    const auto most = static_cast<Size>(~0UL >> 1);
    std::vector<Handle> had; // a 32-bit machine may have one or two of them
    while (const Handle huge = NewHandle(most)) {
        had.push_back(huge);
        ASSERT_LT(had.size(), 3u);
        EXPECT_EQ(MemError(), noErr);
        EXPECT_EQ(GetHandleSize(huge), most);
        (*huge)[most - 1] = 1;
    }
    EXPECT_EQ(MemError(), memFullErr);
    SetHandleSize(handle, most);
    EXPECT_EQ(MemError(), memFullErr);
    EXPECT_EQ(GetHandleSize(handle), 4);
    EXPECT_EQ(std::memcmp(*handle, "abcd", 4), 0);
    for (Handle huge : had) DisposeHandle(huge);
    EXPECT_EQ(MemError(), noErr);
    DisposeHandle(handle);
}

} // namespace
