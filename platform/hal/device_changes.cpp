#include "platform/hal/device_changes.h"

#include "platform/hal/listeners.h"

#include <initializer_list>

namespace kvxplatform::hal {

namespace {

void tell(AudioObjectID object, std::initializer_list<AudioObjectPropertySelector> selectors)
{
    for (auto selector : selectors) postChange(object, selector);
}

/// A device's format is asked for at any channel, and is that of its stream.
void tellFormats(const Device& device)
{
    postChange(device.id, kAudioDevicePropertyStreamFormat, kAudioObjectPropertyScopeGlobal,
               kAudioObjectPropertyElementWildcard);
    for (AudioObjectID stream : {device.outputStream, device.inputStream})
        if (stream) tell(stream, {kAudioStreamPropertyVirtualFormat, kAudioStreamPropertyPhysicalFormat});
}

} // namespace

void tellNewRate(const Device& device)
{
    tell(device.id, {kAudioDevicePropertyNominalSampleRate, kAudioDevicePropertyActualSampleRate});
    tellFormats(device);
}

void tellNewSlice(const Device& device)
{
    tell(device.id, {kAudioDevicePropertyBufferFrameSize, kAudioDevicePropertyBufferSize,
                     kAudioDevicePropertyStreamConfiguration});
}

void tellNewChannels(const Device& device)
{
    tell(device.id, {kAudioDevicePropertyStreamConfiguration, kAudioDevicePropertyBufferSize,
                     kAudioDevicePropertyBufferSizeRange, kAudioDevicePropertyPreferredChannelsForStereo,
                     kAudioDevicePropertyPreferredChannelLayout});
    tellFormats(device);
}

} // namespace kvxplatform::hal
