// Opening, initialising, starting and closing a unit.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// Make a unit: elements in the default format, parameters at their defaults. Throws std::bad_alloc.
/// [main]
OSStatus open(const UnitKind& kind, AudioUnit self, std::unique_ptr<Unit>& out);

/// Stop the unit's callers and wait for them, then uninitialise the unit. Inside a slice of the unit its
/// memory stays until the unit is freed.
/// [any]
void close(Unit& unit);

/// Allocate for the present formats and slice limit; no effect on an initialised unit.
/// Errors  NoConnection, FormatNotSupported: an input's source; memFullErr; and the kind's own.
/// [main]
OSStatus initialize(Unit& unit);

/// Stop the unit, wait for its slice and free its memory.
/// Errors  CannotDoInCurrentContext inside a slice of the unit.
/// [any]
OSStatus uninitialize(Unit& unit);

/// Have the next slice clear filters and delay lines.
/// Errors  InvalidScope; InvalidElement.
/// [any]
OSStatus reset(Unit& unit, AudioUnitScope scope, AudioUnitElement element);

/// Start or stop an output unit. Stopping waits for the unit's slice, unless it is called inside it.
/// Errors  badComponentSelector: not an output unit; Uninitialized (start); the device's status (start).
/// [any]
OSStatus start(Unit& unit);
OSStatus stop(Unit& unit);

} // namespace kvxplatform::audiounit
