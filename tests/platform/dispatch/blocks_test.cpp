// Tests of dispatch blocks: the queue copies a block and releases the copy after the block has run. The tests
// also cover invalid arguments.
#include <KVXPlatform/KVXPlatform.h>
#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>

namespace {

/// A value that counts its live copies. Each dispatch block that captures the value holds one copy.
struct Counted {
    static std::atomic<int> alive;
    Counted() { ++alive; }
    Counted(const Counted&) { ++alive; }
    ~Counted() { --alive; }
};
std::atomic<int> Counted::alive{0};

dispatch_queue_t globalQueue() { return dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0); }

TEST(Blocks, AreCopiedWhenQueuedAndReleasedAfterTheyRan)
{
    static int ran = 0;
    {
        const Counted counted;
        {
            dispatch_async(dispatch_get_main_queue(), ^{
              (void)counted;
              ++ran;
            });
            EXPECT_EQ(Counted::alive, 3) << "here, in the written block, in the queued copy";
        }
        EXPECT_EQ(Counted::alive, 2) << "the written block has ended";
    }
    EXPECT_EQ(Counted::alive, 1) << "the queued copy";
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 1u);
    EXPECT_EQ(ran, 1);
    EXPECT_EQ(Counted::alive, 0);
}

TEST(Blocks, AreReleasedByThePool)
{
    {
        const Counted counted;
        for (int i = 0; i < 100; ++i)
            dispatch_async(globalQueue(), ^{
              (void)counted;
              dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) {});
            });
    }
    std::uint32_t total = 0;
    while (total < 100) total += KVXPlatformDrainMainQueue(1);
    // The pool releases a block only after the block has queued its item on the main queue, so a release may
    // come later.
    while (Counted::alive != 0) KVXPlatformDrainMainQueue(0.001);
    EXPECT_EQ(Counted::alive, 0);
}

TEST(Blocks, ShareTheirVariables)
{
    __block int sum = 0;
    for (int i = 1; i <= 4; ++i)
        dispatch_async(dispatch_get_main_queue(), ^{
          sum += i;
        });
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 4u);
    EXPECT_EQ(sum, 10);
}

TEST(BlocksDeathTest, AMissingArgumentEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto function = [](void*) {};
    EXPECT_DEATH(dispatch_async_f(nullptr, nullptr, function), "dispatch_async was given no queue");
    EXPECT_DEATH(dispatch_async_f(dispatch_get_main_queue(), nullptr, nullptr),
                 "dispatch_async_f was given no function");
    EXPECT_DEATH(dispatch_async(nullptr,
                                ^{
                                }),
                 "dispatch_async was given no queue");
    EXPECT_DEATH(dispatch_async(globalQueue(), nullptr), "dispatch_async was given no block");
}

TEST(BlocksDeathTest, AnExceptionThatLeavesABlockEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            dispatch_async(dispatch_get_main_queue(), ^{
              throw std::runtime_error("left the block");
            });
            try {
                KVXPlatformDrainMainQueue(0);
            } catch (const std::runtime_error&) {
            }
        },
        "left the block");
}

} // namespace
