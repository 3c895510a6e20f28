// The platform's host clock; host times are in ticks. Shared methods have no object and store no status.
// All functions: [any].
#pragma once

#include "abi/word.h"

namespace coreaudio {

double CoreAudioGetHostClockFrequencyKVX();    ///< ticks per second
HostInteger GetHostClockMinimumTimeDeltaKVX(); ///< smallest difference between two readings
std::uint64_t CoreAudioGetCurrentHostTimeKVX();
std::uint64_t CoreAudioConvertHostTimeToNanosKVX(std::uint64_t inHostTime);
std::uint64_t CoreAudioConvertNanosToHostTimeKVX(std::uint64_t inNanos);

} // namespace coreaudio
