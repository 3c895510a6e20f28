// Audio units and components: one platform call each. Handles are the platform's instances, as host Integers,
// passed back unchanged. Thread: [main].
#pragma once

#include "abi/host_values.h"
#include "coreaudio/core_audio.h"

#include <AudioUnit/AudioUnit.h>

namespace coreaudio {

/// A call that takes a unit alone; its status is the result and `Lasterror`.
template <OSStatus (*call)(AudioUnit)>
HostInteger unitCall(REALobjectStruct* object, HostInteger handle)
{
    HostInteger& lasterror = beginCall(object);
    return lasterror = call(reinterpret_cast<AudioUnit>(handle));
}

HostInteger AudioUnitReset(REALobjectStruct* object, HostInteger handle, HostInteger scope,
                           HostInteger element);

/// A new instance of the first component that matches both codes; 0, with -1 in `Lasterror`, if none does.
/// Owner   the host program, which closes it.
HostInteger OpenDefaultComponent(REALobjectStruct* object, REALstringStruct* type, REALstringStruct* subtype);

void CloseComponent(REALobjectStruct* object, HostInteger handle);

void AudioUnitSetParameter(REALobjectStruct* object, HostInteger unit, HostInteger parameterID,
                           HostInteger scope, HostInteger element, float value, HostInteger offsetFrames);

/// The parameter's value; 0.0 on an error.
float AudioUnitGetParameter(REALobjectStruct* object, HostInteger unit, HostInteger parameterID,
                            HostInteger scope, HostInteger element);

} // namespace coreaudio
