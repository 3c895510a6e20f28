// Who is told when a property changes. The public functions are AudioObjectAddPropertyListener and its
// counterpart.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::hal {

/// Tell every listener that this changed, from the notification thread, soon: those that were added before.
/// A global change is one of every side, and a change of the wildcard element one of every element; a
/// listener of one side or element then hears of its own. Not in a cycle (it allocates).
void postChange(AudioObjectID object, AudioObjectPropertySelector selector,
                AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal,
                AudioObjectPropertyElement element = kAudioObjectPropertyElementMaster);

} // namespace kvxplatform::hal
