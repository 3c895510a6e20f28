#include "platform/audiounit/common_properties.h"

#include "platform/audiounit/element_format.h"
#include "platform/audiounit/parameter.h"
#include "platform/audiounit/source.h"

namespace kvxplatform::audiounit {
namespace {

Element& elementAt(Unit& unit, ElementAddress address)
{
    return unit.scopes[address.scope].elements[address.element];
}

} // namespace

OSStatus setConnection(Unit& unit, ElementAddress address, const void* data, UInt32)
{
    if (!data) return connect(unit, {nullptr, 0, address.element});
    return connect(unit, valueAt<AudioUnitConnection>(data));
}

OSStatus setRenderCallback(Unit& unit, ElementAddress address, const void* data, UInt32)
{
    setCallback(unit, address.element,
                data ? valueAt<AURenderCallbackStruct>(data) : AURenderCallbackStruct{});
    return noErr;
}

OSStatus getEqualChannelCounts(Unit&, ElementAddress, void* data, UInt32&)
{
    return give(data, AUChannelInfo{-1, -1});
}

OSStatus getAnyChannelCounts(Unit&, ElementAddress, void* data, UInt32&)
{
    return give(data, AUChannelInfo{-1, -2});
}

OSStatus getBypass(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, UInt32{unit.isBypassed});
}

OSStatus setBypass(Unit& unit, ElementAddress, const void* data, UInt32)
{
    unit.isBypassed = valueAt<UInt32>(data) != 0;
    return noErr;
}

OSStatus getSampleRate(Unit& unit, ElementAddress address, void* data, UInt32&)
{
    return give(data, elementAt(unit, address).format.mSampleRate);
}

OSStatus setSampleRate(Unit& unit, ElementAddress address, const void* data, UInt32)
{
    AudioStreamBasicDescription format = elementAt(unit, address).format;
    format.mSampleRate = valueAt<Float64>(data);
    return pcm::hasRateAndChannels(format) ? setFormat(unit, address, format)
                                           : static_cast<OSStatus>(kAudioUnitErr_InvalidPropertyValue);
}

OSStatus getStreamFormat(Unit& unit, ElementAddress address, void* data, UInt32&)
{
    return give(data, elementAt(unit, address).format);
}

OSStatus setStreamFormat(Unit& unit, ElementAddress address, const void* data, UInt32)
{
    return setFormat(unit, address, valueAt<AudioStreamBasicDescription>(data));
}

namespace {

const ElementCount& countRule(const Unit& unit, AudioUnitScope scope)
{
    static constexpr ElementCount one = {1, 1, 1};
    if (scope == kAudioUnitScope_Input) return unit.kind.inputs.count;
    return scope == kAudioUnitScope_Output ? unit.kind.outputs.count : one;
}

UInt32 parameterListSize(Unit& unit, ElementAddress address)
{
    return parameterCount(unit, address.scope, address.element) * sizeof(AudioUnitParameterID);
}

OSStatus getParameterList(Unit& unit, ElementAddress address, void* data, UInt32& size)
{
    constexpr UInt32 each = sizeof(AudioUnitParameterID);
    size = each * parameterList(unit, address.scope, address.element,
                                static_cast<AudioUnitParameterID*>(data), size / each);
    return noErr;
}

OSStatus getParameterInfo(Unit& unit, ElementAddress address, void* data, UInt32&)
{
    AudioUnitParameterInfo info{};
    const OSStatus status = parameterInfo(unit, address.element, address.scope, info);
    return status ? status : give(data, info);
}

OSStatus getElementCount(Unit& unit, ElementAddress address, void* data, UInt32&)
{
    return give(data, unit.scopes[address.scope].count.load());
}

OSStatus setElementCount(Unit& unit, ElementAddress address, const void* data, UInt32)
{
    const ElementCount& rule = countRule(unit, address.scope);
    const UInt32 count = valueAt<UInt32>(data);
    if (count == unit.scopes[address.scope].count) return noErr;
    if (rule.least == rule.most) return kAudioUnitErr_PropertyNotWritable;
    if (count < rule.least || count > rule.most) return kAudioUnitErr_InvalidPropertyValue;
    unit.scopes[address.scope].count = count;
    return noErr;
}

OSStatus getZeroSeconds(Unit&, ElementAddress, void* data, UInt32&) { return give(data, Float64{0}); }

OSStatus getSliceLimit(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, unit.sliceLimit.load());
}

OSStatus setSliceLimit(Unit& unit, ElementAddress, const void* data, UInt32)
{
    const UInt32 frames = valueAt<UInt32>(data);
    if (frames == 0) return kAudioUnitErr_InvalidPropertyValue;
    unit.sliceLimit = frames;
    return noErr;
}

OSStatus getLastRenderError(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, unit.lastRenderError.exchange(noErr));
}

constexpr auto always = Settable::always;
constexpr auto unlocked = Settable::alwaysUnlocked;
constexpr auto before = Settable::beforeInitialize;
constexpr auto read = Access::readOnly;
constexpr auto write = Access::writeOnly;
constexpr auto both = Access::readWrite;
constexpr UInt32 inBuses = inInput | inOutput;

} // namespace

// clang-format off
const Property commonProperties[] = {
    // property                                scopes    element     bytes                                access settable  get                 set                size of
    {kAudioUnitProperty_MakeConnection,        inInput,  anyElement, sizeof(AudioUnitConnection),         write, unlocked, nullptr,            setConnection,     nullptr,           true},
    {kAudioUnitProperty_SampleRate,            inBuses,  anyElement, sizeof(Float64),                     both,  before,   getSampleRate,      setSampleRate,     nullptr},
    {kAudioUnitProperty_ParameterList,         inAll,    anyElement, 0,                                   read,  always,   getParameterList,   nullptr,           parameterListSize},
    {kAudioUnitProperty_ParameterInfo,         inAll,    anyNumber,  sizeof(AudioUnitParameterInfo),      read,  always,   getParameterInfo,   nullptr,           nullptr},
    {kAudioUnitProperty_StreamFormat,          inBuses,  anyElement, sizeof(AudioStreamBasicDescription), both,  before,   getStreamFormat,    setStreamFormat,   nullptr},
    {kAudioUnitProperty_ElementCount,          inAll,    anyNumber,  sizeof(UInt32),                      both,  before,   getElementCount,    setElementCount,   nullptr},
    {kAudioUnitProperty_Latency,               inGlobal, anyElement, sizeof(Float64),                     read,  always,   getZeroSeconds,     nullptr,           nullptr},
    {kAudioUnitProperty_MaximumFramesPerSlice, inGlobal, anyElement, sizeof(UInt32),                      both,  before,   getSliceLimit,      setSliceLimit,     nullptr},
    {kAudioUnitProperty_TailTime,              inGlobal, anyElement, sizeof(Float64),                     read,  always,   getZeroSeconds,     nullptr,           nullptr},
    {kAudioUnitProperty_LastRenderError,       inGlobal, anyElement, sizeof(OSStatus),                    read,  always,   getLastRenderError, nullptr,           nullptr},
    {kAudioUnitProperty_SetRenderCallback,     inInput,  anyElement, sizeof(AURenderCallbackStruct),      write, always,   nullptr,            setRenderCallback, nullptr,           true},
};
// clang-format on

} // namespace kvxplatform::audiounit
