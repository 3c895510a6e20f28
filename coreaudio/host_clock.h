// The platform's host clock as shared methods, which have no object and store no status. Host times are in
// ticks.
// All functions: [any].
#pragma once

#include "abi/word.h"

namespace coreaudio {

double CoreAudioGetHostClockFrequencyKVX();    ///< clock frequency in ticks per second
HostInteger GetHostClockMinimumTimeDeltaKVX(); ///< smallest difference between two clock readings, in ticks
std::uint64_t CoreAudioGetCurrentHostTimeKVX();
std::uint64_t CoreAudioConvertHostTimeToNanosKVX(std::uint64_t inHostTime);
std::uint64_t CoreAudioConvertNanosToHostTimeKVX(std::uint64_t inNanos);

} // namespace coreaudio
