// Absolute times of the host clock, and durations. A sum that exceeds 64 bits becomes the largest time, which
// the clock never reaches.
#include "platform/support/host_clock.h"

#include <Carbon/DriverServices.h>
#include <Carbon/MacErrors.h>
#include <Carbon/Multiprocessing.h>

#include <limits>

using namespace kvxplatform;

namespace {

constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

std::uint64_t numberOf(UnsignedWide wide) { return std::uint64_t{wide.hi} << 32 | wide.lo; }

UnsignedWide wideOf(std::uint64_t number)
{
    return {static_cast<UInt32>(number & 0xFFFFFFFF), static_cast<UInt32>(number >> 32)};
}

std::uint64_t nanosecondsOf(Duration duration)
{
    if (duration == durationForever) return never;
    const std::int64_t count = duration;
    return static_cast<std::uint64_t>(count < 0 ? -count * 1000 : count * 1000000);
}

} // namespace

AbsoluteTime UpTime(void) { return wideOf(hostclock::now()); }

AbsoluteTime AddDurationToAbsolute(Duration duration, AbsoluteTime absoluteTime)
{
    const std::uint64_t start = numberOf(absoluteTime), length = nanosecondsOf(duration);
    return wideOf(start > never - length ? never : start + length);
}

OSStatus MPDelayUntil(AbsoluteTime* expirationTime)
{
    if (!expirationTime) return paramErr;
    hostclock::sleepUntil(numberOf(*expirationTime));
    return noErr;
}
