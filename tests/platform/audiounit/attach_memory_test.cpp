// Tests the start of an output unit while each of its allocations fails in turn. A failed start leaves
// nothing on the device, and a later start with enough memory plays.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/support/allocator_hook.h"
#include "tests/support/live_objects.h"

#include <gtest/gtest.h>

namespace {

using namespace test;
using support::liveObjects;

TEST(AttachMemory, FailedAllocationLeavesNothing)
{
    SteppedDevice device(48000, 2, 64);
    bool wasShort = true;
    for (int passing = 0; wasShort; ++passing) {
        SCOPED_TRACE(passing);
        ASSERT_LT(passing, 1000);
        {
            const Unit unit('ahal');
            Feeder feeder(canonical(44100, 2));
            ASSERT_EQ(unit.set(kAudioOutputUnitProperty_CurrentDevice, 0, 0, device.id()), noErr);
            ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
            ASSERT_EQ(AudioUnitInitialize(unit), noErr);
            allocator_hook::failNew(passing, 1);
            const OSStatus status = AudioOutputUnitStart(unit);
            wasShort = allocator_hook::stopFailing() > 0;
            if (!wasShort) ASSERT_EQ(status, noErr);
            EXPECT_EQ(device.step(64), status ? 0u : 64u);
        }
        ASSERT_EQ(liveObjects("property listener"), 0u);
        ASSERT_EQ(liveObjects("IOProc"), 0u);
    }
}

} // namespace
