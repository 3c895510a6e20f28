#include "platform/audiounit/converter/converter_unit.h"

#include "platform/audiounit/common_properties.h"
#include "platform/audiounit/converter/slice_conversion.h"
#include "platform/pcm/channel_map.h"
#include "platform/pcm/conversion_quality.h"

#include <cstring>
#include <optional>

namespace kvxplatform::audiounit {
namespace {

struct Converter {
    pcm::ConversionQuality quality; ///< quality settings, guarded by the `settings` lock
    /// The channel map that the client has set, guarded by the `settings` lock. Empty: the default map.
    std::optional<pcm::ChannelMap> map;
    SliceConversion conversion;
};

UInt32 channelsOf(Unit& unit, AudioUnitScope scope)
{
    return unit.scopes[scope].elements[0].format.mChannelsPerFrame;
}

pcm::ChannelMap channelMapOf(Unit& unit, const std::optional<pcm::ChannelMap>& map)
{
    return map ? *map
               : pcm::foldedChannelMap(channelsOf(unit, kAudioUnitScope_Input),
                                       channelsOf(unit, kAudioUnitScope_Output));
}

/// Change quality and channel map; the change applies at once if the unit is initialised. The caller holds
/// the `settings` lock.
OSStatus change(Unit& unit, const pcm::ConversionQuality& quality, std::optional<pcm::ChannelMap> map)
{
    auto& state = stateOf<Converter>(unit);
    if (unit.isInitialized)
        if (const OSStatus status = state.conversion.replace(unit, channelMapOf(unit, map), quality.filter()))
            return status;
    state.quality = quality;
    state.map = std::move(map);
    return noErr;
}

OSStatus getTail(Unit& unit, ElementAddress, void* data, UInt32&)
{
    const Converter& state = stateOf<Converter>(unit);
    return give(data, state.conversion.tail(unit, state.quality.filter()));
}

template <UInt32 pcm::ConversionQuality::*field>
OSStatus getQuality(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, stateOf<Converter>(unit).quality.*field);
}

template <UInt32 pcm::ConversionQuality::*field>
OSStatus setQuality(Unit& unit, ElementAddress, const void* data, UInt32)
{
    auto& state = stateOf<Converter>(unit);
    pcm::ConversionQuality next = state.quality;
    next.*field = valueAt<UInt32>(data);
    if (next.*field == state.quality.*field) return noErr;
    if (!pcm::ConversionQuality::isComplexity(next.complexity) || next.quality > pcm::ConversionQuality::most)
        return kAudioUnitErr_InvalidPropertyValue;
    if (next.filter() == state.quality.filter() || !convertsRate(unit)) {
        state.quality = next;
        return noErr;
    }
    return change(unit, next, state.map);
}

UInt32 channelMapSize(Unit& unit, ElementAddress address)
{
    return channelsOf(unit, address.scope) * static_cast<UInt32>(sizeof(SInt32));
}

OSStatus getChannelMap(Unit& unit, ElementAddress, void* data, UInt32& size)
{
    pcm::ChannelMap entries = channelMapOf(unit, stateOf<Converter>(unit).map);
    entries.resize(size / sizeof(SInt32), pcm::silentChannel);
    std::memcpy(data, entries.data(), size);
    return noErr;
}

OSStatus setChannelMap(Unit& unit, ElementAddress, const void* data, UInt32 size)
{
    std::optional<pcm::ChannelMap> map;
    if (data && !(map = pcm::channelMapFrom(data, size))) return kAudioUnitErr_InvalidPropertyValue;
    return change(unit, stateOf<Converter>(unit).quality, std::move(map));
}

constexpr auto always = Settable::always;
constexpr auto both = Access::readWrite;
constexpr auto read = Access::readOnly;
constexpr auto complexity = &pcm::ConversionQuality::complexity;
constexpr auto quality = &pcm::ConversionQuality::quality;

} // namespace

// clang-format off
const Property converterProperties[] = {
    // property                                        scopes    element     bytes                  access settable get                     set                     size of
    {kAudioUnitProperty_SupportedNumChannels,          inGlobal, anyElement, sizeof(AUChannelInfo), read,  always,  getAnyChannelCounts,    nullptr,                nullptr},
    {kAudioUnitProperty_TailTime,                      inGlobal, anyElement, sizeof(Float64),       read,  always,  getTail,                nullptr,                nullptr},
    {kAudioUnitProperty_RenderQuality,                 inGlobal, anyElement, sizeof(UInt32),        both,  always,  getQuality<quality>,    setQuality<quality>,    nullptr},
    {kAudioOutputUnitProperty_ChannelMap,              inOutput, 0,          0,                     both,  always,  getChannelMap,          setChannelMap,          channelMapSize, true},
    {kAudioUnitProperty_SampleRateConverterComplexity, inGlobal, anyElement, sizeof(UInt32),        both,  always,  getQuality<complexity>, setQuality<complexity>, nullptr},
};
// clang-format on

OSStatus openConverter(Unit& unit)
{
    unit.state = new Converter;
    return noErr;
}

void destroyConverter(void* state) { delete static_cast<Converter*>(state); }

OSStatus initializeConverter(Unit& unit)
{
    auto& state = stateOf<Converter>(unit);
    return state.conversion.prepare(unit, channelMapOf(unit, state.map), state.quality.filter());
}

void uninitializeConverter(Unit& unit) { stateOf<Converter>(unit).conversion.release(unit); }

OSStatus renewConverter(Unit& unit)
{
    const auto& state = stateOf<Converter>(unit);
    return convertsRate(unit) ? change(unit, state.quality, state.map) : OSStatus{noErr};
}

void resetConverter(Unit& unit) { stateOf<Converter>(unit).conversion.reset(); }

OSStatus renderConverter(Unit& unit, Slice& slice)
{
    return stateOf<Converter>(unit).conversion.render(unit, slice);
}

} // namespace kvxplatform::audiounit
