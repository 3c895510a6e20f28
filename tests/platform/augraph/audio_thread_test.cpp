// What a graph's cycle asks of the C library, while other threads change the graph: nothing.
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/augraph/player_chain.h"
#include "tests/support/audio_thread_alarm.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

// A device calls its procedures in the order in which they were added: one before the graph's sets the mark,
// one behind it takes it away.
template <bool isOn>
OSStatus forbid(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
                AudioBufferList*, const AudioTimeStamp*, void*)
{
    alarm_::forbid(isOn);
    return noErr;
}

TEST(AudioThread, ACycleThroughAGraphAllocatesNothingAndTakesNoLock)
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
            for (int turn = 0; turn < 20; ++turn) {
                device.step(slice);
                Sound& next = turn % 2 ? first : second;
                ASSERT_EQ(chain.graph.setCallback(chain.converter, Sound::render, &next), noErr);
                ASSERT_EQ(AUGraphUpdate(chain.graph, nullptr), noErr);
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
