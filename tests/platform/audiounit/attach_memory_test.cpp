// Tests the start of an output unit while each of its allocations fails in turn. A failed start leaves
// nothing on the device, and a later start with enough memory plays.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/support/failing_memory.h"
#include "tests/support/live_objects.h"

#include <gtest/gtest.h>

namespace {

// Number of remaining allocations, including the one that fails; 0 if none fails.
__thread int allocationsLeft = 0;

} // namespace

bool support::mayAllocate() { return !allocationsLeft || --allocationsLeft; }

namespace {

using namespace test;
using support::liveObjects;

TEST(AttachMemory, FailedAllocationLeavesNothing)
{
    SteppedDevice device(48000, 2, 64);
    bool wasShort = true;
    for (int which = 1; wasShort; ++which) {
        SCOPED_TRACE(which);
        ASSERT_LT(which, 1000);
        {
            const Unit unit('ahal');
            Feeder feeder(canonical(44100, 2));
            ASSERT_EQ(unit.set(kAudioOutputUnitProperty_CurrentDevice, 0, 0, device.id()), noErr);
            ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
            ASSERT_EQ(AudioUnitInitialize(unit), noErr);
            allocationsLeft = which;
            const OSStatus status = AudioOutputUnitStart(unit);
            wasShort = allocationsLeft == 0;
            allocationsLeft = 0;
            if (!wasShort) ASSERT_EQ(status, noErr);
            EXPECT_EQ(device.step(64), status ? 0u : 64u);
        }
        ASSERT_EQ(liveObjects("property listener"), 0u);
        ASSERT_EQ(liveObjects("IOProc"), 0u);
    }
}

} // namespace
