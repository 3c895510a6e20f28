// Short of memory: work that was taken on runs all the same.
#include "tests/support/failing_memory.h"

#include <KVXPlatform/KVXPlatform.h>
#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

#include <atomic>

namespace {

std::atomic<int> allocationsToFail{0};

} // namespace

bool support::mayAllocate()
{
    int left = allocationsToFail;
    while (left > 0 && !allocationsToFail.compare_exchange_weak(left, left - 1)) {
    }
    return left <= 0;
}

namespace {

constexpr int pieces = 500; // more than a queue holds without asking for memory again

TEST(ShortOfMemory, TheMainQueueLosesNothing)
{
    static int ran = 0;
    dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) { ++ran; });
    allocationsToFail = 3;
    for (int i = 1; i < pieces; ++i)
        dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) { ++ran; });
    EXPECT_EQ(allocationsToFail, 0) << "none was refused";
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), static_cast<uint32_t>(pieces));
    EXPECT_EQ(ran, pieces);
}

TEST(ShortOfMemory, TheGlobalQueuesLoseNothing)
{
    static std::atomic<int> ran{0};
    const dispatch_queue_t queue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_LOW, 0);
    dispatch_async_f(queue, nullptr, [](void*) { ++ran; });
    allocationsToFail = 3;
    for (int i = 1; i < pieces; ++i)
        dispatch_async_f(queue, nullptr, [](void*) {
            ++ran;
            dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) {});
        });
    EXPECT_EQ(allocationsToFail, 0) << "none was refused";
    for (uint32_t told = 0; told < pieces - 1;) told += KVXPlatformDrainMainQueue(1);
    while (ran < pieces) KVXPlatformDrainMainQueue(0.001);
    EXPECT_EQ(ran, pieces);
}

} // namespace
