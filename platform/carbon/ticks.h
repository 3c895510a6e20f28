// Conversion between nanoseconds and ticks, which are sixtieths of a second. All functions: [any].
#pragma once

#include "platform/support/host_clock.h"

#include <cstdint>

namespace kvxplatform::carbon {

constexpr std::uint64_t ticksPerSecond = 60;

/// Convert nanoseconds to ticks, rounded down. The calculation overflows for no 64-bit value.
constexpr std::uint64_t ticksIn(std::uint64_t nanoseconds)
{
    return nanoseconds / hostclock::nanosecondsPerSecond * ticksPerSecond +
           nanoseconds % hostclock::nanosecondsPerSecond * ticksPerSecond / hostclock::nanosecondsPerSecond;
}

/// The smallest number of nanoseconds that contains `ticks` whole ticks. `ticks` is at most 2^32 - 1.
constexpr std::uint64_t nanosecondsIn(std::uint64_t ticks)
{
    return ticks / ticksPerSecond * hostclock::nanosecondsPerSecond +
           (ticks % ticksPerSecond * hostclock::nanosecondsPerSecond + ticksPerSecond - 1) / ticksPerSecond;
}

} // namespace kvxplatform::carbon
