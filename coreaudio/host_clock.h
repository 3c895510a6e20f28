// The host clock, as the platform tells it. Shared methods: there is no object, and so no status. Thread:
// [any].
#pragma once

#include "abi/word.h"

namespace coreaudio {

double CoreAudioGetHostClockFrequencyKVX();     ///< ticks a second
HostInteger GetHostClockMinimumTimeDeltaKVX();  ///< ticks between two readings, at least
std::uint64_t CoreAudioGetCurrentHostTimeKVX(); ///< ticks
std::uint64_t CoreAudioConvertHostTimeToNanosKVX(std::uint64_t inHostTime);
std::uint64_t CoreAudioConvertNanosToHostTimeKVX(std::uint64_t inNanos);

} // namespace coreaudio
