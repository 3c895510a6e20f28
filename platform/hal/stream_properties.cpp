// The properties of a stream: its direction, its first channel and its formats.
#include "platform/hal/format_properties.h"
#include "platform/hal/formats.h"
#include "platform/hal/property_tables.h"

#include <iterator>

namespace kvxplatform::hal {

namespace {

OSStatus getOwner(const Request& r, Bytes& value) { return put(value, r.device->id); }
OSStatus getDirection(const Request& r, Bytes& value) { return put<UInt32>(value, r.isInput); }

OSStatus getTerminal(const Request& r, Bytes& value)
{
    const UInt32 output = r.device->outputSource == 'hdpn' ? UInt32{kAudioStreamTerminalTypeHeadphones}
                                                           : UInt32{kAudioStreamTerminalTypeSpeaker};
    return put(value, r.isInput ? UInt32{kAudioStreamTerminalTypeMicrophone} : output);
}

OSStatus getRangedFormats(const Request& r, Bytes& value)
{
    std::vector<AudioStreamRangedDescription> all;
    for (const AudioValueRange& rates : rateRanges(*r.device)) {
        AudioStreamRangedDescription ranged = {formatOf(*r.device, r.isInput), rates};
        ranged.mFormat.mSampleRate = rates.mMinimum == rates.mMaximum ? rates.mMinimum : kAudioStreamAnyRate;
        all.push_back(ranged);
    }
    return putAll(value, all);
}

constexpr auto zero = putConstant<UInt32, 0>;
constexpr auto one = putConstant<UInt32, 1>;

constexpr Side any = Side::none;
constexpr Elements master = Elements::master;
constexpr Extent single = Extent::one, many = Extent::many;
constexpr UInt32 word = sizeof(UInt32), format = sizeof(AudioStreamBasicDescription);
constexpr UInt32 ranged = sizeof(AudioStreamRangedDescription);

// clang-format off
constexpr Property rows[] = {
    // selector                                    side elements extent  size    get                 set
    {kAudioObjectPropertyClass,                    any, master,  single, word,   putConstant<AudioClassID, kAudioStreamClassID>, nullptr},
    {kAudioStreamPropertyOwningDevice,             any, master,  single, word,   getOwner,           nullptr},
    {kAudioStreamPropertyDirection,                any, master,  single, word,   getDirection,       nullptr},
    {kAudioStreamPropertyTerminalType,             any, master,  single, word,   getTerminal,        nullptr},
    {kAudioStreamPropertyStartingChannel,          any, master,  single, word,   one,                nullptr},
    {kAudioStreamPropertyLatency,                  any, master,  single, word,   zero,               nullptr},
    {kAudioStreamPropertyVirtualFormat,            any, master,  single, format, getFormat,          setFormat},
    {kAudioStreamPropertyAvailableVirtualFormats,  any, master,  many,   ranged, getRangedFormats,   nullptr},
    {kAudioStreamPropertyPhysicalFormat,           any, master,  single, format, getFormat,          setFormat},
    {kAudioStreamPropertyAvailablePhysicalFormats, any, master,  many,   ranged, getRangedFormats,   nullptr},
    {kAudioStreamPropertyPhysicalFormats,          any, master,  many,   format, getFormats,         nullptr},
    {kAudioStreamPropertyPhysicalFormatSupported,  any, master,  single, format, getFormatSupported, nullptr},
    {kAudioStreamPropertyPhysicalFormatMatch,      any, master,  single, format, getFormatMatch,     nullptr},
};
// clang-format on

} // namespace

PropertyTable streamProperties() { return {rows, std::size(rows)}; }

} // namespace kvxplatform::hal
