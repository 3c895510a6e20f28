// Waiting for a number of ticks. While a stepped (simulated) device is running, the wait advances the stepped
// devices instead of sleeping, so a program can wait for their output.
#include "platform/carbon/ticks.h"
#include "platform/hal/step.h"

#include <Carbon/OSUtils.h>

#include <algorithm>

using namespace kvxplatform;

void Delay(unsigned long numTicks, unsigned long* finalTicks)
{
    const std::uint64_t end =
        hostclock::now() + carbon::nanosecondsIn(std::min<std::uint64_t>(numTicks, UINT32_MAX));
    const double seconds = static_cast<double>(numTicks) / carbon::ticksPerSecond;
    if (!hal::advanceSteppedDevices(seconds)) hostclock::sleepUntil(end);
    if (finalTicks) *finalTicks = TickCount();
}

UInt32 TickCount(void) { return static_cast<UInt32>(carbon::ticksIn(hostclock::now())); }
