// From the platform's notification to the host's handler of `Changed`.
#pragma once

#include "abi/class_definition.h"

#include <CoreAudio/CoreAudio.h>

namespace listener {

/// What is registered with the platform; `client` is the host object.
/// Shape   every call makes one event; which of the addresses changed is not looked at.
/// Returns 0, whatever happens.
/// Thread  [any]. On the main thread the handler runs at once; elsewhere the event is queued for the main
///         thread, and the platform's thread never waits for the host program.
OSStatus propertyChanged(AudioObjectID objectID, UInt32 addressCount,
                         const AudioObjectPropertyAddress* addresses, void* client);

/// The one event of the class; which handler a host program attached is asked with its record.
extern REALevent changedEvent[1];

} // namespace listener
