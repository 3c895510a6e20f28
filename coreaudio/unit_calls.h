// Audio units and components: one platform call per method. A handle is the address of the platform's
// instance, as a host Integer.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "coreaudio/core_audio.h"

#include <AudioUnit/AudioUnit.h>

namespace coreaudio {

/// Make a platform call whose only argument is a unit. Returns the platform's status, which is also stored in
/// `Lasterror`.
template <OSStatus (*call)(AudioUnit)>
HostInteger unitCall(REALobjectStruct* object, HostInteger handle)
{
    HostInteger& lasterror = beginCall(object);
    return lasterror = call(reinterpret_cast<AudioUnit>(handle));
}

HostInteger AudioUnitReset(REALobjectStruct* object, HostInteger handle, HostInteger scope,
                           HostInteger element);

/// Open the first component that matches both codes.
/// Owner   the host program must close the instance.
/// Errors  returns 0 with a `Lasterror` of -1 if no component matches or the component cannot be opened.
HostInteger OpenDefaultComponent(REALobjectStruct* object, REALstringStruct* type, REALstringStruct* subtype);

void CloseComponent(REALobjectStruct* object, HostInteger handle);

void AudioUnitSetParameter(REALobjectStruct* object, HostInteger unit, HostInteger parameterID,
                           HostInteger scope, HostInteger element, float value, HostInteger offsetFrames);

/// Return the parameter's value; 0.0 if the platform returns no value.
float AudioUnitGetParameter(REALobjectStruct* object, HostInteger unit, HostInteger parameterID,
                            HostInteger scope, HostInteger element);

} // namespace coreaudio
