// The host clock: nanoseconds since the machine started. The platform's host time, its UpTime function and
// its ticks all read this clock.
#pragma once

#include <cstdint>

namespace kvxplatform::hostclock {

constexpr std::uint64_t nanosecondsPerSecond = 1000000000;

/// Returns  the present time in nanoseconds, which never goes back. Neither allocates nor blocks.
/// [any]
std::uint64_t now();

/// Block the calling thread until the host clock reaches `moment`. Returns at once if that moment has passed.
/// Signals do not end the wait.
/// [any but audio]
void sleepUntil(std::uint64_t moment);

} // namespace kvxplatform::hostclock
