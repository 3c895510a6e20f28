// What an output unit asks a device, through the public property interface. Thread [any but audio].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::audiounit {

enum class Side { output, input };

/// What a unit's buffers depend on.
struct DeviceShape {
    Float64 sampleRate;
    UInt32 outputChannels, inputChannels; // of all streams together
};
inline bool operator==(const DeviceShape& a, const DeviceShape& b)
{
    return a.sampleRate == b.sampleRate && a.outputChannels == b.outputChannels &&
           a.inputChannels == b.inputChannels;
}
inline bool operator!=(const DeviceShape& a, const DeviceShape& b) { return !(a == b); }

/// The device's own status if there is no such device.
OSStatus shapeOf(AudioDeviceID device, DeviceShape& out);

/// From the moment a frame leaves the unit until it is heard: device, its safety offset and first stream.
/// Seconds.
Float64 latencyOf(AudioDeviceID device);

/// The device that a selector of the system object names ('dOut', 'sOut'); 0 if there is none.
AudioDeviceID defaultDevice(AudioHardwarePropertyID selector);

} // namespace kvxplatform::audiounit
