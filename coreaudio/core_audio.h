// The class data of CoreAudioKVX.
#pragma once

#include "abi/class_definition.h"
#include "abi/word.h"

namespace coreaudio {

struct CoreAudioData {
    /// Status of the last platform call, or -1 if the last method ended before its platform call. Host
    /// programs may write this field.
    HostInteger lasterror;
};
static_assert(sizeof(void*) != 4 || sizeof(CoreAudioData) == 4, "the size declared to the host");

/// Set an object's `Lasterror` to -1 and return a reference to it. Every method of an object calls this
/// function first, in a separate statement, because C++ evaluates `beginCall(object) = call()` from right
/// to left and would make the platform call first.
/// [main]
HostInteger& beginCall(REALobjectStruct* object);

} // namespace coreaudio
