// The formats that a converter accepts, and its properties.
#include "platform/audioconverter/converter.h"

#include "platform/pcm/channel_map.h"
#include "platform/pcm/linear_pcm.h"

#include <Carbon/Carbon.h>

#include <cmath>
#include <cstring>

namespace kvxplatform::audioconverter {
namespace {

using pcm::ChannelMap;
using pcm::Conversion;

bool isRate(Float64 rate) { return std::isfinite(rate) && rate > 0; }

ChannelMap channelMapOf(const Converter& converter, const Settings& settings)
{
    return settings.map ? *settings.map
                        : pcm::foldedChannelMap(converter.source.mChannelsPerFrame,
                                                converter.destination.mChannelsPerFrame);
}

/// Make a conversion with these settings. Returns null if the converter's formats cannot be converted. Throws
/// std::bad_alloc.
std::unique_ptr<Conversion> make(const Converter& converter, const Settings& settings)
{
    auto made = std::make_unique<Conversion>();
    const bool isMade = made->prepare(converter.source, converter.destination,
                                      channelMapOf(converter, settings), settings.quality.filter());
    return isMade ? std::move(made) : nullptr;
}

/// Replace the settings and the conversion, and reset the converter. Throws std::bad_alloc, and then nothing
/// has changed.
OSStatus apply(Converter& converter, Settings settings)
{
    std::unique_ptr<Conversion> made = make(converter, settings);
    if (!made) return kAudioConverterErr_UnspecifiedError; // unexpected: prepare() has accepted these formats
    converter.conversion = std::move(made);
    converter.lead = converter.conversion->lead();
    converter.settings = std::move(settings);
    reset(converter);
    return noErr;
}

// ---- properties ----

template <class T>
void store(void* data, const T& value)
{
    std::memcpy(data, &value, sizeof value);
}

UInt32 loadWord(const void* data)
{
    UInt32 word = 0;
    std::memcpy(&word, data, sizeof word);
    return word;
}

template <UInt32 pcm::ConversionQuality::*field>
void getQuality(const Converter& converter, void* data)
{
    store(data, converter.settings.quality.*field);
}

OSStatus setComplexity(Converter& converter, const void* data)
{
    Settings settings = converter.settings;
    settings.quality.complexity = loadWord(data);
    return pcm::ConversionQuality::isComplexity(settings.quality.complexity)
               ? apply(converter, std::move(settings))
               : paramErr;
}

OSStatus setQuality(Converter& converter, const void* data)
{
    Settings settings = converter.settings;
    settings.quality.quality = loadWord(data);
    return settings.quality.quality <= pcm::ConversionQuality::most ? apply(converter, std::move(settings))
                                                                    : paramErr;
}

void getPrimeMethod(const Converter&, void* data) { store(data, UInt32{kConverterPrimeMethod_Normal}); }

OSStatus setPrimeMethod(Converter&, const void* data)
{
    return loadWord(data) == kConverterPrimeMethod_Normal
               ? noErr
               : static_cast<OSStatus>(kAudioConverterErr_OperationNotSupported);
}

void getPrimeInfo(const Converter& converter, void* data)
{
    const UInt32 lead = converter.lead;
    store(data, AudioConverterPrimeInfo{lead, lead});
}

void getChannelMap(const Converter& converter, void* data)
{
    const ChannelMap map = channelMapOf(converter, converter.settings);
    std::memcpy(data, map.data(), map.size() * sizeof map[0]);
}

OSStatus setChannelMap(Converter& converter, const void* data)
{
    Settings settings = converter.settings;
    settings.map =
        pcm::channelMapFrom(data, converter.destination.mChannelsPerFrame * UInt32{sizeof(SInt32)});
    return settings.map ? apply(converter, std::move(settings)) : paramErr;
}

template <const AudioStreamBasicDescription Converter::*format>
void getFormat(const Converter& converter, void* data)
{
    store(data, converter.*format);
}

struct Property {
    AudioConverterPropertyID id;
    UInt32 size; ///< size in bytes; 0: one SInt32 for each destination channel
    void (*get)(const Converter&, void* data);
    OSStatus (*set)(Converter&, const void* data); ///< setter; null for a read-only property
};

constexpr auto complexity = &pcm::ConversionQuality::complexity;
constexpr auto quality = &pcm::ConversionQuality::quality;
constexpr UInt32 formatSize = sizeof(AudioStreamBasicDescription);

// clang-format off
const Property properties[] = {
    // property                                      bytes                            get                                set
    {kAudioConverterSampleRateConverterComplexity,   sizeof(UInt32),                  getQuality<complexity>,            setComplexity},
    {kAudioConverterSampleRateConverterQuality,      sizeof(UInt32),                  getQuality<quality>,               setQuality},
    {kAudioConverterPrimeMethod,                     sizeof(UInt32),                  getPrimeMethod,                    setPrimeMethod},
    {kAudioConverterPrimeInfo,                       sizeof(AudioConverterPrimeInfo), getPrimeInfo,                      nullptr},
    {kAudioConverterChannelMap,                      0,                               getChannelMap,                     setChannelMap},
    {kAudioConverterCurrentInputStreamDescription,   formatSize,                      getFormat<&Converter::source>,      nullptr},
    {kAudioConverterCurrentOutputStreamDescription,  formatSize,                      getFormat<&Converter::destination>, nullptr},
};
// clang-format on

const Property* find(AudioConverterPropertyID id)
{
    const auto* found = std::find_if(std::begin(properties), std::end(properties),
                                     [&](const Property& row) { return row.id == id; });
    return found == std::end(properties) ? nullptr : found;
}

UInt32 sizeOf(const Converter& converter, const Property& row)
{
    return row.size ? row.size : converter.destination.mChannelsPerFrame * UInt32{sizeof(SInt32)};
}

} // namespace

OSStatus prepare(Converter& converter)
{
    const AudioStreamBasicDescription &from = converter.source, &to = converter.destination;
    if (from.mFormatID != kAudioFormatLinearPCM || to.mFormatID != kAudioFormatLinearPCM)
        return kAudioConverterErr_FormatNotSupported;
    if (!isRate(from.mSampleRate)) return kAudioConverterErr_InputSampleRateOutOfRange;
    if (!isRate(to.mSampleRate)) return kAudioConverterErr_OutputSampleRateOutOfRange;
    if (!pcm::isLinearPCM(from) || !pcm::isLinearPCM(to)) return kAudioConverterErr_FormatNotSupported;
    if (!pcm::FixedRateConverter::accepts(from.mSampleRate, to.mSampleRate))
        return kAudioConverterErr_OutputSampleRateOutOfRange;
    converter.conversion = make(converter, converter.settings);
    // Too many channels for a rate conversion.
    if (!converter.conversion) return kAudioConverterErr_FormatNotSupported;
    converter.lead = converter.conversion->lead();
    converter.inputList.prepare(pcm::buffersOf(from));
    converter.input.list = &converter.inputList.list();
    return noErr;
}

OSStatus renew(Converter& converter)
{
    if (converter.conversion->convertsRate()) return apply(converter, converter.settings);
    reset(converter);
    return noErr;
}

OSStatus getPropertyInfo(const Converter& converter, AudioConverterPropertyID id, UInt32* size,
                         Boolean* isWritable)
{
    const Property* row = find(id);
    if (!row) return kAudioConverterErr_PropertyNotSupported;
    if (size) *size = sizeOf(converter, *row);
    if (isWritable) *isWritable = row->set != nullptr;
    return noErr;
}

OSStatus getProperty(const Converter& converter, AudioConverterPropertyID id, UInt32& size, void* data)
{
    const Property* row = find(id);
    if (!row) return kAudioConverterErr_PropertyNotSupported;
    const UInt32 needed = sizeOf(converter, *row);
    if (size < needed) return kAudioConverterErr_BadPropertySizeError;
    row->get(converter, data);
    size = needed;
    return noErr;
}

OSStatus setProperty(Converter& converter, AudioConverterPropertyID id, UInt32 size, const void* data)
{
    const Property* row = find(id);
    if (!row) return kAudioConverterErr_PropertyNotSupported;
    if (!row->set) return kAudioConverterErr_OperationNotSupported;
    if (size != sizeOf(converter, *row)) return kAudioConverterErr_BadPropertySizeError;
    return row->set(converter, data);
}

} // namespace kvxplatform::audioconverter
