// Has output units look again at their device when something changed: another default device, another rate,
// other channels.
//
// The platform's listeners only wake a thread of this file's own, and that thread asks the units. So a
// listener never waits for a unit, and a unit may remove listeners while it holds its locks.
#pragma once

#include <AudioUnit/AudioUnit.h>
#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::audiounit {

/// Have `unit` asked from now on, or no longer. Twice is once. Thread [any but audio].
void beginWatching(AudioUnit unit);
void endWatching(AudioUnit unit);

/// Listen to a device while somebody uses it: each begin needs its end. Thread [any but audio].
void beginListening(AudioDeviceID device);
void endListening(AudioDeviceID device);

/// Have all of them asked soon. Thread [any].
void askSoon();

/// Have `unit` asked soon, even if it is closed before: it stays whole until then. Thread [any]; an audio
/// thread calls it only when it was stopped in its own slice, and waits for a short list at most.
void askSoonFor(AudioUnit unit);

} // namespace kvxplatform::audiounit
