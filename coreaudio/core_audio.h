// The class data of CoreAudioKVX.
#pragma once

#include "abi/class_definition.h"
#include "abi/word.h"

namespace coreaudio {

struct CoreAudioData {
    /// The last platform status; -1 while a method has not reached its platform call. Host programs may write
    /// it.
    HostInteger lasterror;
};
static_assert(sizeof(void*) != 4 || sizeof(CoreAudioData) == 4, "the size declared to the host");

/// `Lasterror` of an object, set to -1: how every method begins. Bind it before the platform call: of
/// `beginCall(object) = call()` the call would come first. [main]
HostInteger& beginCall(REALobjectStruct* object);

} // namespace coreaudio
