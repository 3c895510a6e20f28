// What an output unit reads from a device through the public property interface.
// All functions: [main], [worker].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::audiounit {

enum class Side { output, input };

/// The properties that an output unit's buffers depend on.
struct DeviceFormat {
    Float64 sampleRate;
    UInt32 outputChannels, inputChannels; ///< of all streams together
};
inline bool operator==(const DeviceFormat& a, const DeviceFormat& b)
{
    return a.sampleRate == b.sampleRate && a.outputChannels == b.outputChannels &&
           a.inputChannels == b.inputChannels;
}

/// Errors  the device's status if there is no such device.
OSStatus readFormat(AudioDeviceID device, DeviceFormat& out);

/// The time from the unit to the listener: device, safety offset and first stream. Seconds.
Float64 latencyOf(AudioDeviceID device);

/// The device that a selector of the system object names ('dOut', 'sOut'); 0 if there is none.
AudioDeviceID defaultDevice(AudioHardwarePropertyID selector);

} // namespace kvxplatform::audiounit
