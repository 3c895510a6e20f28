// The device properties that an output unit reads through the public property interface.
// All functions: [main], [worker].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::audiounit {

enum class Side { output, input };

/// The device properties on which an output unit's buffers depend.
struct DeviceFormat {
    Float64 sampleRate;
    UInt32 outputChannels, inputChannels; ///< channel counts, each the sum over all streams
};
inline bool operator==(const DeviceFormat& a, const DeviceFormat& b)
{
    return a.sampleRate == b.sampleRate && a.outputChannels == b.outputChannels &&
           a.inputChannels == b.inputChannels;
}

/// Read the format of a device.
/// Errors  the device's status if there is no such device.
OSStatus readFormat(AudioDeviceID device, DeviceFormat& out);

/// Returns  the time in seconds between the unit and the listener: the sum of the device latency, the safety
///          offset and the latency of the first stream.
Float64 latencyOf(AudioDeviceID device);

/// Returns  the device that a property of the system object names ('dOut', 'sOut'); 0 if there is no such
///          device.
AudioDeviceID defaultDevice(AudioHardwarePropertyID selector);

} // namespace kvxplatform::audiounit
