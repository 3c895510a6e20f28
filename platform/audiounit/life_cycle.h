// Opening, initialising, starting and closing a unit.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// Make a unit with all elements in the default format and all parameters at their defaults. Throws
/// std::bad_alloc.
/// [main]
OSStatus open(const UnitKind& kind, AudioUnit self, std::unique_ptr<Unit>& out);

/// Detach the unit from the device that renders it, wait for the render call in progress, then uninitialise
/// the unit. After a close inside the unit's own slice, the unit keeps its memory until it is freed.
/// [any]
void close(Unit& unit);

/// Allocate memory for the present formats and slice limit. Has no effect on an initialised unit.
/// Errors  NoConnection: a connected unit has been closed; FormatNotSupported: the output of a connected unit
///         has another format; memFullErr; and the errors of the unit kind's own initialize.
/// [main]
OSStatus initialize(Unit& unit);

/// Stop the unit, wait for its slice to end, and free its memory.
/// Errors  CannotDoInCurrentContext: called inside a slice of the unit.
/// [any]
OSStatus uninitialize(Unit& unit);

/// Request that the next slice clears filters and delay lines.
/// Errors  InvalidScope; InvalidElement.
/// [any]
OSStatus reset(Unit& unit, AudioUnitScope scope, AudioUnitElement element);

/// Start or stop an output unit. A stop waits for the unit's slice to end, except when it is called inside
/// that slice.
/// Errors  badComponentSelector: the unit is not an output unit; Uninitialized: a start before initialising;
///         after a failed start the status of the device.
/// [any]
OSStatus start(Unit& unit);
OSStatus stop(Unit& unit);

} // namespace kvxplatform::audiounit
