// Sixtieths of a second, exactly: how many have passed, and how long some are.
#pragma once

#include "platform/support/host_clock.h"

#include <cstdint>

namespace kvxplatform::carbon {

constexpr std::uint64_t ticksPerSecond = 60;

/// Whole ticks in a time; no intermediate result leaves 64 bits.
constexpr std::uint64_t ticksIn(std::uint64_t nanoseconds)
{
    return nanoseconds / hostclock::nanosecondsPerSecond * ticksPerSecond +
           nanoseconds % hostclock::nanosecondsPerSecond * ticksPerSecond / hostclock::nanosecondsPerSecond;
}

/// The shortest time that holds that many ticks. `ticks` is at most what a 32-bit count holds.
constexpr std::uint64_t nanosecondsIn(std::uint64_t ticks)
{
    return ticks / ticksPerSecond * hostclock::nanosecondsPerSecond +
           (ticks % ticksPerSecond * hostclock::nanosecondsPerSecond + ticksPerSecond - 1) / ticksPerSecond;
}

} // namespace kvxplatform::carbon
