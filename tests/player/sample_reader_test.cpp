// The sample reader: which sample an index returns, and the player's state after reading past a buffer's end.
#include "player/sample_reader.h"

#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/support/c_library_spy.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using test::PlayerObject;
using Events = std::vector<std::string>;

class PlayerSampleReader : public test::FreshPlatform {};

// In each row the current buffer is 10, 11, 12, and its first sample has the index `base`. The next buffer is
// 20, 21, 22, 23.
// clang-format off
const struct {
    std::int64_t base, index;
    float sample;
    bool isNextTaken;
    const char* why;
} facts[] = {
    { 0,       0,         10, false, "the first" },
    { 0,       1,         11, false, "inside" },
    { 0,       2,         12, false, "the last" },
    { 0,       -1,        0,  false, "before the first" },
    { 0,       INT64_MIN, 0,  false, "the lowest index" },
    { 0,       3,         20, true,  "the first of the next" },
    { 0,       4,         21, true,  "inside the next" },
    { 0,       6,         23, true,  "the last of the next" },
    { 0,       7,         0,  true,  "past the next: a step longer than a buffer" },
    { 0,       INT64_MAX, 0,  true,  "the highest index" },
    { 100,     99,        0,  false, "before the first, which is not index 0" },
    { 100,     100,       10, false, "the first" },
    { 100,     102,       12, false, "the last" },
    { 100,     103,       20, true,  "the first of the next" },
    { 100,     0,         0,  false, "long before the first" },
    { 1LL<<40, (1LL<<40) + 1, 11, false, "indexes have 64 bits" },
    { 1LL<<40, 1,         0,  false, "the high 32 bits count" },
    { 1LL<<40, (1LL<<40) + (1LL<<32), 0, true, "the high 32 bits count forward, too" },
};
// clang-format on

TEST_F(PlayerSampleReader, ReturnsTheSampleAtAnIndex)
{
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const PlayerObject object;
        object->current = test::itemOf({10, 11, 12});
        ASSERT_TRUE(object.add({20, 21, 22, 23}));
        ASSERT_TRUE(object.add({30}));
        object->baseSampleIndex = fact.base;
        object->outputPositionRelative = 5;
        object->outputPosition = 6;

        EXPECT_EQ(player::GetSample(object.data(), fact.index), fact.sample);
        EXPECT_EQ(object.current(),
                  fact.isNextTaken ? (std::vector<float>{20, 21, 22, 23}) : (std::vector<float>{10, 11, 12}));
        EXPECT_EQ(object->baseSampleIndex, fact.base + (fact.isNextTaken ? 3 : 0));
        EXPECT_EQ(object->queueCount, fact.isNextTaken ? 1 : 2) << "one call takes at most one buffer";
        EXPECT_EQ(object->outputPositionRelative, fact.isNextTaken ? 0.0 : 5.0);
        EXPECT_EQ(object->outputPosition, 6.0);
    }
}

TEST_F(PlayerSampleReader, ReturnsZeroWithoutACurrentBuffer)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({20}));
    object->baseSampleIndex = 7;
    for (const std::int64_t index : {std::int64_t{0}, std::int64_t{7}, INT64_MAX, INT64_MIN}) {
        c_library_spy::begin();
        const float sample = player::GetSample(object.data(), index);
        EXPECT_EQ(c_library_spy::end(), Events());
        EXPECT_EQ(sample, 0.0f);
    }
    EXPECT_EQ(object->queueCount, 1);
    EXPECT_EQ(object->baseSampleIndex, 7);
}

TEST_F(PlayerSampleReader, AfterTheLastBufferTheBaseIsItsEnd)
{
    const PlayerObject object;
    object->current = test::itemOf({10, 11, 12});
    object->outputPositionRelative = 2.5;
    const long before = c_library_spy::liveBlocks();
    EXPECT_EQ(player::GetSample(object.data(), 3), 0.0f);
    EXPECT_EQ(object->current.data, nullptr);
    EXPECT_EQ(object->current.count, 0);
    EXPECT_EQ(object->baseSampleIndex, 3);
    EXPECT_EQ(object->outputPositionRelative, 2.5) << "no buffer became current";
    EXPECT_EQ(c_library_spy::liveBlocks(), before - 1);
}

TEST_F(PlayerSampleReader, FreesAndLocksOnlyAtTheEndOfABuffer)
{
    const PlayerObject object;
    object->current = test::itemOf({10, 11});
    ASSERT_TRUE(object.add({20, 21}));
    const auto eventsOf = [&](std::int64_t index) {
        c_library_spy::begin();
        player::GetSample(object.data(), index);
        return c_library_spy::end();
    };
    EXPECT_EQ(eventsOf(0), Events());
    EXPECT_EQ(eventsOf(1), Events());
    EXPECT_EQ(eventsOf(-1), Events());
    EXPECT_EQ(eventsOf(2), (Events{"free", "lock", "unlock"}));
    EXPECT_EQ(eventsOf(3), Events());
    EXPECT_EQ(eventsOf(4), (Events{"free", "lock", "unlock"}));
    EXPECT_EQ(eventsOf(5), Events());
}

TEST_F(PlayerSampleReader, ReadsZeroWhenTheLockFails)
{
    const PlayerObject object;
    object->current = test::itemOf({10, 11});
    ASSERT_TRUE(object.add({20, 21}));
    c_library_spy::refuseLock(1);
    c_library_spy::begin();
    const float sample = player::GetSample(object.data(), 2);
    EXPECT_EQ(c_library_spy::end(), (Events{"free", "lock refused"}));
    EXPECT_EQ(sample, 0.0f);
    EXPECT_EQ(object->current.data, nullptr);
    EXPECT_EQ(object->baseSampleIndex, 2);
    EXPECT_EQ(object->queueCount, 1) << "the waiting buffer stays";
}

TEST_F(PlayerSampleReader, ReturnsEverySampleUnchanged)
{
    const PlayerObject object;
    std::vector<float> ramp;
    for (int i = 0; i < 1000; ++i) ramp.push_back(static_cast<float>(i) * 0.001f);
    ASSERT_TRUE(object.add(ramp));
    ASSERT_TRUE(object.add(ramp));
    object->current = test::itemOf(ramp);
    for (std::int64_t i = 0; i < 3000; ++i)
        ASSERT_EQ(player::GetSample(object.data(), i), ramp[static_cast<std::size_t>(i % 1000)]) << i;
}

} // namespace
