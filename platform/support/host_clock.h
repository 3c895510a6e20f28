// The host clock: nanoseconds since the machine started. Host time, UpTime and ticks all read it.
#pragma once

#include <cstdint>

namespace kvxplatform::hostclock {

constexpr std::uint64_t nanosecondsPerSecond = 1000000000;

/// Never goes back. Neither allocates nor blocks.
/// [any]
std::uint64_t now();

/// Block the calling thread until `moment`. Returns at once if it has passed; signals do not end the wait.
/// [any but audio]
void sleepUntil(std::uint64_t moment);

} // namespace kvxplatform::hostclock
