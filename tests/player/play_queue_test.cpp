// The play queue: the contents of its 200 slots, the owner of each buffer, and the code that runs under the
// lock.
#include "player/play_queue.h"

#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/support/c_library_spy.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using player::AddToPlayList;
using player::PlayItem;
using test::PlayerObject;
using Events = std::vector<std::string>;

class PlayerQueue : public test::FreshPlatform {
protected:
    /// Queue `count` buffers. The only sample of each buffer is the number of the buffer.
    static void fill(const PlayerObject& object, int count)
    {
        for (int i = 0; i < count; ++i) {
            PlayItem item = test::itemOf({static_cast<float>(i)});
            ASSERT_TRUE(AddToPlayList(object.data(), item, false)) << i;
        }
    }

    static HostInteger freeSpace(const PlayerObject& object)
    {
        return test::members.call<HostInteger>("FreeSpace", object);
    }
    static bool hasFreeSpace(const PlayerObject& object)
    {
        return test::members.call<HostBoolean>("HasFreeSpace", object);
    }

    /// Expect that all occupied slots come before all empty slots.
    static void expectInvariant(const PlayerObject& object)
    {
        for (int i = 0; i < player::queueCapacity; ++i) {
            const PlayItem& slot = object->queue[i];
            EXPECT_EQ(slot.data != nullptr, i < object->queueCount) << "slot " << i;
            if (!slot.data) {
                EXPECT_EQ(slot.count, 0) << "slot " << i;
            }
        }
    }

    static void expectEmptied(const PlayItem& item)
    {
        EXPECT_EQ(item.count, 0);
        EXPECT_EQ(item.data, nullptr);
    }
};

TEST_F(PlayerQueue, Accepts200BuffersAndRefusesTheNext)
{
    const PlayerObject object;
    const long before = c_library_spy::liveBlocks();
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(freeSpace(object), 200 - i);
        EXPECT_TRUE(hasFreeSpace(object));
        EXPECT_TRUE(object.add({static_cast<float>(i)})) << i;
        EXPECT_EQ(object.slot(i), std::vector<float>{static_cast<float>(i)});
        EXPECT_EQ(object->queueCount, i + 1);
    }
    EXPECT_EQ(freeSpace(object), 0);
    EXPECT_FALSE(hasFreeSpace(object));
    EXPECT_EQ(c_library_spy::liveBlocks(), before + 200);

    EXPECT_FALSE(object.add({201.0f}));
    EXPECT_EQ(c_library_spy::liveBlocks(), before + 200) << "the refused buffer is freed";
    EXPECT_EQ(object->queueCount, 200);
    for (int i = 0; i < 200; ++i) EXPECT_EQ(object.slot(i), std::vector<float>{static_cast<float>(i)}) << i;
    expectInvariant(object);
}

TEST_F(PlayerQueue, ReturnsItsBuffersInOrder)
{
    const PlayerObject object;
    fill(object, 200);
    for (int i = 0; i < 200; ++i) {
        object->outputPositionRelative = 5.5;
        ASSERT_TRUE(player::TakeNextPlayItem(object.data())) << i;
        EXPECT_EQ(object.current(), std::vector<float>{static_cast<float>(i)});
        EXPECT_EQ(object->outputPositionRelative, 0.0);
        EXPECT_EQ(object->queueCount, 199 - i);
        EXPECT_EQ(freeSpace(object), i + 1);
        expectInvariant(object);
        std::free(object->current.data);
        object->current = {};
    }
    object->outputPositionRelative = 5.5;
    EXPECT_FALSE(player::TakeNextPlayItem(object.data()));
    EXPECT_EQ(object->outputPositionRelative, 5.5) << "only a new current buffer restarts it";
    EXPECT_EQ(object->queueCount, 0);
    expectEmptied(object->current);
}

