// The class data of CoreAudioKVX.
#pragma once

#include "abi/class_definition.h"
#include "abi/word.h"

namespace coreaudio {

struct CoreAudioData {
    /// The last platform status; -1 if a method ended before its platform call. Host programs may write it.
    HostInteger lasterror;
};
static_assert(sizeof(void*) != 4 || sizeof(CoreAudioData) == 4, "the size declared to the host");

/// Set an object's `Lasterror` to -1, as all methods do first, and return a reference to it. Bind the
/// reference before the platform call: in `beginCall(object) = call()` the platform call would run first.
/// [main]
HostInteger& beginCall(REALobjectStruct* object);

} // namespace coreaudio
