// Tests that a graph's render thread allocates nothing and takes no lock, also while callbacks are replaced.
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/augraph/player_chain.h"
#include "tests/support/audio_thread_alarm.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

// A device calls its I/O procedures in the order in which they were added. The procedure before the graph's
// turns the alarm for allocations and locks on, and the procedure after the graph's turns it off.
template <bool isOn>
OSStatus forbid(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
                AudioBufferList*, const AudioTimeStamp*, void*)
{
    alarm_::forbid(isOn);
    return noErr;
}

TEST(GraphAudioThread, AllocatesNothingAndTakesNoLock)
{
    for (const Rates rates : {timePitch, varispeed})
        for (const UInt32 slice : std::initializer_list<UInt32>{64, 512, 4096}) {
            SCOPED_TRACE(slice);
            SteppedDevice device(44100, 2, slice);
            ASSERT_EQ(AudioDeviceAddIOProc(device.id(), forbid<true>, nullptr), noErr);
            Sound first{2, 100000}, second{2, 100000};
            Chain chain({'ahal', 2, slice, 0, rates, 44100}, first);
            chain.set(chain.output, kAudioOutputUnitProperty_CurrentDevice, 0, AudioDeviceID{device.id()});
            chain.initialize();
            ASSERT_EQ(AUGraphStart(chain.graph), noErr);
            ASSERT_EQ(AudioDeviceAddIOProc(device.id(), forbid<false>, nullptr), noErr);
            ASSERT_EQ(AudioDeviceStart(device.id(), forbid<true>), noErr);
            ASSERT_EQ(AudioDeviceStart(device.id(), forbid<false>), noErr);

            const int allocations = alarm_::allocations(), locks = alarm_::locks();
            for (int cycle = 0; cycle < 20; ++cycle) {
                device.step(slice);
                Sound& next = cycle % 2 ? first : second;
                ASSERT_EQ(chain.graph.setCallback(chain.converter, Sound::render, &next), noErr);
                chain.set(chain.converter, kAudioUnitProperty_SetRenderCallback, 1,
                          AURenderCallbackStruct{Sound::render, &next});
                EXPECT_TRUE(chain.graph.isRunning());
            }
            EXPECT_EQ(alarm_::allocations(), allocations);
            EXPECT_EQ(alarm_::locks(), locks);
            EXPECT_EQ(first.position, slice * 10u);
            EXPECT_EQ(second.position, slice * 10u);
            AudioDeviceRemoveIOProc(device.id(), forbid<true>);
            AudioDeviceRemoveIOProc(device.id(), forbid<false>);
        }
}

} // namespace
