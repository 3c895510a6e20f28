#include "platform/audiounit/output/device_info.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kvxplatform::audiounit {
namespace {

template <class T>
OSStatus read(AudioObjectID object, AudioObjectPropertySelector selector, AudioObjectPropertyScope scope,
              T& out)
{
    const AudioObjectPropertyAddress address = {selector, scope, kAudioObjectPropertyElementMaster};
    UInt32 size = sizeof out;
    return AudioObjectGetPropertyData(object, &address, 0, nullptr, &size, &out);
}

UInt32 channelsOf(AudioDeviceID device, AudioObjectPropertyScope scope)
{
    const AudioObjectPropertyAddress address = {kAudioDevicePropertyStreamConfiguration, scope,
                                                kAudioObjectPropertyElementMaster};
    UInt32 size = 0;
    if (AudioObjectGetPropertyDataSize(device, &address, 0, nullptr, &size)) return 0;
    std::vector<std::uint64_t> memory(size / 8 + 1);
    if (AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, memory.data())) return 0;
    const auto& list = *reinterpret_cast<const AudioBufferList*>(memory.data());
    UInt32 channels = 0;
    for (UInt32 i = 0; i < list.mNumberBuffers &&
                       offsetof(AudioBufferList, mBuffers) + (i + 1) * sizeof(AudioBuffer) <= size;
         ++i)
        channels += list.mBuffers[i].mNumberChannels;
    return channels;
}

UInt32 firstStreamLatency(AudioDeviceID device)
{
    const AudioObjectPropertyAddress address = {kAudioDevicePropertyStreams, kAudioDevicePropertyScopeOutput,
                                                kAudioObjectPropertyElementMaster};
    UInt32 size = 0;
    if (AudioObjectGetPropertyDataSize(device, &address, 0, nullptr, &size)) return 0;
    std::vector<AudioStreamID> streams(size / sizeof(AudioStreamID) + 1);
    if (AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, streams.data())) return 0;
    UInt32 frames = 0;
    if (size >= sizeof(AudioStreamID))
        read(streams[0], kAudioStreamPropertyLatency, kAudioObjectPropertyScopeGlobal, frames);
    return frames;
}

} // namespace

OSStatus readFormat(AudioDeviceID device, DeviceFormat& out)
{
    out = {};
    if (const OSStatus status = read(device, kAudioDevicePropertyNominalSampleRate,
                                     kAudioObjectPropertyScopeGlobal, out.sampleRate))
        return status;
    out.outputChannels = channelsOf(device, kAudioDevicePropertyScopeOutput);
    out.inputChannels = channelsOf(device, kAudioDevicePropertyScopeInput);
    return noErr;
}

Float64 latencyOf(AudioDeviceID device)
{
    Float64 rate = 0;
    UInt32 latency = 0, offset = 0;
    read(device, kAudioDevicePropertyNominalSampleRate, kAudioObjectPropertyScopeGlobal, rate);
    read(device, kAudioDevicePropertyLatency, kAudioDevicePropertyScopeOutput, latency);
    read(device, kAudioDevicePropertySafetyOffset, kAudioDevicePropertyScopeOutput, offset);
    const Float64 frames = Float64{1} * latency + offset + firstStreamLatency(device);
    return rate > 0 ? frames / rate : 0;
}

AudioDeviceID defaultDevice(AudioHardwarePropertyID selector)
{
    AudioDeviceID device = kAudioDeviceUnknown;
    read(kAudioObjectSystemObject, selector, kAudioObjectPropertyScopeGlobal, device);
    return device;
}

} // namespace kvxplatform::audiounit
