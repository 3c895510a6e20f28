// Attaching an output unit to a device: starting, stopping, and moving to another device.
#pragma once

#include "platform/audiounit/output/device_output.h"

namespace kvxplatform::audiounit {

/// Start and stop of the units that drive a device. Called with the lifeCycle lock, or inside the unit's own
/// slice: there a start of a stopped unit is refused, and a stop does not wait.
/// Errors  of the start: the device's own; FormatNotSupported; CannotDoInCurrentContext.
/// [any]
OSStatus startDevice(Unit& unit);
OSStatus stopDevice(Unit& unit);

/// Detach from the device without waiting for a slice, before the state is freed.
/// [any]
void abandonDevice(DeviceOutput& state);

/// The device on which the unit runs, or would be started. Called with the settings lock.
/// [any]
AudioDeviceID currentDevice(Unit& unit);

/// Select the unit's device; 0 takes the selection back. A running unit moves. Called without a lock.
/// Errors  InvalidPropertyValue: no such device; after a move those of the start.
/// [any]
OSStatus selectDevice(Unit& unit, AudioDeviceID device);

} // namespace kvxplatform::audiounit
