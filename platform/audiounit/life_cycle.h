// A unit's life: open, initialised, and back. Thread: [any but audio] unless said otherwise.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// A fresh unit of a kind: elements in the default format, parameters at their defaults. Throws
/// std::bad_alloc.
OSStatus open(const UnitKind& kind, AudioUnit self, std::unique_ptr<Unit>& out);

/// Stop whatever calls back and wait for it. Thread [any].
void close(Unit& unit);

OSStatus initialize(Unit& unit);
OSStatus uninitialize(Unit& unit);

/// Have the next slice forget the past.
OSStatus reset(Unit& unit, AudioUnitScope scope, AudioUnitElement element);

/// Thread [any]; inside a slice of its own a unit stops without waiting for it.
OSStatus start(Unit& unit);
OSStatus stop(Unit& unit);

} // namespace kvxplatform::audiounit
