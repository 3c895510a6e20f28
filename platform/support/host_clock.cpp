#include "platform/support/host_clock.h"

#include <algorithm>

#include <time.h>

namespace kvxplatform::hostclock {
namespace {

// A 32-bit time_t cannot hold every 64-bit moment, so a long sleep consists of several shorter ones.
constexpr std::uint64_t longestSleep = 1000000 * nanosecondsPerSecond;

timespec timespecOf(std::uint64_t moment)
{
    timespec result = {};
    result.tv_sec = static_cast<time_t>(moment / nanosecondsPerSecond);
    result.tv_nsec = static_cast<long>(moment % nanosecondsPerSecond);
    return result;
}

} // namespace

std::uint64_t now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * nanosecondsPerSecond +
           static_cast<std::uint64_t>(time.tv_nsec);
}

void sleepUntil(std::uint64_t moment)
{
    for (std::uint64_t present = now(); present < moment; present = now()) {
        const timespec end = timespecOf(present + std::min(moment - present, longestSleep));
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr);
    }
}

} // namespace kvxplatform::hostclock
