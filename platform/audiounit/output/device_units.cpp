#include "platform/audiounit/output/device_units.h"

#include "platform/audiounit/common_properties.h"
#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/output/device_control.h"
#include "platform/audiounit/output/device_watch.h"
#include "platform/audiounit/output/map_channels.h"

#include <utility>

namespace kvxplatform::audiounit {
namespace {

DeviceOutput& outputOf(Unit& unit) { return stateOf<DeviceOutput>(unit); }

OSStatus openDevice(Unit& unit, AudioHardwarePropertyID choice, bool follows)
{
    unit.state = new DeviceOutput(choice, follows);
    return noErr;
}

DeviceFormat currentFormat(Unit& unit)
{
    DeviceFormat format;
    readFormat(currentDevice(unit), format);
    return format;
}

template <Side side>
AudioStreamBasicDescription deviceFormat(Unit& unit)
{
    const DeviceFormat format = currentFormat(unit);
    return pcm::canonicalFormat(format.sampleRate,
                                side == Side::output ? format.outputChannels : format.inputChannels);
}

template <Side side>
OSStatus getDeviceFormat(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, deviceFormat<side>(unit));
}

OSStatus getDeviceRate(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, currentFormat(unit).sampleRate);
}

OSStatus getLatency(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, latencyOf(currentDevice(unit)));
}

/// Get the time by which the unit pulls its input ahead of the device; 0 before the first start.
OSStatus getTail(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, outputOf(unit).client.lead());
}

OSStatus getDevice(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, currentDevice(unit));
}

OSStatus setDevice(Unit& unit, ElementAddress, const void* data, UInt32)
{
    return selectDevice(unit, valueAt<AudioDeviceID>(data));
}

OSStatus getIsRunning(Unit& unit, ElementAddress, void* data, UInt32&)
{
    const DeviceOutput& state = outputOf(unit);
    return give(data, UInt32{state.isStarted && state.isRunning});
}

UInt32 channelMapSize(Unit& unit, ElementAddress)
{
    return currentFormat(unit).outputChannels * static_cast<UInt32>(sizeof(SInt32));
}

OSStatus getChannelMap(Unit& unit, ElementAddress, void* data, UInt32& size)
{
    const pcm::ChannelMap* map = outputOf(unit).map.get();
    const UInt32 channels = unit.input(0).format.mChannelsPerFrame;
    for (UInt32 i = 0; i < size / sizeof(SInt32); ++i) {
        SInt32 entry = sourceChannelOf(map, i, channels);
        // The client's entry is returned even if its source channel does not exist.
        if (map && i < map->size()) entry = (*map)[i];
        give(static_cast<std::byte*>(data) + i * sizeof entry, entry);
    }
    return noErr;
}

OSStatus setChannelMap(Unit& unit, ElementAddress, const void* data, UInt32 size)
{
    std::unique_ptr<pcm::ChannelMap> map;
    if (data) {
        std::optional<pcm::ChannelMap> entries = pcm::channelMapFrom(data, size);
        if (!entries) return kAudioUnitErr_InvalidPropertyValue;
        map = std::make_unique<pcm::ChannelMap>(std::move(*entries));
    }
    outputOf(unit).map.publish(std::move(map), unit.scope);
    return noErr;
}

template <bool DeviceOutput::*isOn>
OSStatus getIsOn(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, UInt32{outputOf(unit).*isOn});
}

template <bool DeviceOutput::*isOn>
OSStatus setIsOn(Unit& unit, ElementAddress, const void* data, UInt32)
{
    outputOf(unit).*isOn = valueAt<UInt32>(data) != 0;
    return noErr;
}

OSStatus setInputCallback(Unit& unit, ElementAddress, const void* data, UInt32)
{
    std::unique_ptr<AURenderCallbackStruct> callback;
    if (data && valueAt<AURenderCallbackStruct>(data).inputProc)
        callback = std::make_unique<AURenderCallbackStruct>(valueAt<AURenderCallbackStruct>(data));
    outputOf(unit).inputCallback.publish(std::move(callback), unit.scope);
    return noErr;
}

template <Side side>
OSStatus getHasIO(Unit& unit, ElementAddress, void* data, UInt32&)
{
    const DeviceOutput& state = outputOf(unit);
    const DeviceFormat format = currentFormat(unit);
    return give(data, UInt32{side == Side::output ? state.isOutputOn && format.outputChannels > 0
                                                  : state.isInputOn && format.inputChannels > 0});
}

OSStatus getStartsAtZero(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, UInt32{outputOf(unit).startsAtZero});
}

OSStatus setStartsAtZero(Unit& unit, ElementAddress, const void* data, UInt32)
{
    outputOf(unit).startsAtZero = valueAt<UInt32>(data) != 0;
    return noErr;
}

constexpr auto read = Access::readOnly;
constexpr auto write = Access::writeOnly;
constexpr auto both = Access::readWrite;
constexpr auto before = Settable::beforeInitialize;
constexpr auto always = Settable::always;
constexpr auto unlocked = Settable::alwaysUnlocked;
constexpr UInt32 formatSize = sizeof(AudioStreamBasicDescription);
constexpr UInt32 callbackSize = sizeof(AURenderCallbackStruct);

} // namespace

