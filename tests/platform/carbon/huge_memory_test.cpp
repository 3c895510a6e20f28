// Tests of memory handles that are larger than the available memory.
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
    std::vector<Handle> allocated; // one or two handles of this size may fit into 32-bit memory
    while (const Handle huge = NewHandle(most)) {
        allocated.push_back(huge);
        ASSERT_LT(allocated.size(), 3u);
        EXPECT_EQ(MemError(), noErr);
        EXPECT_EQ(GetHandleSize(huge), most);
        (*huge)[most - 1] = 1;
    }
    EXPECT_EQ(MemError(), memFullErr);
    SetHandleSize(handle, most);
    EXPECT_EQ(MemError(), memFullErr);
    EXPECT_EQ(GetHandleSize(handle), 4);
    EXPECT_EQ(std::memcmp(*handle, "abcd", 4), 0);
    for (Handle huge : allocated) DisposeHandle(huge);
    EXPECT_EQ(MemError(), noErr);
    DisposeHandle(handle);
}

} // namespace
