// Property listeners, and the thread that notifies them.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::hal {

/// Register a listener. The selector, scope and element of `address` may be wildcards.
/// Errors   std::bad_alloc; std::system_error if the thread cannot start.
/// [any]
void addListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                 AudioObjectPropertyListenerProc proc, void* client);

/// Remove a listener, and wait until its call in progress has returned. A call that removes its own listener
/// does not wait.
/// Returns  false if the listener is not registered.
/// [any]
bool removeListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                    AudioObjectPropertyListenerProc proc, void* client);

/// Let the listener thread notify every listener of this property that is registered now. A change of the
/// global scope concerns input and output; a change of the wildcard element concerns all elements. Each
/// listener receives the scope and element that it watches. Allocates memory.
/// Not inside an I/O cycle.
/// [any]
void postChange(AudioObjectID object, AudioObjectPropertySelector selector,
                AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal,
                AudioObjectPropertyElement element = kAudioObjectPropertyElementMaster);

} // namespace kvxplatform::hal
