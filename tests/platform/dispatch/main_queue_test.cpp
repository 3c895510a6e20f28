// Tests of the main queue: when, in which order and on which thread its items run.
#include <KVXPlatform/KVXPlatform.h>
#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include <pthread.h>

namespace {

std::vector<int> ran;

class MainQueue : public testing::Test {
protected:
    MainQueue() { ran.clear(); }
    ~MainQueue() override { EXPECT_EQ(KVXPlatformDrainMainQueue(0), 0u) << "work left by the test"; }
};

void note(void* context) { ran.push_back(*static_cast<int*>(context)); }

TEST_F(MainQueue, RunsNothingUntilItIsDrained)
{
    int one = 1;
    dispatch_async_f(dispatch_get_main_queue(), &one, note);
    EXPECT_TRUE(ran.empty());
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 1u);
    EXPECT_EQ(ran, (std::vector<int>{1}));
}

TEST_F(MainQueue, KeepsTheOrderOfFunctionsAndBlocks)
{
    static int numbers[] = {0, 1, 2, 3, 4, 5};
    for (int& number : numbers) {
        if (number % 2)
            dispatch_async(dispatch_get_main_queue(), ^{
              ran.push_back(number);
            });
        else
            dispatch_async_f(dispatch_get_main_queue(), &number, note);
    }
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 6u);
    EXPECT_EQ(ran, (std::vector<int>{0, 1, 2, 3, 4, 5}));
}

TEST_F(MainQueue, ReturnsTheNumberOfItemsForAnyTimeout)
{
    const struct {
        double timeout;
        const char* why;
    } facts[] = {
        {0, "no wait"},
        {-1, "negative: no wait"},
        {std::nan(""), "NaN: no wait"},
        {1e300, "past the range of a clock: a long wait, which work ends"},
        {std::numeric_limits<double>::infinity(), "infinity: a long wait, which work ends"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        int one = 1;
        dispatch_async_f(dispatch_get_main_queue(), &one, note);
        dispatch_async_f(dispatch_get_main_queue(), &one, note);
        EXPECT_EQ(KVXPlatformDrainMainQueue(fact.timeout), 2u);
        EXPECT_EQ(KVXPlatformDrainMainQueue(std::min(fact.timeout, 0.0)), 0u);
    }
}

TEST_F(MainQueue, WaitsForTheFirstItem)
{
    int one = 1;
    std::thread other([&] { dispatch_async_f(dispatch_get_main_queue(), &one, note); });
    EXPECT_EQ(KVXPlatformDrainMainQueue(60), 1u);
    other.join();
}

TEST_F(MainQueue, LeavesItemsThatItsWorkQueuesForTheNextCall)
{
    static int times = 0;
    static void (*again)(void*) = [](void*) {
        if (++times < 3) dispatch_async_f(dispatch_get_main_queue(), nullptr, again);
    };
    times = 0;
    again(nullptr);
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 1u);
    EXPECT_EQ(times, 2);
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 1u);
    EXPECT_EQ(times, 3);
}

TEST_F(MainQueue, RunsTheNextItemsInANestedCall)
{
    static std::uint32_t inner = 0;
    static int numbers[] = {1, 2};
    dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) {
        ran.push_back(0);
        inner = KVXPlatformDrainMainQueue(0);
    });
    for (int& number : numbers) dispatch_async_f(dispatch_get_main_queue(), &number, note);
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 1u);
    EXPECT_EQ(inner, 2u);
    EXPECT_EQ(ran, (std::vector<int>{0, 1, 2}));
}

TEST_F(MainQueue, IsDrainedByTheMainThreadOnly)
{
    int one = 1;
    dispatch_async_f(dispatch_get_main_queue(), &one, note);
    std::uint32_t elsewhere = 1;
    std::thread([&] { elsewhere = KVXPlatformDrainMainQueue(0); }).join();
    EXPECT_EQ(elsewhere, 0u);
    EXPECT_TRUE(ran.empty());

    static int onMain = 0;
    dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) { onMain = pthread_main_np(); });
    std::thread([] {
        dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) { onMain += 2 * pthread_main_np(); });
    }).join();
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 3u);
    EXPECT_EQ(onMain, 3);
}

TEST_F(MainQueue, KeepsTheOrderOfEachThread)
{
    constexpr int threads = 4, each = 500;
    static int next[threads];
    static bool isInOrder = true;
    struct Item {
        int thread, number;
    };
    static Item items[threads][each];
    std::vector<std::thread> others;
    for (int t = 0; t < threads; ++t)
        others.emplace_back([t] {
            for (int n = 0; n < each; ++n) {
                items[t][n] = {t, n};
                dispatch_async_f(dispatch_get_main_queue(), &items[t][n], [](void* context) {
                    const Item& item = *static_cast<Item*>(context);
                    if (next[item.thread]++ != item.number) isInOrder = false;
                });
            }
        });
    std::uint32_t total = 0;
    while (total < threads * each) total += KVXPlatformDrainMainQueue(1);
    for (std::thread& other : others) other.join();
    EXPECT_EQ(total, threads * each);
    EXPECT_TRUE(isInOrder);
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 0u);
}

} // namespace
