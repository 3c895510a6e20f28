// Listeners of property changes, and the thread that calls them.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::hal {

/// Register a listener. The selector, scope and element of `address` may be wildcards.
/// Errors   std::bad_alloc; std::system_error if the thread cannot start.
/// [any]
void addListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                 AudioObjectPropertyListenerProc proc, void* client);

/// Remove a listener, and wait until its call in progress has returned, unless that call removes it.
/// Returns  false if it is not registered.
/// [any]
bool removeListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                    AudioObjectPropertyListenerProc proc, void* client);

/// Have the listener thread notify every listener of this property that is registered now. A change of the
/// global scope concerns both sides, and a change of the wildcard element all elements; each listener
/// receives its own side and element. Allocates.
/// [any], not inside a cycle
void postChange(AudioObjectID object, AudioObjectPropertySelector selector,
                AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal,
                AudioObjectPropertyElement element = kAudioObjectPropertyElementMaster);

} // namespace kvxplatform::hal
