#include "coreaudio/unit_calls.h"

#include "plugin/four_character_code.h"

#include <Carbon/Carbon.h>

namespace coreaudio {

namespace {

AudioUnit unitOf(HostInteger handle) { return reinterpret_cast<AudioUnit>(handle); }

UInt32 word(HostInteger value) { return static_cast<UInt32>(value); }

} // namespace

HostInteger AudioUnitReset(REALobjectStruct* object, HostInteger handle, HostInteger scope,
                           HostInteger element)
{
    HostInteger& lasterror = beginCall(object);
    return lasterror = ::AudioUnitReset(unitOf(handle), word(scope), word(element));
}

HostInteger OpenDefaultComponent(REALobjectStruct* object, REALstringStruct* type, REALstringStruct* subtype)
{
    HostInteger& lasterror = beginCall(object);
    const std::uint32_t typeCode = REALstringToOSType(type);
    const ComponentInstance instance = ::OpenDefaultComponent(typeCode, REALstringToOSType(subtype));
    if (instance) lasterror = noErr;
    return reinterpret_cast<HostInteger>(instance);
}

void CloseComponent(REALobjectStruct* object, HostInteger handle)
{
    HostInteger& lasterror = beginCall(object);
    lasterror = ::CloseComponent(reinterpret_cast<ComponentInstance>(handle));
}

void AudioUnitSetParameter(REALobjectStruct* object, HostInteger unit, HostInteger parameterID,
                           HostInteger scope, HostInteger element, float value, HostInteger offsetFrames)
{
    HostInteger& lasterror = beginCall(object);
    lasterror = ::AudioUnitSetParameter(unitOf(unit), word(parameterID), word(scope), word(element), value,
                                        word(offsetFrames));
}

float AudioUnitGetParameter(REALobjectStruct* object, HostInteger unit, HostInteger parameterID,
                            HostInteger scope, HostInteger element)
{
    HostInteger& lasterror = beginCall(object);
    Float32 value = 0;
    lasterror = ::AudioUnitGetParameter(unitOf(unit), word(parameterID), word(scope), word(element), &value);
    return value;
}

} // namespace coreaudio