TEST_F(PlayerQueue, AppendsAfterTheWaitingBuffers)
{
    const PlayerObject object;
    fill(object, 200);
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(player::TakeNextPlayItem(object.data()));
        std::free(object->current.data);
        object->current = {};
    }
    EXPECT_TRUE(object.add({1000}));
    EXPECT_EQ(object.slot(0), std::vector<float>{3});
    EXPECT_EQ(object.slot(196), std::vector<float>{199});
    EXPECT_EQ(object.slot(197), std::vector<float>{1000});
    EXPECT_EQ(freeSpace(object), 2);
    expectInvariant(object);
}

TEST_F(PlayerQueue, EmptiesTheItemOfEveryAdd)
{
    const PlayerObject object;
    for (const bool clearBuffers : {false, true}) {
        PlayItem item = test::itemOf({1, 2, 3});
        const float* data = item.data;
        EXPECT_TRUE(AddToPlayList(object.data(), item, clearBuffers));
        expectEmptied(item);
        EXPECT_EQ(object->queue[0].count, 3);
        if (clearBuffers) {
            EXPECT_EQ(object->queue[0].data, data) << "the buffer itself is queued, not a copy";
        }
    }
    fill(object, 199);
    PlayItem refused = test::itemOf({4});
    EXPECT_FALSE(AddToPlayList(object.data(), refused, false));
    expectEmptied(refused);
}

TEST_F(PlayerQueue, ClearBuffersOnAFullQueueLeaves199Free)
{
    const PlayerObject object;
    fill(object, 200);
    object->current = test::itemOf({-1, -2});
    const float* playing = object->current.data;
    const long before = c_library_spy::liveBlocks();

    EXPECT_TRUE(object.add({7, 8}, true));
    EXPECT_EQ(freeSpace(object), 199);
    EXPECT_EQ(object.slot(0), (std::vector<float>{7, 8}));
    EXPECT_EQ(c_library_spy::liveBlocks(), before - 200 + 1);
    EXPECT_EQ(object->current.data, playing) << "the current buffer is not cut";
    EXPECT_EQ(object.current(), (std::vector<float>{-1, -2}));
    expectInvariant(object);
}

TEST_F(PlayerQueue, ClearBuffersOnAnEmptyQueueAppends)
{
    const PlayerObject object;
    EXPECT_TRUE(object.add({7}, true));
    EXPECT_EQ(freeSpace(object), 199);
    EXPECT_EQ(object.slot(0), std::vector<float>{7});
    EXPECT_TRUE(object.add({8}, true));
    EXPECT_EQ(freeSpace(object), 199);
    EXPECT_EQ(object.slot(0), std::vector<float>{8});
    expectInvariant(object);
}

TEST_F(PlayerQueue, NullBufferIsRefusedWithoutTheLock)
{
    const PlayerObject object;
    fill(object, 2);
    for (const bool clearBuffers : {false, true}) {
        PlayItem item = {17, nullptr};
        c_library_spy::begin();
        const bool added = AddToPlayList(object.data(), item, clearBuffers);
        EXPECT_EQ(c_library_spy::end(), Events());
        EXPECT_FALSE(added);
        EXPECT_EQ(item.count, 17) << "the count stays unchanged";
        EXPECT_EQ(object->queueCount, 2);
    }
}

