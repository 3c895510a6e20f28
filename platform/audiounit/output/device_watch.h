// Calls output units when their device may have changed: another default device, another rate, another number
// of channels.
//
// The platform's listeners only wake a thread of this file, and that thread calls the units. So a listener
// never waits for a unit, and a unit may remove listeners while it holds its locks.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// The function that checks a unit's device again. The caller holds no lock.
/// [worker]
using UpdateDevice = void (*)(Unit&);

/// Add a unit to the units that are updated after a change, or remove it. Adding a unit twice has no effect.
/// [main]
void beginWatching(AudioUnit unit, UpdateDevice update);
void endWatching(AudioUnit unit);

/// Begin or end listening to a device's changes. Each beginListening() needs an endListening().
/// [main], [worker]
void beginListening(AudioDeviceID device);
void endListening(AudioDeviceID device);

/// Request an update of all watched units by the worker thread.
/// [any]
void updateSoon();

/// Request an update of one unit by the worker thread. The unit is not freed before that update, even if it
/// is closed. A render thread calls this function only for a stop inside the unit's own slice. Takes a lock
/// that is held for a short time.
/// [any]
void updateSoon(AudioUnit unit, UpdateDevice update);

} // namespace kvxplatform::audiounit