// clang-format off
template <bool isHAL> const Property DeviceProperties<isHAL>::rows[] = {
    // property                                      scopes    element     bytes                        access                settable  get                                 set                                 size of
    {kAudioUnitProperty_MakeConnection,              inInput,  0,          sizeof(AudioUnitConnection), write,                unlocked, nullptr,                            setConnection,                      nullptr,        true},
    {kAudioUnitProperty_SampleRate,                  inInput,  0,          sizeof(Float64),             both,                 before,   getSampleRate,                      setSampleRate,                      nullptr},
    {kAudioUnitProperty_SampleRate,                  inOutput, 0,          sizeof(Float64),             read,                 always,   getDeviceRate,                      nullptr,                            nullptr},
    {kAudioUnitProperty_SampleRate,                  inInput,  1,          sizeof(Float64),             read,                 always,   getDeviceRate,                      nullptr,                            nullptr},
    {kAudioUnitProperty_SampleRate,                  inOutput, 1,          sizeof(Float64),             both,                 before,   getSampleRate,                      setSampleRate,                      nullptr},
    {kAudioUnitProperty_StreamFormat,                inInput,  0,          formatSize,                  both,                 before,   getStreamFormat,                    setStreamFormat,                    nullptr},
    {kAudioUnitProperty_StreamFormat,                inOutput, 0,          formatSize,                  read,                 always,   getDeviceFormat<Side::output>,      nullptr,                            nullptr},
    {kAudioUnitProperty_StreamFormat,                inInput,  1,          formatSize,                  read,                 always,   getDeviceFormat<Side::input>,       nullptr,                            nullptr},
    {kAudioUnitProperty_StreamFormat,                inOutput, 1,          formatSize,                  both,                 before,   getStreamFormat,                    setStreamFormat,                    nullptr},
    {kAudioUnitProperty_Latency,                     inGlobal, anyElement, sizeof(Float64),             read,                 always,   getLatency,                         nullptr,                            nullptr},
    {kAudioUnitProperty_SupportedNumChannels,        inGlobal, anyElement, sizeof(AUChannelInfo),       read,                 always,   getAnyChannelCounts,                nullptr,                            nullptr},
    {kAudioUnitProperty_TailTime,                    inGlobal, anyElement, sizeof(Float64),             read,                 always,   getTail,                            nullptr,                            nullptr},
    {kAudioUnitProperty_SetRenderCallback,           inInput,  0,          callbackSize,                write,                always,   nullptr,                            setRenderCallback,                  nullptr,        true},
    {kAudioOutputUnitProperty_CurrentDevice,         inGlobal, anyElement, sizeof(AudioDeviceID),       isHAL ? both : read,  unlocked, getDevice,                          setDevice,                          nullptr},
    {kAudioOutputUnitProperty_IsRunning,             inGlobal, anyElement, sizeof(UInt32),              read,                 always,   getIsRunning,                       nullptr,                            nullptr},
    {kAudioOutputUnitProperty_ChannelMap,            inOutput, 0,          0,                           both,                 always,   getChannelMap,                      setChannelMap,                      channelMapSize, true},
    {kAudioOutputUnitProperty_EnableIO,              inOutput, 0,          sizeof(UInt32),              isHAL ? both : read,  before,   getIsOn<&DeviceOutput::isOutputOn>, setIsOn<&DeviceOutput::isOutputOn>, nullptr},
    {kAudioOutputUnitProperty_EnableIO,              inInput,  1,          sizeof(UInt32),              isHAL ? both : read,  before,   getIsOn<&DeviceOutput::isInputOn>,  setIsOn<&DeviceOutput::isInputOn>,  nullptr},
    {kAudioOutputUnitProperty_SetInputCallback,      inGlobal, anyElement, callbackSize,                isHAL ? write : read, always,   nullptr,                            setInputCallback,                   nullptr,        true},
    {kAudioOutputUnitProperty_HasIO,                 inOutput, 0,          sizeof(UInt32),              read,                 always,   getHasIO<Side::output>,             nullptr,                            nullptr},
    {kAudioOutputUnitProperty_HasIO,                 inInput,  1,          sizeof(UInt32),              read,                 always,   getHasIO<Side::input>,              nullptr,                            nullptr},
    {kAudioOutputUnitProperty_StartTimestampsAtZero, inGlobal, anyElement, sizeof(UInt32),              both,                 always,   getStartsAtZero,                    setStartsAtZero,                    nullptr},
};

const Parameter deviceParameters[] = {
    // id                   count scope                    name      unit                                least most initial read only
    {kHALOutputParam_Volume, 1,   kAudioUnitScope_Global, "volume", kAudioUnitParameterUnit_LinearGain, 0,    1,   1,      false, nullptr, nullptr},
};
// clang-format on

template struct DeviceProperties<true>;
template struct DeviceProperties<false>;

OSStatus openHALOutput(Unit& unit)
{
    return openDevice(unit, kAudioHardwarePropertyDefaultOutputDevice, false);
}
OSStatus openDefaultOutput(Unit& unit)
{
    return openDevice(unit, kAudioHardwarePropertyDefaultOutputDevice, true);
}
OSStatus openSystemOutput(Unit& unit)
{
    return openDevice(unit, kAudioHardwarePropertyDefaultSystemOutputDevice, true);
}

OSStatus renewDeviceOutput(Unit& unit) { return outputOf(unit).client.renew(unit); }

void closeDeviceOutput(Unit& unit)
{
    endWatching(unit.self);
    stop(unit);
}

void destroyDeviceOutput(void* state)
{
    auto* output = static_cast<DeviceOutput*>(state);
    abandonDevice(*output);
    delete output;
}

} // namespace kvxplatform::audiounit
