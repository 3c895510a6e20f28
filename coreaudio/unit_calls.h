// Audio units and components: one platform call per method. A handle is the platform's instance as a host
// Integer.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "coreaudio/core_audio.h"

#include <AudioUnit/AudioUnit.h>

namespace coreaudio {

/// A call with a unit as its only argument. Returns the status, which is also stored in `Lasterror`.
template <OSStatus (*call)(AudioUnit)>
HostInteger unitCall(REALobjectStruct* object, HostInteger handle)
{
    HostInteger& lasterror = beginCall(object);
    return lasterror = call(reinterpret_cast<AudioUnit>(handle));
}

HostInteger AudioUnitReset(REALobjectStruct* object, HostInteger handle, HostInteger scope,
                           HostInteger element);

/// Open the first component that matches both codes.
/// Owner   the host program closes the instance.
/// Errors  no component, or one that cannot be opened: 0, and `Lasterror` is -1.
HostInteger OpenDefaultComponent(REALobjectStruct* object, REALstringStruct* type, REALstringStruct* subtype);

void CloseComponent(REALobjectStruct* object, HostInteger handle);

void AudioUnitSetParameter(REALobjectStruct* object, HostInteger unit, HostInteger parameterID,
                           HostInteger scope, HostInteger element, float value, HostInteger offsetFrames);

/// The parameter's value; 0.0 if the platform returns none.
float AudioUnitGetParameter(REALobjectStruct* object, HostInteger unit, HostInteger parameterID,
                            HostInteger scope, HostInteger element);

} // namespace coreaudio
