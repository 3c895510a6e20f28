// Tests default channel maps, and channel maps from property data.
#include "platform/pcm/channel_map.h"

#include <gtest/gtest.h>

namespace {

using namespace kvxplatform::pcm;

TEST(ChannelMap, FoldsByChannelCounts)
{
    // clang-format off
    const struct { UInt32 sources, destinations; ChannelMap map; const char* why; } facts[] = {
        {2, 2, {0, 1},         "equal counts"},
        {6, 2, {0, 1},         "further source channels are dropped"},
        {2, 4, {0, 1, -1, -1}, "missing source channels are silent"},
        {1, 1, {0},            "mono to mono"},
        {1, 2, {0, 0},         "mono plays on both"},
        {1, 4, {0, 0, -1, -1}, "mono plays on the first two"},
    };
    // clang-format on
    for (const auto& fact : facts)
        EXPECT_EQ(foldedChannelMap(fact.sources, fact.destinations), fact.map) << fact.why;
    EXPECT_EQ(identityChannelMap(3), (ChannelMap{0, 1, 2}));
}

TEST(ChannelMap, ChecksPropertyData)
{
    ChannelMap entries(1025, 0);
    entries[1] = -1;
    EXPECT_EQ(channelMapFrom(entries.data(), 8), (ChannelMap{0, -1}));
    EXPECT_EQ(channelMapFrom(entries.data(), 0), std::nullopt) << "no entry";
    EXPECT_EQ(channelMapFrom(entries.data(), 6), std::nullopt) << "half an entry";
    EXPECT_TRUE(channelMapFrom(entries.data(), 1024 * 4)) << "the most entries";
    EXPECT_EQ(channelMapFrom(entries.data(), 1025 * 4), std::nullopt) << "too many entries";
    entries[1] = -2;
    EXPECT_EQ(channelMapFrom(entries.data(), 8), std::nullopt) << "below -1";
}

} // namespace
