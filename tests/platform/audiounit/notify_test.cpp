// Who is told of each slice, and what.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

struct Told {
    AudioUnitRenderActionFlags flags;
    Float64 at;
    UInt32 bus, frames;
    float first; // sample of the list
    int source;  // calls of the feeder so far
};

struct Ear {
    const Feeder* feeder;
    std::vector<Told> told;
    static OSStatus hear(void* context, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                         UInt32 bus, UInt32 frames, AudioBufferList* list)
    {
        Ear& ear = *static_cast<Ear*>(context);
        ear.told.push_back({*flags, time->mSampleTime, bus, frames,
                            *static_cast<float*>(list->mBuffers[0].mData), ear.feeder->calls});
        return -99; // nobody minds
    }
};

TEST(Notify, IsToldBeforeAndAfterEachSlice)
{
    const Unit unit('genr');
    Feeder feeder(canonical(44100, 2));
    Ear ear{&feeder, {}};
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitAddRenderNotify(unit, Ear::hear, &ear), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    List list(canonical(44100, 2), 64);
    const AudioTimeStamp time = sampleTime(1000);
    AudioUnitRenderActionFlags flags = 0;
    ASSERT_EQ(AudioUnitRender(unit, &flags, &time, 0, 64, list.get()), noErr);
    EXPECT_EQ(flags, 0u) << "the moment's flags stay inside";
    ASSERT_EQ(ear.told.size(), 2u);
    EXPECT_EQ(ear.told[0].flags, UInt32{kAudioUnitRenderAction_PreRender});
    EXPECT_EQ(ear.told[0].source, 0) << "before the source is asked";
    EXPECT_EQ(ear.told[1].flags, UInt32{kAudioUnitRenderAction_PostRender});
    EXPECT_EQ(ear.told[1].source, 1);
    EXPECT_EQ(ear.told[1].first, noise(1000, 0)) << "with what was made";
    for (const Told& each : ear.told) {
        EXPECT_EQ(each.at, 1000);
        EXPECT_EQ(each.bus, 0u);
        EXPECT_EQ(each.frames, 64u);
    }
    feeder.status = -5;
    ear.told.clear();
    list.restore();
    EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 64, list.get()), -5);
    ASSERT_EQ(ear.told.size(), 2u);
    EXPECT_EQ(ear.told[1].flags,
              UInt32{kAudioUnitRenderAction_PostRender} | UInt32{kAudioUnitRenderAction_PostRenderError});
    ear.told.clear();
    EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 5000, list.get()),
              kAudioUnitErr_TooManyFramesToProcess);
    EXPECT_TRUE(ear.told.empty()) << "a refused slice is none";
}

TEST(Notify, IsToldInOrderUntilItIsRemoved)
{
    const Unit unit('genr');
    Feeder feeder(canonical(44100, 2));
    Ear one{&feeder, {}}, two{&feeder, {}};
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    List list(canonical(44100, 2), 64);
    const AudioTimeStamp time = sampleTime(0);
    const auto render = [&] {
        one.told.clear(), two.told.clear();
        list.restore();
        ASSERT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 64, list.get()), noErr);
    };
    EXPECT_EQ(AudioUnitAddRenderNotify(unit, nullptr, &one), paramErr);
    EXPECT_EQ(AudioUnitRemoveRenderNotify(unit, nullptr, &one), paramErr);
    EXPECT_EQ(AudioUnitRemoveRenderNotify(unit, Ear::hear, &one), kAudioUnitErr_InvalidPropertyValue)
        << "never added";
    ASSERT_EQ(AudioUnitAddRenderNotify(unit, Ear::hear, &one), noErr) << "while it is initialised, too";
    ASSERT_EQ(AudioUnitAddRenderNotify(unit, Ear::hear, &two), noErr);
    ASSERT_EQ(AudioUnitAddRenderNotify(unit, Ear::hear, &one), noErr) << "twice is twice";
    render();
    EXPECT_EQ(one.told.size(), 4u);
    EXPECT_EQ(two.told.size(), 2u);
    ASSERT_EQ(AudioUnitRemoveRenderNotify(unit, Ear::hear, &one), noErr);
    render();
    EXPECT_EQ(one.told.size(), 2u);
    ASSERT_EQ(AudioUnitRemoveRenderNotify(unit, Ear::hear, &two), noErr);
    render();
    EXPECT_EQ(one.told.size(), 2u);
    EXPECT_EQ(two.told.size(), 0u);
    ASSERT_EQ(AudioUnitRemoveRenderNotify(unit, Ear::hear, &one), noErr);
    render();
    EXPECT_EQ(one.told.size(), 0u);
    EXPECT_EQ(AudioUnitRemoveRenderNotify(unit, Ear::hear, &one), kAudioUnitErr_InvalidPropertyValue);
}

TEST(Notify, OfADeviceUnitIsToldOfEachPullInTheClientsFormat)
{
    SteppedDevice device(44100, 6, 1000);
    const Unit unit('ahal');
    Feeder feeder(canonical(44100, 2));
    Ear ear{&feeder, {}};
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setLimit(400), noErr);
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitAddRenderNotify(unit, Ear::hear, &ear), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    ASSERT_EQ(device.step(1000), 1000u);
    ASSERT_EQ(ear.told.size(), 6u);
    const UInt32 frames[] = {400, 400, 400, 400, 200, 200};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(ear.told[i].frames, frames[i]);
        EXPECT_EQ(ear.told[i].at, i / 2 * 400.0);
        EXPECT_EQ(ear.told[i].flags,
                  UInt32{i % 2 ? kAudioUnitRenderAction_PostRender : kAudioUnitRenderAction_PreRender});
        if (i % 2) {
            EXPECT_EQ(ear.told[i].first, noise(ear.told[i].at, 0));
        }
    }
}

} // namespace
