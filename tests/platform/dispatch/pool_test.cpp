// Tests of the global queues: priorities, threads and items that run in parallel.
#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

#include <pthread.h>

namespace {

/// A counter that threads increment. Other threads can wait until the counter reaches a value.
class Counter {
public:
    void raise()
    {
        const std::lock_guard<std::mutex> hold(lock_);
        ++count_;
        changed_.notify_all();
    }
    void waitFor(int minimum)
    {
        std::unique_lock<std::mutex> hold(lock_);
        changed_.wait(hold, [&] { return count_ >= minimum; });
    }

private:
    std::mutex lock_;
    std::condition_variable changed_;
    int count_ = 0;
};

TEST(Pool, HasOneQueuePerPriority)
{
    const struct {
        long priority;
        unsigned long flags;
        bool exists;
        const char* why;
    } facts[] = {
        {2, 0, true, "high"},
        {0, 0, true, "default"},
        {-2, 0, true, "low"},
        {1, 0, false, "between two"},
        {3, 0, false, "above"},
        {-3, 0, false, "below"},
        {0, 1, false, "flags must be 0"},
        {2, ~0ul, false, "all flags"},
    };
    for (const auto& fact : facts) {
        const dispatch_queue_t queue = dispatch_get_global_queue(fact.priority, fact.flags);
        EXPECT_EQ(queue != nullptr, fact.exists) << fact.why;
        EXPECT_EQ(queue, dispatch_get_global_queue(fact.priority, fact.flags)) << fact.why;
        EXPECT_NE(queue, dispatch_get_main_queue()) << fact.why;
    }
    EXPECT_NE(dispatch_get_global_queue(2, 0), dispatch_get_global_queue(0, 0));
    EXPECT_NE(dispatch_get_global_queue(0, 0), dispatch_get_global_queue(-2, 0));
}

TEST(Pool, RunsWorkOffTheMainThread)
{
    static Counter ran;
    static bool wasMain[3] = {true, true, true};
    static const long priorities[] = {2, 0, -2};
    for (int i = 0; i < 3; ++i)
        dispatch_async_f(dispatch_get_global_queue(priorities[i], 0), &wasMain[i], [](void* context) {
            *static_cast<bool*>(context) = pthread_main_np() != 0;
            ran.raise();
        });
    ran.waitFor(3);
    for (const bool was : wasMain) EXPECT_FALSE(was);
    EXPECT_TRUE(pthread_main_np());
}

TEST(Pool, RunsEveryItemOnce)
{
    static Counter ran;
    static std::atomic<int> times[2000];
    for (auto& each : times)
        dispatch_async_f(dispatch_get_global_queue(0, 0), &each, [](void* context) {
            ++*static_cast<std::atomic<int>*>(context);
            ran.raise();
        });
    ran.waitFor(2000);
    for (const auto& each : times) ASSERT_EQ(each, 1);
}

// A slow item must not delay other items. In this test each item waits until all items have started.
TEST(Pool, RunsItemsInParallelWithoutHanging)
{
    static Counter started, finished;
    constexpr int items = 8;
    for (int i = 0; i < items; ++i)
        dispatch_async_f(dispatch_get_global_queue(0, 0), nullptr, [](void*) {
            started.raise();
            started.waitFor(items);
            finished.raise();
        });
    finished.waitFor(items);
}

// All pool threads but one are blocked, so a single thread runs the queued items in the order of priority.
TEST(Pool, ServesHigherPrioritiesFirst)
{
    static Counter started, open, ran;
    static std::vector<long> order; // priorities of the items that have run, written by a single thread
    constexpr int threads = 16;
    for (int i = 0; i < threads; ++i)
        dispatch_async_f(dispatch_get_global_queue(0, 0), i == 0 ? &open : nullptr, [](void* context) {
            started.raise();
            if (context)
                open.waitFor(1);
            else
                ran.waitFor(6);
        });
    started.waitFor(threads);
    static const long priorities[] = {-2, 0, 2, -2, 0, 2};
    for (const long& priority : priorities)
        dispatch_async_f(dispatch_get_global_queue(priority, 0), const_cast<long*>(&priority),
                         [](void* context) {
                             order.push_back(*static_cast<const long*>(context));
                             ran.raise();
                         });
    open.raise();
    ran.waitFor(6);
    EXPECT_EQ(order, (std::vector<long>{2, 2, 0, 0, -2, -2}));
}

} // namespace
