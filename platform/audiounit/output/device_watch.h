// Calls output units when their device may have changed: another default device, another rate, other
// channels.
//
// The platform's listeners only wake a thread of this file, which calls the units. So a listener never waits
// for a unit, and a unit may remove listeners while it holds its locks.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// Examines a unit's device again. Called without a lock.
/// [worker]
using UpdateDevice = void (*)(Unit&);

/// Add a unit to those that are updated after a change, or remove it. A unit is added once.
/// [main]
void beginWatching(AudioUnit unit, UpdateDevice update);
void endWatching(AudioUnit unit);

/// Listen to a device's changes. Each begin needs its end.
/// [main], [worker]
void beginListening(AudioDeviceID device);
void endListening(AudioDeviceID device);

/// Have all watched units updated soon.
/// [any]
void updateSoon();

/// Have one unit updated soon; it is not freed before, even if it is closed. A render thread calls this only
/// for a stop inside the unit's own slice. Takes a lock that is held for a short time.
/// [any]
void updateSoon(AudioUnit unit, UpdateDevice update);

} // namespace kvxplatform::audiounit
