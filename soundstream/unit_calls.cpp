// The output unit that is heard.
#include "soundstream/render.h"
#include "soundstream/sound_stream.h"

namespace soundstream {

namespace {

AudioUnit unitOf(HostInteger handle) { return reinterpret_cast<AudioUnit>(handle); }

HostInteger& beginCall(REALobjectStruct* object)
{
    HostInteger& lastStatus = dataOf(object).lastStatus;
    lastStatus = -1;
    return lastStatus;
}

} // namespace

HostInteger OpenDefaultAudioUnitOutputComponent(REALobjectStruct* object)
{
    HostInteger& lastStatus = beginCall(object);
    ComponentDescription looking = {kAudioUnitType_Output, kAudioUnitSubType_DefaultOutput,
                                    kAudioUnitManufacturer_Apple, 0, 0};
    const Component component = FindNextComponent(nullptr, &looking);
    if (!component) return 0;
    ComponentInstance unit = nullptr;
    const OSErr status = OpenAComponent(component, &unit);
    lastStatus = status;
    return status == noErr ? reinterpret_cast<HostInteger>(unit) : 0;
}

HostInteger AttachToAudioUnitComponent(REALobjectStruct* object, HostInteger unit)
{
    return AttachToElement(object, unit, 0);
}

HostInteger AttachToElement(REALobjectStruct* object, HostInteger unit, HostInteger element)
{
    SoundStreamData& data = dataOf(object);
    HostInteger& lastStatus = beginCall(object);
    if (!data.state) return lastStatus;
    const AURenderCallbackStruct callback = {renderFromMixer, data.state};
    lastStatus =
        AudioUnitSetProperty(unitOf(unit), kAudioUnitProperty_SetRenderCallback, kAudioUnitScope_Input,
                             static_cast<AudioUnitElement>(element), &callback, sizeof callback);
    if (lastStatus == noErr) data.attachedUnit = unitOf(unit);
    return lastStatus;
}

HostInteger AudioUnitInitialize(REALobjectStruct* object, HostInteger unit)
{
    HostInteger& lastStatus = beginCall(object);
    return lastStatus = ::AudioUnitInitialize(unitOf(unit));
}

HostInteger AudioOutputUnitStart(REALobjectStruct* object, HostInteger unit)
{
    HostInteger& lastStatus = beginCall(object);
    return lastStatus = ::AudioOutputUnitStart(unitOf(unit));
}

} // namespace soundstream
