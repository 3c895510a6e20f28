// A record that is replaced under its reader.
#include "platform/audiounit/published.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

namespace {

using kvxplatform::audiounit::Published;

struct Record {
    explicit Record(int n) : one(n), two(n) { ++alive; }
    ~Record() { one = two = -1, --alive; }
    Record(const Record&) = delete;
    int one, two;
    static std::atomic<int> alive;
};
std::atomic<int> Record::alive{0};

TEST(Published, KeepsWhatASliceMayHold)
{
    {
        Published<Record> record;
        EXPECT_EQ(record.get(), nullptr);
        record.publish(std::make_unique<Record>(1), [] { return true; });
        const Record* held = record.get();
        record.publish(std::make_unique<Record>(2), [] { return true; });
        EXPECT_EQ(held->one, 1) << "a slice runs: the former stays";
        EXPECT_EQ(Record::alive, 2);
        record.publish(std::make_unique<Record>(3), [] { return false; });
        EXPECT_EQ(Record::alive, 1) << "none runs: all former go";
        EXPECT_EQ(record.get()->one, 3);
        record.publish(nullptr, [] { return true; });
        EXPECT_EQ(record.get(), nullptr);
        EXPECT_EQ(Record::alive, 1);
    }
    EXPECT_EQ(Record::alive, 0);
}

TEST(Published, ReaderAndWriters)
{
    Published<Record> record;
    std::atomic<bool> isInSlice{false}, isOver{false};
    std::mutex lock;
    std::thread reader([&] {
        while (!isOver) {
            isInSlice = true;
            if (const Record* held = record.get()) {
                EXPECT_GT(held->one, 0);
                EXPECT_EQ(held->one, held->two);
            }
            isInSlice = false;
        }
    });
    std::vector<std::thread> writers;
    for (int w = 0; w < 2; ++w)
        writers.emplace_back([&] {
            for (int i = 1; i <= 5000; ++i) {
                const std::lock_guard<std::mutex> guard(lock);
                record.publish(i % 7 ? std::make_unique<Record>(i) : nullptr,
                               [&] { return isInSlice.load(); });
            }
        });
    for (std::thread& writer : writers) writer.join();
    isOver = true;
    reader.join();
}

} // namespace
