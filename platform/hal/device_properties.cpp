// The properties of a device: its identity, its operation, and its streams.
#include "platform/hal/format_properties.h"
#include "platform/hal/formats.h"
#include "platform/hal/property_tables.h"

#include <algorithm>
#include <iterator>
#include <unistd.h>

namespace kvxplatform::hal {

namespace {

// ---- properties: identity ----

OSStatus getName(const Request& r, Bytes& value) { return putCFString(value, r.device->name); }
OSStatus getNameText(const Request& r, Bytes& value) { return putText(value, r.device->name); }
OSStatus getMaker(const Request& r, Bytes& value) { return putCFString(value, r.device->manufacturer); }
OSStatus getMakerText(const Request& r, Bytes& value) { return putText(value, r.device->manufacturer); }
OSStatus getUID(const Request& r, Bytes& value) { return putCFString(value, r.device->uid); }
OSStatus getModelUID(const Request& r, Bytes& value) { return putCFString(value, r.device->manufacturer); }
OSStatus getTransport(const Request& r, Bytes& value) { return put(value, r.device->transport); }
OSStatus getRelated(const Request& r, Bytes& value) { return putAll<AudioDeviceID>(value, {r.device->id}); }

std::string channelName(const Request& r)
{
    const bool isStereo = r.channels() == 2;
    if (isStereo) return r.element == 1 ? "Left" : "Right";
    return "Channel " + std::to_string(r.element);
}

std::string nameOfElement(const Request& r)
{
    switch (r.selector) {
    case kAudioDevicePropertyChannelNumberName:
    case kAudioDevicePropertyChannelNumberNameCFString:
        return std::to_string(r.element);
    case kAudioDevicePropertyChannelCategoryName:
    case kAudioDevicePropertyChannelCategoryNameCFString:
        return r.isInput ? "Input" : "Output";
    default:
        return channelName(r);
    }
}
OSStatus getElementName(const Request& r, Bytes& value) { return putCFString(value, nameOfElement(r)); }
OSStatus getElementText(const Request& r, Bytes& value) { return putText(value, nameOfElement(r)); }

std::vector<AudioStreamID> streamsOf(const Request& r)
{
    const AudioStreamID stream = r.isInput ? r.device->inputStream : r.device->outputStream;
    return stream ? std::vector<AudioStreamID>{stream} : std::vector<AudioStreamID>{};
}
OSStatus getStreams(const Request& r, Bytes& value) { return putAll(value, streamsOf(r)); }

OSStatus getOwned(const Request& r, Bytes& value)
{
    std::vector<AudioObjectID> streams;
    for (AudioObjectID stream : {r.device->outputStream, r.device->inputStream})
        if (stream) streams.push_back(stream);
    return putAll(value, ofClasses(r, kAudioStreamClassID, streams));
}

// A buffer list without sample data: one buffer if the side has channels, else no buffer.
OSStatus getStreamConfiguration(const Request& r, Bytes& value)
{
    AudioBufferList list = {};
    list.mNumberBuffers = r.channels() ? 1 : 0;
    list.mBuffers[0].mNumberChannels = r.channels();
    list.mBuffers[0].mDataByteSize =
        r.channels() * r.device->settings.sliceFrames * static_cast<UInt32>(sizeof(Float32));
    put(value, list);
    if (!list.mNumberBuffers) value.resize(offsetof(AudioBufferList, mBuffers));
    return noErr;
}

// ---- properties: operation ----

OSStatus getAlive(const Request& r, Bytes& value) { return put<UInt32>(value, r.device->isAlive); }
OSStatus getRunning(const Request& r, Bytes& value) { return put<UInt32>(value, r.device->isRunning()); }
OSStatus getCanBeDefault(const Request& r, Bytes& value) { return put<UInt32>(value, r.channels() > 0); }
OSStatus getLatency(const Request& r, Bytes& value) { return put(value, r.device->settings.latencyFrames); }
OSStatus getSlice(const Request& r, Bytes& value) { return put(value, r.device->settings.sliceFrames); }
OSStatus getRate(const Request& r, Bytes& value) { return put<Float64>(value, r.device->settings.rate); }
OSStatus getRates(const Request& r, Bytes& value) { return putAll(value, rateRanges(*r.device)); }
OSStatus getHogOwner(const Request& r, Bytes& value) { return put(value, r.device->hogOwner); }

OSStatus getSliceRange(const Request&, Bytes& value)
{
    return put(value, AudioValueRange{smallestSlice, largestSlice});
}

UInt32 bytesPerFrame(const Request& r) { return r.channels() * static_cast<UInt32>(sizeof(Float32)); }
OSStatus getSliceBytes(const Request& r, Bytes& value)
{
    return put<UInt32>(value, r.device->settings.sliceFrames * bytesPerFrame(r));
}
OSStatus getSliceBytesRange(const Request& r, Bytes& value)
{
    const double frame = bytesPerFrame(r);
    return put(value, AudioValueRange{smallestSlice * frame, largestSlice * frame});
}

OSStatus setSliceFrames(const Request& r, UInt32 frames)
{
    if (frames < smallestSlice || frames > largestSlice) return kAudioHardwareIllegalOperationError;
    r.device->settings.sliceFrames = frames;
    return noErr;
}
OSStatus setSlice(const Request& r, const Bytes& value, Consequences&)
{
    return setSliceFrames(r, as<UInt32>(value));
}
OSStatus setSliceBytes(const Request& r, const Bytes& value, Consequences&)
{
    const UInt32 frame = bytesPerFrame(r), bytes = as<UInt32>(value);
    if (bytes % frame) return kAudioHardwareIllegalOperationError;
    return setSliceFrames(r, bytes / frame);
}

OSStatus setRate(const Request& r, const Bytes& value, Consequences&)
{
    return changeRate(*r.device, as<Float64>(value));
}

// Take hog mode for this process, or release it if this process has it. The value that the caller sets is
// ignored.
OSStatus toggleHog(const Request& r, const Bytes&, Consequences& consequences)
{
    const auto self = static_cast<SInt32>(getpid());
    if (r.device->hogOwner != -1 && r.device->hogOwner != self) return kAudioDevicePermissionsError;
    r.device->hogOwner = r.device->hogOwner == self ? -1 : self;
    consequences.changed = {kAudioDevicePropertyHogMode};
    return noErr;
}

/// Call `use` with the flag that switches off one procedure's stream on the requested side. Returns false if
/// the device does not have the procedure.
template <class Use>
bool withStreamFlag(const Request& r, const AudioHardwareIOProcStreamUsage& usage, Use use)
{
    const auto id = reinterpret_cast<AudioDeviceIOProcID>(usage.mIOProc);
    return r.device->procs.with(id, Pick::oldest,
                                [&](IOProc& proc) { use(r.isInput ? proc.isInputOff : proc.isOutputOff); });
}

UInt32 streamCount(const Request& r) { return r.channels() ? 1 : 0; }

OSStatus getStreamUsage(const Request& r, Bytes& value)
{
    auto usage = as<AudioHardwareIOProcStreamUsage>(value);
    bool isOff = false;
    if (!withStreamFlag(r, usage, [&](std::atomic<bool>& flag) { isOff = flag; }))
        return kAudioHardwareIllegalOperationError;
    usage.mNumberStreams = streamCount(r);
    usage.mStreamIsOn[0] = usage.mNumberStreams && !isOff;
    return put(value, usage);
}

OSStatus setStreamUsage(const Request& r, const Bytes& value, Consequences& consequences)
{
    const auto usage = as<AudioHardwareIOProcStreamUsage>(value);
    if (usage.mNumberStreams != streamCount(r)) return kAudioHardwareIllegalOperationError;
    const bool isOff = usage.mNumberStreams && !usage.mStreamIsOn[0];
    bool wasOff = isOff;
    if (!withStreamFlag(r, usage, [&](std::atomic<bool>& flag) { wasOff = flag.exchange(isOff); }))
        return kAudioHardwareIllegalOperationError;
    if (isOff != wasOff) consequences.changed = {kAudioDevicePropertyIOProcStreamUsage};
    return noErr;
}

// ---- properties: streams ----

struct Pair {
    UInt32 left, right;
};
OSStatus getStereoPair(const Request& r, Bytes& value)
{
    return put(value, Pair{1, r.channels() > 1 ? UInt32{2} : UInt32{1}});
}

OSStatus getChannelLayout(const Request& r, Bytes& value)
{
    AudioChannelLayout layout = {};
    layout.mChannelLayoutTag = r.channels() == 1 ? UInt32{kAudioChannelLayoutTag_Mono}
                               : r.channels() == 2
                                   ? UInt32{kAudioChannelLayoutTag_Stereo}
                                   : UInt32{kAudioChannelLayoutTag_DiscreteInOrder} | r.channels();
    return put(value, layout);
}

constexpr auto zero = putConstant<UInt32, 0>;
constexpr auto one = putConstant<UInt32, 1>;

OSStatus getUsage(const Request&, Bytes& value) { return put<Float32>(value, 1.0f); }
OSStatus setUsage(const Request&, const Bytes&, Consequences&) { return noErr; }

constexpr Side any = Side::none, sided = Side::scope, present = Side::present;
constexpr Elements master = Elements::master, both = Elements::masterAndChannels,
                   channels = Elements::channels;
constexpr Extent single = Extent::one, many = Extent::many, whole = Extent::whole;
constexpr UInt32 word = sizeof(UInt32), reference = sizeof(CFStringRef), range = sizeof(AudioValueRange);
constexpr UInt32 format = sizeof(AudioStreamBasicDescription);

// clang-format off
constexpr Property rows[] = {
    // selector                                          side     elements  extent  size                   get                     set
    {kAudioObjectPropertyClass,                          any,     master,   single, word,                  putConstant<AudioClassID, kAudioDeviceClassID>,       nullptr},
    {kAudioObjectPropertyOwner,                          any,     master,   single, word,                  putConstant<AudioObjectID, kAudioObjectSystemObject>, nullptr},
    {kAudioObjectPropertyOwnedObjects,                   any,     master,   many,   word,                  getOwned,               nullptr},
    {kAudioDevicePropertyDeviceNameCFString,             any,     master,   single, reference,             getName,                nullptr},
    {kAudioDevicePropertyDeviceName,                     any,     master,   whole,  0,                     getNameText,            nullptr},
    {kAudioDevicePropertyDeviceManufacturerCFString,     any,     master,   single, reference,             getMaker,               nullptr},
    {kAudioDevicePropertyDeviceManufacturer,             any,     master,   whole,  0,                     getMakerText,           nullptr},
    {kAudioDevicePropertyDeviceUID,                      any,     master,   single, reference,             getUID,                 nullptr},
    {kAudioDevicePropertyModelUID,                       any,     master,   single, reference,             getModelUID,            nullptr},
    {kAudioDevicePropertyTransportType,                  any,     master,   single, word,                  getTransport,           nullptr},
    {kAudioDevicePropertyRelatedDevices,                 any,     master,   many,   word,                  getRelated,             nullptr},
    {kAudioDevicePropertyClockDomain,                    any,     master,   single, word,                  zero,                   nullptr},
    {kAudioDevicePropertyIsHidden,                       any,     master,   single, word,                  zero,                   nullptr},
    {kAudioDevicePropertyChannelName,                    sided,   channels, whole,  0,                     getElementText,         nullptr},
    {kAudioDevicePropertyChannelNameCFString,            sided,   channels, single, reference,             getElementName,         nullptr},
    {kAudioDevicePropertyChannelCategoryName,            sided,   channels, whole,  0,                     getElementText,         nullptr},
    {kAudioDevicePropertyChannelCategoryNameCFString,    sided,   channels, single, reference,             getElementName,         nullptr},
    {kAudioDevicePropertyChannelNumberName,              sided,   channels, whole,  0,                     getElementText,         nullptr},
    {kAudioDevicePropertyChannelNumberNameCFString,      sided,   channels, single, reference,             getElementName,         nullptr},

    {kAudioDevicePropertyDeviceIsAlive,                  any,     master,   single, word,                  getAlive,               nullptr},
    {kAudioDevicePropertyDeviceHasChanged,               any,     master,   single, word,                  zero,                   nullptr},
    {kAudioDevicePropertyDeviceIsRunning,                any,     master,   single, word,                  getRunning,             nullptr},
    {kAudioDevicePropertyDeviceIsRunningSomewhere,       any,     master,   single, word,                  getRunning,             nullptr},
    {kAudioDeviceProcessorOverload,                      any,     master,   single, word,                  zero,                   nullptr},
    {kAudioDevicePropertyDeviceCanBeDefaultDevice,       sided,   master,   single, word,                  getCanBeDefault,        nullptr},
    {kAudioDevicePropertyDeviceCanBeDefaultSystemDevice, sided,   master,   single, word,                  getCanBeDefault,        nullptr},
    {kAudioDevicePropertyHogMode,                        any,     master,   single, word,                  getHogOwner,            toggleHog},
    {kAudioDevicePropertyLatency,                        sided,   master,   single, word,                  getLatency,             nullptr},
    {kAudioDevicePropertySafetyOffset,                   sided,   master,   single, word,                  zero,                   nullptr},
    {kAudioDevicePropertyBufferFrameSize,                any,     master,   single, word,                  getSlice,               setSlice},
    {kAudioDevicePropertyBufferFrameSizeRange,           any,     master,   single, range,                 getSliceRange,          nullptr},
    {kAudioDevicePropertyBufferSize,                     present, master,   single, word,                  getSliceBytes,          setSliceBytes},
    {kAudioDevicePropertyBufferSizeRange,                present, master,   single, range,                 getSliceBytesRange,     nullptr},
    {kAudioDevicePropertySupportsMixing,                 any,     master,   single, word,                  one,                    nullptr},
    {kAudioDevicePropertyIOCycleUsage,                   any,     master,   single, sizeof(Float32),       getUsage,               setUsage},
    {kAudioDevicePropertyIOProcStreamUsage,              sided,   master,   single, sizeof(AudioHardwareIOProcStreamUsage), getStreamUsage, setStreamUsage},
    {kAudioDevicePropertyNominalSampleRate,              any,     master,   single, sizeof(Float64),       getRate,                setRate},
    {kAudioDevicePropertyActualSampleRate,               any,     master,   single, sizeof(Float64),       getRate,                nullptr},
    {kAudioDevicePropertyAvailableNominalSampleRates,    any,     master,   many,   range,                 getRates,               nullptr},

    {kAudioDevicePropertyStreams,                        sided,   master,   many,   word,                  getStreams,             nullptr},
    {kAudioDevicePropertyStreamConfiguration,            sided,   master,   whole,  0,                     getStreamConfiguration, nullptr},
    {kAudioDevicePropertyStreamFormat,                   present, both,     single, format,                getFormat,              setFormat},
    {kAudioDevicePropertyStreamFormats,                  present, both,     many,   format,                getFormats,             nullptr},
    {kAudioDevicePropertyStreamFormatSupported,          present, both,     single, format,                getFormatSupported,     nullptr},
    {kAudioDevicePropertyStreamFormatMatch,              present, both,     single, format,                getFormatMatch,         nullptr},
    {kAudioDevicePropertyPreferredChannelsForStereo,     present, master,   single, sizeof(Pair),          getStereoPair,          nullptr},
    {kAudioDevicePropertyPreferredChannelLayout,         present, master,   single, sizeof(AudioChannelLayout), getChannelLayout,  nullptr},
};
// clang-format on

} // namespace

PropertyTable deviceProperties() { return {rows, std::size(rows)}; }

} // namespace kvxplatform::hal
