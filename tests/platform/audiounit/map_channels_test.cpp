// Tests how client channels are written to a device's channels, with a gain.
#include "platform/audiounit/output/map_channels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

using namespace kvxplatform::audiounit;
using kvxplatform::pcm::ChannelMap;
using Floats = std::vector<Float32>;

TEST(MapChannels, FindsTheSourceOfEachDestination)
{
    const ChannelMap map = {1, -1, 5, 0};
    // clang-format off
    const struct { const ChannelMap* map; UInt32 destination, sources; SInt32 source; const char* why; } facts[] = {
        {nullptr, 0, 2, 0,  "no map: the same channel"},
        {nullptr, 1, 2, 1,  "the same channel"},
        {nullptr, 2, 2, -1, "no such source channel"},
        {&map,    0, 2, 1,  "mapped"},
        {&map,    1, 2, -1, "silent"},
        {&map,    2, 2, -1, "no such source channel"},
        {&map,    2, 6, 5,  "the source channel exists"},
        {&map,    3, 2, 0,  "mapped"},
        {&map,    4, 2, -1, "past the end of the map"},
    };
    // clang-format on
    for (const auto& fact : facts)
        EXPECT_EQ(sourceChannelOf(fact.map, fact.destination, fact.sources), fact.source) << fact.why;
}

TEST(MapChannels, AppliesMapAndGain)
{
    const Floats in = {1, 2, 3, 4, 5, 6}; // samples of three frames of two channels
    const ChannelMap map = {1, -1, 0};
    Floats out(9, 99);
    mapChannels(in.data(), 2, 3, &map, {1, 1}, 0, 0, 3, out.data());
    EXPECT_EQ(out, (Floats{2, 0, 1, 4, 0, 3, 6, 0, 5}));

    out.assign(6, 99);
    mapChannels(in.data(), 2, 3, &map, {1, 1}, 0, 1, 2, out.data());
    EXPECT_EQ(out, (Floats{0, 1, 0, 3, 0, 5})) << "the second stream of a device begins at its channel 1";

    out.assign(6, 99);
    mapChannels(in.data(), 2, 3, nullptr, {1, 1}, 0, 0, 2, out.data());
    EXPECT_EQ(out, in) << "the same channels";

    out.assign(6, 99);
    mapChannels(in.data(), 2, 3, nullptr, {0.5f, 0.5f}, 0, 0, 2, out.data());
    EXPECT_EQ(out, (Floats{0.5, 1, 1.5, 2, 2.5, 3}));

    out.assign(6, 99);
    mapChannels(in.data(), 2, 3, nullptr, {0, 128, 512}, 1, 0, 2, out.data());
    EXPECT_EQ(out, (Floats{0.5, 1, 2.25, 3, 5, 6})) << "frames 1 to 3 of a ramp";
}

TEST(MapChannels, CopiesBitsAtUnityGain)
{
    const Float32 nan = std::nanf("5");
    const Floats in = {nan, -0.0f, 1e-42f, 3e38f};
    Floats out(4);
    mapChannels(in.data(), 2, 2, nullptr, {1, 1}, 0, 0, 2, out.data());
    EXPECT_EQ(std::memcmp(in.data(), out.data(), sizeof(Float32) * 4), 0);
    const ChannelMap identity = {0, 1};
    out.assign(4, 0);
    mapChannels(in.data(), 2, 2, &identity, {1, 1}, 0, 0, 2, out.data());
    EXPECT_EQ(std::memcmp(in.data(), out.data(), sizeof(Float32) * 4), 0);
}

} // namespace
