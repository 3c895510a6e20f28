// Attaches an output unit to a device: starting, stopping, and moving to another device.
#pragma once

#include "platform/audiounit/output/device_output.h"

namespace kvxplatform::audiounit {

/// Start or stop a unit that drives a device. The caller holds the `lifeCycle` lock or is inside the unit's
/// own slice. Inside the slice, the start of a stopped unit is refused, and a stop does not wait.
/// Errors  only of a start: those of the device; FormatNotSupported; CannotDoInCurrentContext.
/// [any]
OSStatus startDevice(Unit& unit);
OSStatus stopDevice(Unit& unit);

/// Detach the unit from its device without waiting for a slice. Called before the unit's state is freed.
/// [any]
void abandonDevice(DeviceOutput& state);

/// Returns  the device on which the unit runs or on which it would be started. The caller holds the
///          `settings` lock.
/// [any]
AudioDeviceID currentDevice(Unit& unit);

/// Select the unit's device; 0 cancels the selection. A running unit moves to the selected device. The caller
/// holds no lock.
/// Errors  InvalidPropertyValue: no such device; the errors of a start if the unit has to move.
/// [any]
OSStatus selectDevice(Unit& unit, AudioDeviceID device);

} // namespace kvxplatform::audiounit
