// The methods that open, attach, initialise and start an output unit.
#include "plugin/exception_border.h"
#include "soundstream/render.h"
#include "soundstream/sound_stream.h"

namespace soundstream {

namespace {

AudioUnit unitOf(HostInteger handle) { return reinterpret_cast<AudioUnit>(handle); }

/// Store and return the status of a platform call. The stored status is -1 during the call and after a call
/// that throws.
template <class Call>
HostInteger statusOf(REALobjectStruct* object, Call call)
{
    HostInteger& lastStatus = dataOf(object).lastStatus;
    lastStatus = -1;
    return lastStatus = catchAll(call, -1);
}

} // namespace

HostInteger OpenDefaultAudioUnitOutputComponent(REALobjectStruct* object)
{
    ComponentInstance unit = nullptr;
    const HostInteger status = statusOf(object, [&unit]() -> HostInteger {
        ComponentDescription looking = {kAudioUnitType_Output, kAudioUnitSubType_DefaultOutput,
                                        kAudioUnitManufacturer_Apple, 0, 0};
        const Component component = FindNextComponent(nullptr, &looking);
        return component ? OpenAComponent(component, &unit) : -1;
    });
    return status == noErr ? reinterpret_cast<HostInteger>(unit) : 0;
}

HostInteger AttachToAudioUnitComponent(REALobjectStruct* object, HostInteger unit)
{
    return AttachToElement(object, unit, 0);
}

HostInteger AttachToElement(REALobjectStruct* object, HostInteger unit, HostInteger element)
{
    SoundStreamData& data = dataOf(object);
    return statusOf(object, [&]() -> HostInteger {
        if (!data.state) return -1;
        const AURenderCallbackStruct callback = {renderFromMixer, data.state};
        const OSStatus status =
            AudioUnitSetProperty(unitOf(unit), kAudioUnitProperty_SetRenderCallback, kAudioUnitScope_Input,
                                 static_cast<AudioUnitElement>(element), &callback, sizeof callback);
        if (status == noErr) data.attachedUnit = unitOf(unit);
        return status;
    });
}

HostInteger AudioUnitInitialize(REALobjectStruct* object, HostInteger unit)
{
    return statusOf(object, [unit] { return ::AudioUnitInitialize(unitOf(unit)); });
}

HostInteger AudioOutputUnitStart(REALobjectStruct* object, HostInteger unit)
{
    return statusOf(object, [unit] { return ::AudioOutputUnitStart(unitOf(unit)); });
}

} // namespace soundstream
