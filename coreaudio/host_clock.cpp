#include "coreaudio/host_clock.h"

#include <CoreAudio/CoreAudio.h>

namespace coreaudio {

double CoreAudioGetHostClockFrequencyKVX() { return AudioGetHostClockFrequency(); }

HostInteger GetHostClockMinimumTimeDeltaKVX()
{
    return static_cast<HostInteger>(AudioGetHostClockMinimumTimeDelta());
}

std::uint64_t CoreAudioGetCurrentHostTimeKVX() { return AudioGetCurrentHostTime(); }

std::uint64_t CoreAudioConvertHostTimeToNanosKVX(std::uint64_t inHostTime)
{
    return AudioConvertHostTimeToNanos(inHostTime);
}

std::uint64_t CoreAudioConvertNanosToHostTimeKVX(std::uint64_t inNanos)
{
    return AudioConvertNanosToHostTime(inNanos);
}

} // namespace coreaudio
