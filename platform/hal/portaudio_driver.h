// PortAudio streams, whose callbacks run the cycles of a device.
#pragma once

#include "platform/hal/portaudio_devices.h"

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// Open and start the device's stream, unless the device has one. The caller holds the device's `control`
/// mutex.
OSStatus openHardware(const DeviceRef& device);

/// Close the device's stream, if the device has one, after the stream's last frame. The caller holds the
/// device's `control` mutex.
void closeHardware(const DeviceRef& device);

/// Restart PortAudio and read its output devices.
/// Errors   An empty list, with the reason in `error`, while a stream is open, or after a stream or the sound
///          server has ended.
std::vector<DeviceRef> readHardwareAnew(std::string& error);

/// Whether a running hardware device has ended: its callbacks have stopped, its stream cannot be opened, or
/// its sound server has ended.
bool hasHardwareEnded(const DeviceRef& device);
bool isAnyHardwareOpen();

/// Stop PortAudio at the end of the process, so that the sound server need not detect the end of its client.
/// Does nothing while a stream is open, or after a stream or the sound server has ended.
void leaveHardware();

} // namespace kvxplatform::hal
