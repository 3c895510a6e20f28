// Tests handles that stay invalid after their object is closed.
#include "platform/support/handle_table.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace {

using kvxplatform::HandleNumber;
using kvxplatform::HandleTable;

struct Object {
    explicit Object(int n) : number(n) { ++alive; }
    ~Object() { --alive; }
    Object(const Object&) = delete;
    int number;
    static std::atomic<int> alive;
};
std::atomic<int> Object::alive{0};

using Objects = HandleTable<Object, 1>;

HandleNumber add(Objects& table, int number)
{
    return table.add(std::make_unique<Object>(number), [](Object&, HandleNumber) { return true; });
}

bool close(Objects& table, HandleNumber handle)
{
    Objects::Use closing = table.beginClose(handle);
    if (!closing) return false;
    table.endClose(std::move(closing));
    return true;
}

TEST(HandleTable, FindsItsObjectsOnly)
{
    Objects table;
    const HandleNumber seven = add(table, 7), eight = add(table, 8);
    ASSERT_NE(seven, 0u);
    ASSERT_NE(seven, eight);
    EXPECT_EQ(table.use(seven)->number, 7);
    EXPECT_EQ(table.use(eight)->number, 8);

    // clang-format off
    const struct { HandleNumber handle; const char* why; } invalid[] = {
        {0,                    "zero"},
        {1,                    "a small number"},
        {seven + 1,            "the kind of another table"},
        {seven ^ (1u << 14),   "another generation of the slot"},
        {seven + (2u << 2),    "a slot that was never used"},
        {(4095u << 2) | 1 | (1u << 14), "the last slot, never used"},
        {0xFFFFFFFFu,          "all ones"},
        {0xBFFFF3A4u,          "an address on the stack"},
    };
    // clang-format on
    for (const auto& fact : invalid) {
        EXPECT_FALSE(table.use(fact.handle)) << fact.why;
        EXPECT_FALSE(close(table, fact.handle)) << fact.why;
    }
    EXPECT_TRUE(close(table, seven));
    EXPECT_TRUE(close(table, eight));
    EXPECT_EQ(Object::alive, 0);
}

TEST(HandleTable, AClosedHandleStaysInvalid)
{
    Objects table;
    std::set<HandleNumber> closed;
    for (int i = 0; i < 20000; ++i) {
        const HandleNumber handle = add(table, i);
        ASSERT_NE(handle, 0u);
        ASSERT_TRUE(closed.insert(handle).second) << "handle " << i << " was used before";
        ASSERT_TRUE(close(table, handle));
        ASSERT_FALSE(close(table, handle));
    }
    const HandleNumber open = add(table, -1);
    for (HandleNumber handle : closed) ASSERT_FALSE(table.use(handle));
    close(table, open);
}

TEST(HandleTable, AddsAnObjectToAFullTableAfterAClose)
{
    Objects table;
    std::vector<HandleNumber> open;
    for (std::uint32_t i = 0; i < Objects::capacity; ++i) open.push_back(add(table, static_cast<int>(i)));
    EXPECT_EQ(std::set<HandleNumber>(open.begin(), open.end()).size(), Objects::capacity);
    EXPECT_EQ(add(table, 0), 0u);
    EXPECT_EQ(Object::alive, static_cast<int>(Objects::capacity)) << "the refused object is freed";
    EXPECT_TRUE(close(table, open[100]));
    const HandleNumber next = add(table, 1);
    EXPECT_NE(next, 0u);
    EXPECT_NE(next, open[100]);
    open[100] = next;
    for (HandleNumber handle : open) EXPECT_TRUE(close(table, handle));
    EXPECT_EQ(Object::alive, 0);
}

TEST(HandleTable, ASlotWithoutGenerationsIsNotUsedAgain)
{
    using FewGenerations = HandleTable<Object, 1, 3>; // each slot serves seven objects
    FewGenerations table;
    std::set<HandleNumber> given;
    for (;;) {
        const HandleNumber handle =
            table.add(std::make_unique<Object>(1), [](Object&, HandleNumber) { return true; });
        if (!handle) break;
        ASSERT_TRUE(given.insert(handle).second) << "a handle was used before";
        ASSERT_LE(given.size(), 7u * FewGenerations::capacity);
        table.endClose(table.beginClose(handle));
    }
    EXPECT_GT(given.size(), 7u * (FewGenerations::capacity - 64)) << "every slot but the last few is used up";
    EXPECT_EQ(Object::alive, 0);
}

TEST(HandleTable, AUseKeepsAClosedObjectAlive)
{
    Objects table;
    const HandleNumber handle = add(table, 5);
    {
        const Objects::Use use = table.use(handle);
        EXPECT_TRUE(close(table, handle));
        EXPECT_FALSE(table.use(handle));
        EXPECT_EQ(use->number, 5);
        EXPECT_EQ(Object::alive, 1);
    }
    EXPECT_EQ(Object::alive, 0);
}

TEST(HandleTable, AClosingObjectCanBeUsed)
{
    Objects table;
    const HandleNumber handle = add(table, 5);
    Objects::Use closing = table.beginClose(handle);
    ASSERT_TRUE(closing);
    EXPECT_TRUE(table.use(handle)) << "until endClose";
    EXPECT_FALSE(table.beginClose(handle)) << "closing already";
    table.endClose(std::move(closing));
    EXPECT_FALSE(table.use(handle));
}

TEST(HandleTable, DropsAnObjectThatCannotBePrepared)
{
    Objects table;
    HandleNumber seen = 0;
    EXPECT_EQ(table.add(std::make_unique<Object>(1),
                        [&](Object&, HandleNumber handle) {
                            seen = handle;
                            return false;
                        }),
              0u);
    EXPECT_FALSE(table.use(seen));
    EXPECT_THROW(table.add(std::make_unique<Object>(1),
                           [&](Object&, HandleNumber handle) -> bool {
                               seen = handle;
                               throw 1;
                           }),
                 int);
    EXPECT_FALSE(table.use(seen));
    EXPECT_EQ(Object::alive, 0);
}

TEST(HandleTable, MayBeUsedAndClosedOnSeveralThreads)
{
    Objects table;
    std::atomic<HandleNumber> current{add(table, 0)};
    std::atomic<bool> isOver{false};
    std::atomic<int> found{0};
    std::vector<std::thread> users;
    for (int i = 0; i < 3; ++i)
        users.emplace_back([&] {
            while (!isOver)
                if (const Objects::Use use = table.use(current)) found += use->number >= 0;
        });
    // Wait until a thread has started and found an object.
    while (found == 0) std::this_thread::yield();
    for (int i = 1; i <= 20000; ++i) {
        const HandleNumber old = current.exchange(add(table, i));
        ASSERT_TRUE(close(table, old));
    }
    isOver = true;
    for (std::thread& user : users) user.join();
    close(table, current);
    EXPECT_EQ(Object::alive, 0);
}

} // namespace
