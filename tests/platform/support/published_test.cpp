// Tests an object that is replaced while a render thread reads it.
#include "platform/support/published.h"

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace {

using kvxplatform::Published;
using kvxplatform::RenderScope;

struct Record {
    explicit Record(int n) : one(n), two(n) { ++alive; }
    ~Record() { one = two = -1, --alive; }
    Record(const Record&) = delete;
    int one, two;
    static std::atomic<int> alive;
};
std::atomic<int> Record::alive{0};

TEST(Published, KeepsARecordUntilTheRenderCallThatMayUseItHasLeft)
{
    RenderScope scope;
    {
        Published<Record> record;
        EXPECT_EQ(record.get(), nullptr);
        std::optional<RenderScope::Entry> call(std::in_place, scope);
        record.publish(std::make_unique<Record>(1), scope);
        const Record* held = record.get();
        record.publish(std::make_unique<Record>(2), scope);
        EXPECT_EQ(held->one, 1) << "a render call is in progress";
        EXPECT_EQ(Record::alive, 2);
        EXPECT_FALSE(record.sweep(scope));
        call.reset();
        EXPECT_TRUE(record.sweep(scope));
        EXPECT_EQ(Record::alive, 1);
        EXPECT_EQ(record.get()->one, 2);
    }
    EXPECT_EQ(Record::alive, 0);
}

TEST(Published, FreesAFormerRecordWhileALaterRenderCallIsInProgress)
{
    RenderScope scope;
    Published<Record> record(std::make_unique<Record>(1));
    {
        const RenderScope::Entry first(scope);
        record.publish(std::make_unique<Record>(2), scope);
        EXPECT_EQ(Record::alive, 2);
    }
    const RenderScope::Entry second(scope);
    EXPECT_TRUE(record.sweep(scope));
    EXPECT_EQ(Record::alive, 1);
}

TEST(Published, FreesARecordAtOnceWithoutARenderCall)
{
    RenderScope scope;
    Published<Record> record(std::make_unique<Record>(1));
    record.publish(nullptr, scope);
    EXPECT_EQ(record.get(), nullptr);
    EXPECT_EQ(Record::alive, 0);
}

TEST(Published, KeepsAHeldRecordBeyondItsRenderCall)
{
    RenderScope scope;
    Published<Record> record(std::make_unique<Record>(1));
    Record* held = nullptr;
    {
        const RenderScope::Entry call(scope);
        held = record.hold();
        ASSERT_NE(held, nullptr);
        EXPECT_EQ(record.hold(), nullptr) << "held already";
    }
    EXPECT_EQ(record.publish(std::make_unique<Record>(2), scope), held);
    EXPECT_FALSE(record.sweep(scope));
    {
        const RenderScope::Entry call(scope);
        EXPECT_EQ(held->one, 1);
        Record* const second = record.hold();
        ASSERT_NE(second, nullptr);
        EXPECT_EQ(second->one, 2);
        record.publish(std::make_unique<Record>(3), scope);
        EXPECT_EQ(record.hold(), nullptr) << "two are held";
        record.release(held);
        EXPECT_EQ(record.hold()->one, 3);
        EXPECT_EQ(Record::alive, 3) << "the writers free";
    }
    EXPECT_FALSE(record.sweep(scope)) << "the second is held";
    EXPECT_EQ(Record::alive, 2);
    record.release(nullptr);
    EXPECT_EQ(Record::alive, 2);
}

TEST(Published, ReturnsAReplacedRecordThatIsStillInUse)
{
    RenderScope scope;
    Published<Record> record;
    EXPECT_EQ(record.publish(std::make_unique<Record>(1), scope), nullptr) << "nothing was published";
    EXPECT_EQ(record.publish(std::make_unique<Record>(2), scope), nullptr) << "no render call: freed";
    EXPECT_EQ(Record::alive, 1);
    const RenderScope::Entry call(scope);
    const Record* const former = record.get();
    EXPECT_EQ(record.publish(nullptr, scope), former);
    EXPECT_EQ(former->one, 2);
    EXPECT_EQ(record.publish(std::make_unique<Record>(3), scope), nullptr);
    EXPECT_EQ(former->one, 2) << "the render call is still in progress";
}

TEST(Published, HeldRecordsStayWholeWhileTheyAreReplaced)
{
    RenderScope scope;
    Published<Record> record;
    record.publish(std::make_unique<Record>(1), scope);
    std::atomic<bool> isOver{false};
    std::atomic<int> reads{0};
    std::thread reader([&] {
        Record* held = nullptr;
        for (unsigned calls = 0; !isOver; ++calls) {
            const RenderScope::Entry call(scope);
            if (Record* const next = record.hold()) {
                record.release(held);
                held = next;
            }
            if (!held) continue;
            EXPECT_GT(held->one, 0);
            EXPECT_EQ(held->one, held->two);
            ++reads;
            if (calls % 5 == 0) {
                record.release(held);
                held = nullptr;
            }
        }
    });
    while (reads == 0) std::this_thread::yield();
    for (int i = 1; i <= 5000; ++i) record.publish(i % 7 ? std::make_unique<Record>(i) : nullptr, scope);
    isOver = true;
    reader.join();
}

TEST(Published, IsReadWholeWhileTwoThreadsReplaceIt)
{
    RenderScope scope;
    Published<Record> record;
    record.publish(std::make_unique<Record>(1), scope);
    std::atomic<bool> isOver{false};
    std::atomic<int> reads{0};
    std::mutex lock;
    std::thread reader([&] {
        while (!isOver) {
            const RenderScope::Entry call(scope);
            if (const Record* held = record.get()) {
                EXPECT_GT(held->one, 0);
                EXPECT_EQ(held->one, held->two);
                ++reads;
            }
        }
    });
    while (reads == 0) std::this_thread::yield();
    std::vector<std::thread> writers;
    for (int w = 0; w < 2; ++w)
        writers.emplace_back([&] {
            for (int i = 1; i <= 5000; ++i) {
                const std::lock_guard<std::mutex> guard(lock);
                record.publish(i % 7 ? std::make_unique<Record>(i) : nullptr, scope);
            }
        });
    for (std::thread& writer : writers) writer.join();
    isOver = true;
    reader.join();
}

} // namespace
