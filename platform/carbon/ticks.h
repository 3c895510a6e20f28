// Ticks, sixtieths of a second, to and from nanoseconds. All functions: [any].
#pragma once

#include "platform/support/host_clock.h"

#include <cstdint>

namespace kvxplatform::carbon {

constexpr std::uint64_t ticksPerSecond = 60;

/// Round a time down to whole ticks, for any 64-bit time.
constexpr std::uint64_t ticksIn(std::uint64_t nanoseconds)
{
    return nanoseconds / hostclock::nanosecondsPerSecond * ticksPerSecond +
           nanoseconds % hostclock::nanosecondsPerSecond * ticksPerSecond / hostclock::nanosecondsPerSecond;
}

/// The shortest time of that many ticks. `ticks` is at most 2^32 - 1.
constexpr std::uint64_t nanosecondsIn(std::uint64_t ticks)
{
    return ticks / ticksPerSecond * hostclock::nanosecondsPerSecond +
           (ticks % ticksPerSecond * hostclock::nanosecondsPerSecond + ticksPerSecond - 1) / ticksPerSecond;
}

} // namespace kvxplatform::carbon
