// Tests that a slice through the rate units and their engines allocates nothing and takes no lock.
#include "tests/platform/audiounit/rate_unit.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace test;

// clang-format off
const struct { Rates rates; const char* why; } cases[] = {
    {{'nutp', 1},              "neutral"},
    {{'nutp', 1.25},           "faster"},
    {{'nutp', 0.5, -1200},     "slower and lower"},
    {{'nutp', 32, 2400},       "at the ends of the ranges"},
    {{'nutp', 1.0 / 32, 2400}, "at the other ends"},
    {{'nutp', 1.25, 300, 3},   "with the faster engine"},
    {{'nutp', 32, 2400, 3},    "at the ends of the ranges, with the faster engine"},
    {{'vari', 0.7},            "varispeed"},
    {{'vari', 4},              "varispeed, four times as fast"},
};
// clang-format on

/// Renders a unit while allocations and locks are counted.
class Guarded {
public:
    explicit Guarded(RateUnit& unit) : unit_(unit) {}
    void play(int slices)
    {
        for (int i = 0; i < slices; ++i) {
            allocator_hook::watchThisThread(true);
            const OSStatus status = unit_.rendering.slice(512);
            allocator_hook::watchThisThread(false);
            EXPECT_EQ(status, noErr);
        }
    }

private:
    RateUnit& unit_;
};

TEST(RateRenderThread, AllocatesNothingAndTakesNoLock)
{
    for (const auto& fact : cases) {
        SCOPED_TRACE(fact.why);
        RateUnit player(fact.rates, whiteNoise(2, 200000));
        const allocator_hook::Count count;
        Guarded guarded(player);
        guarded.play(8);
        EXPECT_EQ(AudioUnitReset(player.unit, 0, 0), noErr);
        guarded.play(8);
        EXPECT_EQ(count.heapCalls(), 0);
        EXPECT_EQ(count.locks(), 0);
    }
}

// The thread that sets a value makes and frees the engines, so the render thread allocates nothing.
TEST(RateRenderThread, AllocatesNothingWhileSettingsChange)
{
    // clang-format off
    const struct { OSType subType; AudioUnitParameterID id; double value; } changes[] = {
        {'nutp', 0, 1.25}, {'nutp', 1, 300}, {'nutp', 0, 0.4}, {'nutp', 4, 3}, {'nutp', 1, -700}, {'nutp', 4, 8}, {'nutp', 0, 1}, {'nutp', 1, 0},
        {'vari', 0, 1.25}, {'vari', 1, 300}, {'vari', 0, 0.4}, {'vari', 0, 1},
    };
    // clang-format on
    for (const OSType kind : {'nutp', 'vari'}) {
        RateUnit player({kind}, whiteNoise(2, 400000));
        Guarded guarded(player);
        const allocator_hook::Count count;
        for (const auto& change : changes) {
            if (change.subType != kind) continue;
            player.set(change.id, change.value);
            guarded.play(40);
        }
        player.bypass(true);
        guarded.play(10);
        EXPECT_EQ(count.heapCalls(), 0);
        EXPECT_EQ(count.locks(), 0);
    }
}

// The callback changes a setting on the render thread after an engine has been made.
TEST(RateRenderThread, SettingsInsideASliceAllocateNothing)
{
    RateUnit player({'nutp', 1.25}, whiteNoise(2, 400000));
    const auto setInside = [](void* context, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                              UInt32 bus, UInt32 frames, AudioBufferList* list) -> OSStatus {
        RateUnit& self = *static_cast<RateUnit*>(context);
        const auto rate =
            static_cast<Float32>(1 + 0.25 * std::abs(static_cast<int>(time->mSampleTime) / 512 % 3));
        const OSStatus status = AudioUnitSetParameter(self.unit, 0, 0, 0, rate, 0);
        return status ? status : Track::callback(&self.track, flags, time, bus, frames, list);
    };
    EXPECT_EQ(player.unit.setCallback(setInside, &player), noErr);
    const allocator_hook::Count count;
    Guarded(player).play(30);
    EXPECT_EQ(count.heapCalls(), 0);
    EXPECT_EQ(count.locks(), 0);
}

} // namespace
