// Tests that no queued item is lost when memory allocations fail.
#include "tests/support/allocator_hook.h"

#include <KVXPlatform/KVXPlatform.h>
#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

#include <atomic>

namespace {

constexpr int workItems = 500; // enough items that the queue allocates several times

TEST(DispatchMemory, TheMainQueueLosesNoWork)
{
    static int ran = 0;
    dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) { ++ran; });
    allocator_hook::failNew(0, 3);
    for (int i = 1; i < workItems; ++i)
        dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) { ++ran; });
    EXPECT_EQ(allocator_hook::stopFailing(), 3) << "allocations have failed";
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), static_cast<uint32_t>(workItems));
    EXPECT_EQ(ran, workItems);
}

TEST(DispatchMemory, TheGlobalQueuesLoseNoWork)
{
    static std::atomic<int> ran{0};
    const dispatch_queue_t queue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_LOW, 0);
    dispatch_async_f(queue, nullptr, [](void*) { ++ran; });
    allocator_hook::failNew(0, 3);
    for (int i = 1; i < workItems; ++i)
        dispatch_async_f(queue, nullptr, [](void*) {
            ++ran;
            dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) {});
        });
    EXPECT_EQ(allocator_hook::stopFailing(), 3) << "allocations have failed";
    for (uint32_t counted = 0; counted < workItems - 1;) counted += KVXPlatformDrainMainQueue(1);
    while (ran < workItems) KVXPlatformDrainMainQueue(0.001);
    EXPECT_EQ(ran, workItems);
}

} // namespace
