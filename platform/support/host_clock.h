// The one clock of the platform: host time, UpTime and ticks all read it. Nanoseconds since the machine
// started, so that conversions lose nothing.
#pragma once

#include <cstdint>

namespace kvxplatform::hostclock {

constexpr std::uint64_t nanosecondsPerSecond = 1000000000;

/// Never goes back. [any], [audio] too.
std::uint64_t now();

/// Block the calling thread until `moment`; at once if it has passed. Signals do not shorten it.
void sleepUntil(std::uint64_t moment);

} // namespace kvxplatform::hostclock
