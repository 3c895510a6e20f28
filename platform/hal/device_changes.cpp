#include "platform/hal/device_changes.h"

#include "platform/hal/formats.h"
#include "platform/hal/listeners.h"

#include <algorithm>

namespace kvxplatform::hal {

namespace {

/// The kinds of changes of a device's settings, as bits.
enum Cause : unsigned {
    rate = 1,
    formats = 2, ///< change of the supported rates
    slice = 4,
    channels = 8, ///< change of the number of output channels
    pair = 16,    ///< a second output channel was added or removed
    names = 32,   ///< change of the channel names: only a pair of channels has the names left and right
};

/// The elements of a property at which listeners are notified.
enum class At { master, all, each };

struct Effect {
    AudioObjectPropertySelector selector;
    unsigned causes;
    At elements;
};

// clang-format off
constexpr Effect effectsOnDevice[] = {
    {kAudioDevicePropertyNominalSampleRate,           rate,               At::master},
    {kAudioDevicePropertyActualSampleRate,            rate,               At::master},
    {kAudioDevicePropertyBufferFrameSize,             slice,              At::master},
    {kAudioDevicePropertyBufferSize,                  slice | channels,   At::master},
    {kAudioDevicePropertyStreamConfiguration,         slice | channels,   At::master},
    {kAudioDevicePropertyBufferSizeRange,             channels,           At::master},
    {kAudioDevicePropertyPreferredChannelsForStereo,  pair,               At::master},
    {kAudioDevicePropertyPreferredChannelLayout,      channels,           At::master},
    {kAudioDevicePropertyStreamFormat,                rate | channels,    At::all},
    {kAudioDevicePropertyStreamFormats,               formats | channels, At::all},
    {kAudioDevicePropertyChannelName,                 names,              At::each},
    {kAudioDevicePropertyChannelNameCFString,         names,              At::each},
};
constexpr Effect effectsOnStream[] = {
    {kAudioStreamPropertyVirtualFormat,               rate | channels,    At::master},
    {kAudioStreamPropertyPhysicalFormat,              rate | channels,    At::master},
    {kAudioStreamPropertyPhysicalFormats,             formats | channels, At::master},
    {kAudioStreamPropertyAvailableVirtualFormats,     channels,           At::master},
    {kAudioStreamPropertyAvailablePhysicalFormats,    channels,           At::master},
};
// clang-format on

unsigned causesOf(const Device& device, const Settings& before, const Settings& after)
{
    const UInt32 former = before.outputChannels, present = after.outputChannels;
    const auto when = [](bool condition, Cause cause) { return condition ? unsigned{cause} : 0u; };
    const std::lock_guard<std::mutex> lock(propertyLock);
    return when(before.rate != after.rate, rate) |
           when(formatListChanges(device, before.rate, after.rate), formats) |
           when(before.sliceFrames != after.sliceFrames, slice) | when(former != present, channels) |
           when((former > 1) != (present > 1), pair) | when((former == 2) != (present == 2), names);
}

/// Notify the listeners of one property. No element that was added or removed is notified by its number.
void post(const Device& device, const Effect& effect, AudioObjectPropertyScope scope, UInt32 lastElement)
{
    if (effect.elements == At::master) postChange(device.id, effect.selector, scope);
    if (effect.elements == At::all)
        postChange(device.id, effect.selector, scope, kAudioObjectPropertyElementWildcard);
    if (effect.elements == At::each)
        for (UInt32 element = 1; element <= lastElement; ++element)
            postChange(device.id, effect.selector, scope, element);
}

void postEffects(const Device& device, unsigned causes, UInt32 lastElement)
{
    // Only the number of outputs can change, not that of inputs; a new rate or slice concerns both sides.
    constexpr unsigned ofBothSides = rate | formats | slice;
    for (const Effect& effect : effectsOnDevice)
        if (const unsigned why = effect.causes & causes)
            post(device, effect,
                 why & ofBothSides ? kAudioObjectPropertyScopeGlobal : scopeOfSide(device, false),
                 lastElement);
    for (const Effect& effect : effectsOnStream) {
        const unsigned why = effect.causes & causes;
        if (why && device.outputStream) postChange(device.outputStream, effect.selector);
        if (why & ofBothSides && device.inputStream) postChange(device.inputStream, effect.selector);
    }
}

} // namespace

bool differ(const Settings& before, const Settings& after)
{
    return before.rate != after.rate || before.sliceFrames != after.sliceFrames ||
           before.outputChannels != after.outputChannels;
}

AudioObjectPropertyScope scopeOfSide(const Device& device, bool isInput)
{
    if (!device.outputStream || !device.inputStream) return kAudioObjectPropertyScopeGlobal;
    return isInput ? AudioObjectPropertyScope{kAudioDevicePropertyScopeInput}
                   : kAudioDevicePropertyScopeOutput;
}

void postSettingChanges(const Device& device, const Settings& before, const Settings& after)
{
    postEffects(device, causesOf(device, before, after),
                std::min(before.outputChannels, after.outputChannels));
}

void postNewRate(const Device& device) { postEffects(device, rate, 0); }

void postNewSlice(const Device& device) { postEffects(device, slice, 0); }

} // namespace kvxplatform::hal
