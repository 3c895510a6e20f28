// Tests that a graph's render thread allocates nothing and takes no lock, also while callbacks are replaced.
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/augraph/player_chain.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

// A device calls its I/O procedures in the order in which they were added. The procedure before the graph's
// starts the count of allocations and locks, and the procedure after the graph's stops it.
template <bool isOn>
OSStatus watch(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
               AudioBufferList*, const AudioTimeStamp*, void*)
{
    allocator_hook::watchThisThread(isOn);
    return noErr;
}

TEST(GraphAudioThread, AllocatesNothingAndTakesNoLock)
{
    for (const Rates rates : {timePitch, varispeed})
        for (const UInt32 slice : std::initializer_list<UInt32>{64, 512, 4096}) {
            SCOPED_TRACE(slice);
            SteppedDevice device(44100, 2, slice);
            ASSERT_EQ(AudioDeviceAddIOProc(device.id(), watch<true>, nullptr), noErr);
            Sound first{2, 100000}, second{2, 100000};
            Chain chain({'ahal', 2, slice, 0, rates, 44100}, first);
            chain.set(chain.output, kAudioOutputUnitProperty_CurrentDevice, 0, AudioDeviceID{device.id()});
            chain.initialize();
            ASSERT_EQ(AUGraphStart(chain.graph), noErr);
            ASSERT_EQ(AudioDeviceAddIOProc(device.id(), watch<false>, nullptr), noErr);
            ASSERT_EQ(AudioDeviceStart(device.id(), watch<true>), noErr);
            ASSERT_EQ(AudioDeviceStart(device.id(), watch<false>), noErr);

            const allocator_hook::Count count;
            for (int cycle = 0; cycle < 20; ++cycle) {
                device.step(slice);
                Sound& next = cycle % 2 ? first : second;
                ASSERT_EQ(chain.graph.setCallback(chain.converter, Sound::render, &next), noErr);
                chain.set(chain.converter, kAudioUnitProperty_SetRenderCallback, 1,
                          AURenderCallbackStruct{Sound::render, &next});
                EXPECT_TRUE(chain.graph.isRunning());
            }
            EXPECT_EQ(count.heapCalls(), 0);
            EXPECT_EQ(count.locks(), 0);
            EXPECT_EQ(first.position, slice * 10u);
            EXPECT_EQ(second.position, slice * 10u);
            AudioDeviceRemoveIOProc(device.id(), watch<true>);
            AudioDeviceRemoveIOProc(device.id(), watch<false>);
        }
}

} // namespace