// The conversion of samples and the free of a refused buffer happen while the lock is not held.
TEST_F(PlayerQueue, HoldsTheLockForSlotMovesAndFreesOnly)
{
    const PlayerObject object;
    const auto eventsOf = [](auto&& operation) {
        c_library_spy::begin();
        operation();
        return c_library_spy::end();
    };
    EXPECT_EQ(eventsOf([&] { object.add({1, 2}); }), (Events{"calloc 8", "lock", "unlock"}));
    EXPECT_EQ(eventsOf([&] { object.add({3}, false); }), (Events{"calloc 4", "lock", "unlock"}));
    EXPECT_EQ(eventsOf([&] { object.add({4}, true); }),
              (Events{"calloc 4", "lock", "free", "free", "unlock"}));
    EXPECT_EQ(eventsOf([&] { freeSpace(object); }), (Events{"lock", "unlock"}));
    EXPECT_EQ(eventsOf([&] { hasFreeSpace(object); }), (Events{"lock", "unlock"}));
    EXPECT_EQ(eventsOf([&] { player::TakeNextPlayItem(object.data()); }), (Events{"lock", "unlock"}));
    EXPECT_EQ(eventsOf([&] { player::TakeNextPlayItem(object.data()); }), (Events{"lock", "unlock"}));
    object.add({5});
    EXPECT_EQ(eventsOf([&] { player::FreeAllPlayItems(object.data()); }),
              (Events{"lock", "free", "unlock", "free"}))
        << "waiting buffers are freed under the lock, the current one outside";

    fill(object, 200);
    EXPECT_EQ(eventsOf([&] { object.add({6}); }), (Events{"calloc 4", "lock", "unlock", "free"}));
}

TEST_F(PlayerQueue, ClearingAllFreesEveryBufferAndTheCurrentOne)
{
    const long before = c_library_spy::liveBlocks();
    const PlayerObject object;
    fill(object, 200);
    object->current = test::itemOf({1});
    EXPECT_EQ(c_library_spy::liveBlocks(), before + 201);
    player::FreeAllPlayItems(object.data());
    EXPECT_EQ(c_library_spy::liveBlocks(), before);
    EXPECT_EQ(freeSpace(object), 200);
    expectEmptied(object->current);
    expectInvariant(object);
    player::FreeAllPlayItems(object.data());
    expectInvariant(object);
}

TEST_F(PlayerQueue, ClearingAllFreesAll200SlotsEvenIfTheCountIsWrong)
{
    const long before = c_library_spy::liveBlocks();
    const PlayerObject object;
    fill(object, 200);
    object->queueCount = 3;
    player::FreeAllPlayItems(object.data());
    EXPECT_EQ(c_library_spy::liveBlocks(), before);
    EXPECT_EQ(object->queueCount, 0);
    expectInvariant(object);
}

TEST_F(PlayerQueue, AnAddThatFindsNoEmptySlotFreesItsBuffer)
{
    const PlayerObject object;
    fill(object, 200);
    object->queueCount = 199; // wrong count: in fact no slot is empty
    const long before = c_library_spy::liveBlocks();
    PlayItem item = test::itemOf({1});
    c_library_spy::begin();
    const bool added = AddToPlayList(object.data(), item, false);
    EXPECT_EQ(c_library_spy::end(), (Events{"lock", "unlock", "free"}));
    EXPECT_FALSE(added);
    EXPECT_EQ(c_library_spy::liveBlocks(), before);
    expectEmptied(item);
    EXPECT_EQ(object->queueCount, 199);
}

TEST_F(PlayerQueue, AnAddUsesTheFirstEmptySlot)
{
    const PlayerObject object;
    fill(object, 5);
    std::free(object->queue[2].data);
    object->queue[2] = {};
    EXPECT_TRUE(object.add({99}));
    EXPECT_EQ(object.slot(2), std::vector<float>{99});
    EXPECT_EQ(object->queueCount, 6);
}

TEST_F(PlayerQueue, AnEmptyFrontSlotIsNotTaken)
{
    const PlayerObject object;
    object->queueCount = 1;
    object->outputPositionRelative = 2;
    EXPECT_FALSE(player::TakeNextPlayItem(object.data()));
    EXPECT_EQ(object->queueCount, 1);
    EXPECT_EQ(object->outputPositionRelative, 2.0);

    object->queueCount = 0;
    object->queue[0] = test::itemOf({1});
    EXPECT_FALSE(player::TakeNextPlayItem(object.data()));
    EXPECT_EQ(object->current.data, nullptr);
}

