// A record that is replaced while a render thread reads it.
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

TEST(Published, IsReadWholeWhileTwoThreadsReplaceIt)
{
    RenderScope scope;
    Published<Record> record;
    std::atomic<bool> isOver{false};
    std::mutex lock;
    std::thread reader([&] {
        while (!isOver) {
            const RenderScope::Entry call(scope);
            if (const Record* held = record.get()) {
                EXPECT_GT(held->one, 0);
                EXPECT_EQ(held->one, held->two);
            }
        }
    });
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
