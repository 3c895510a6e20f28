#include "platform/hal/device_changes.h"

#include "platform/hal/formats.h"
#include "platform/hal/listeners.h"
#include "platform/hal/tree.h"

#include <algorithm>

namespace kvxplatform::hal {

namespace {

/// What may have become of a device's settings.
enum Cause : unsigned {
    rate = 1,     ///< it runs at another rate
    formats = 2,  ///< the rates that it names are others
    slice = 4,    ///< its slices are longer or shorter
    channels = 8, ///< it has more or fewer outputs
    pair = 16,    ///< it has a second output, or no longer
    names = 32,   ///< its outputs are called otherwise: two are left and right
};

/// The elements that a change is told at.
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
    const UInt32 had = before.outputChannels, has = after.outputChannels;
    const auto when = [](bool isSo, Cause cause) { return isSo ? unsigned{cause} : 0u; };
    const std::lock_guard<std::mutex> lock(treeLock());
    return when(before.rate != after.rate, rate) |
           when(listFollowsRate(device, before.rate, after.rate), formats) |
           when(before.sliceFrames != after.sliceFrames, slice) | when(had != has, channels) |
           when((had > 1) != (has > 1), pair) | when((had == 2) != (has == 2), names);
}

/// Elements that have come or gone are not told one by one.
void tell(const Device& device, const Effect& effect, AudioObjectPropertyScope scope, UInt32 lastElement)
{
    if (effect.elements == At::master) postChange(device.id, effect.selector, scope);
    if (effect.elements == At::all)
        postChange(device.id, effect.selector, scope, kAudioObjectPropertyElementWildcard);
    if (effect.elements == At::each)
        for (UInt32 element = 1; element <= lastElement; ++element)
            postChange(device.id, effect.selector, scope, element);
}

void tellEffects(const Device& device, unsigned causes, UInt32 lastElement)
{
    // Only outputs come and go; a rate and a slice are of both sides.
    constexpr unsigned ofBothSides = rate | formats | slice;
    for (const Effect& effect : effectsOnDevice)
        if (const unsigned why = effect.causes & causes)
            tell(device, effect,
                 why & ofBothSides ? kAudioObjectPropertyScopeGlobal : placeOfSide(device, false),
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

AudioObjectPropertyScope placeOfSide(const Device& device, bool isInput)
{
    if (!device.outputStream || !device.inputStream) return kAudioObjectPropertyScopeGlobal;
    return isInput ? AudioObjectPropertyScope{kAudioDevicePropertyScopeInput}
                   : kAudioDevicePropertyScopeOutput;
}

void tellChanges(const Device& device, const Settings& before, const Settings& after)
{
    tellEffects(device, causesOf(device, before, after),
                std::min(before.outputChannels, after.outputChannels));
}

void tellNewRate(const Device& device) { tellEffects(device, rate, 0); }

void tellNewSlice(const Device& device) { tellEffects(device, slice, 0); }

} // namespace kvxplatform::hal