TEST_F(PlayerQueue, IsSeparateForEachPlayerUnderOneLock)
{
    const PlayerObject a, b;
    fill(a, 200);
    EXPECT_EQ(freeSpace(a), 0);
    EXPECT_EQ(freeSpace(b), 200);
    EXPECT_TRUE(b.add({1}));
    EXPECT_FALSE(a.add({1}));
    player::FreeAllPlayItems(a.data());
    EXPECT_EQ(freeSpace(a), 200);
    EXPECT_EQ(b.slot(0), std::vector<float>{1});

    c_library_spy::begin();
    freeSpace(a);
    const void* lockOfA = c_library_spy::lastLock();
    freeSpace(b);
    const void* lockOfB = c_library_spy::lastLock();
    c_library_spy::end();
    EXPECT_NE(lockOfA, nullptr);
    EXPECT_EQ(lockOfA, lockOfB);
}

// ---- locking fails ----

TEST_F(PlayerQueue, AnAddWithoutTheLockFreesItsBuffer)
{
    const PlayerObject object;
    fill(object, 2);
    for (const bool clearBuffers : {false, true}) {
        SCOPED_TRACE(clearBuffers);
        const long before = c_library_spy::liveBlocks();
        PlayItem item = test::itemOf({1});
        c_library_spy::refuseLock(1);
        c_library_spy::begin();
        const bool added = AddToPlayList(object.data(), item, clearBuffers);
        EXPECT_EQ(c_library_spy::end(), (Events{"lock refused", "free"}))
            << "a lock that is not held is not unlocked";
        EXPECT_FALSE(added);
        expectEmptied(item);
        EXPECT_EQ(c_library_spy::liveBlocks(), before);
        EXPECT_EQ(object->queueCount, 2);
    }
}

TEST_F(PlayerQueue, AnAddingMethodWithoutTheLockReturnsFalse)
{
    const PlayerObject object;
    const long before = c_library_spy::liveBlocks();
    c_library_spy::refuseLock(1);
    c_library_spy::begin();
    const bool added = object.add({1});
    EXPECT_EQ(c_library_spy::end(), (Events{"calloc 4", "lock refused", "free"}));
    EXPECT_FALSE(added);
    EXPECT_EQ(c_library_spy::liveBlocks(), before);
}

TEST_F(PlayerQueue, FreeSpaceWithoutTheLockIsZero)
{
    const PlayerObject object;
    c_library_spy::refuseLock(2);
    c_library_spy::begin();
    const HostInteger space = freeSpace(object);
    const bool hasSpace = hasFreeSpace(object);
    EXPECT_EQ(c_library_spy::end(), (Events{"lock refused", "lock refused"}));
    EXPECT_EQ(space, 0);
    EXPECT_FALSE(hasSpace);
}

TEST_F(PlayerQueue, TakingTheFrontWithoutTheLockTakesNothing)
{
    const PlayerObject object;
    fill(object, 2);
    object->outputPositionRelative = 3;
    c_library_spy::refuseLock(1);
    c_library_spy::begin();
    const bool taken = player::TakeNextPlayItem(object.data());
    EXPECT_EQ(c_library_spy::end(), Events{"lock refused"});
    EXPECT_FALSE(taken);
    EXPECT_EQ(object->queueCount, 2);
    EXPECT_EQ(object->current.data, nullptr);
    EXPECT_EQ(object->outputPositionRelative, 3.0);
}

TEST_F(PlayerQueue, ClearingAllWithoutTheLockStillFreesTheCurrentBuffer)
{
    const PlayerObject object;
    fill(object, 2);
    object->current = test::itemOf({1});
    c_library_spy::refuseLock(1);
    c_library_spy::begin();
    player::FreeAllPlayItems(object.data());
    EXPECT_EQ(c_library_spy::end(), (Events{"lock refused", "free"}));
    EXPECT_EQ(object->queueCount, 2);
    EXPECT_EQ(object.slot(1), std::vector<float>{1});
    expectEmptied(object->current);
}

} // namespace
