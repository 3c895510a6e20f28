// Streams of PortAudio, whose callback runs the cycles of a device.
#pragma once

#include "platform/hal/portaudio_devices.h"

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// Open and start the device's stream, unless it has one. The caller holds `control`.
OSStatus openHardware(const DeviceRef& device);

/// Close the device's stream, if it has one, after its last frame. The caller holds `control`.
void closeHardware(const DeviceRef& device);

/// Restart PortAudio and read its output devices.
/// Errors   Empty, with the reason in `error`, while a stream is open, or once a stream or the sound server
///          has ended.
std::vector<DeviceRef> readHardwareAnew(std::string& error);

/// Whether running hardware has stopped its callbacks, has no stream that opens, or its sound server has
/// ended.
bool hasHardwareEnded(const DeviceRef& device);
bool isAnyHardwareOpen();

/// Stop PortAudio at the end of the process, so that a living sound server need not discover that its client
/// is gone. Does nothing if a stream is open, or a stream or the server has ended.
void leaveHardware();

} // namespace kvxplatform::hal
