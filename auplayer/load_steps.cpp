// The steps of a load, in order, each with its failure.
#include "auplayer/loading.h"
#include "auplayer/owned_platform_object.h"
#include "auplayer/render.h"
#include "plugin/shared_word.h"
#include "plugin/truncate.h"
#include "plugin/weak_symbols.h"
#include "plugin/zeroed.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace auplayer {

namespace {

// Newer than the oldest headers.
constexpr OSType newTimePitchSubType = 'nutp';

constexpr UInt32 everyBandOfThirtyOne = 1;           // the index of the equaliser's larger set of bands
constexpr HostInteger sliceLimitWorthSetting = 1157; // what the units take as they come is 1156
constexpr UInt32 bestQuality = 127;

/// The units, in the order in which they become nodes.
enum NodeIndex {
    outputNode,
    varispeedNode,
    timePitchNode,
    equalizerNode,
    mixerNode,
    converterNode,
    nodeCount
};

/// A load under way. Its end, wherever that is, closes the file and frees samples that were not read.
struct Load {
    explicit Load(LoadRequest& r) : request(r), player(*r.player) {}
    ~Load() { closeFile(); }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    bool succeeded(OSStatus status) const { return keepStatus(player, status); }

    void closeFile()
    {
        if (file) giveBack(ExtAudioFileDispose, std::exchange(file, nullptr));
    }

    LoadRequest& request;
    AUPlayerData& player;
    ExtAudioFileRef file = nullptr;
    CAStreamBasicDescription fileFormat = {};
    UInt64 frames = 0;            ///< of the file, at its own rate
    Zeroed<float> samples;        ///< until they have been read
    AUNode nodes[nodeCount] = {}; ///< by NodeIndex
};

// ---- the file ----

bool openFile(Load& load)
{
    ExtAudioFileRef file = nullptr;
    if (!load.succeeded(ExtAudioFileOpenURL(load.request.url, &file))) return false;
    load.file = file;
    return file != nullptr;
}

bool readFileFormat(Load& load)
{
    UInt32 size = sizeof(AudioStreamBasicDescription);
    AudioStreamBasicDescription* const format = &load.fileFormat;
    return load.succeeded(
        ExtAudioFileGetProperty(load.file, kExtAudioFileProperty_FileDataFormat, &size, format));
}

/// 32-bit float, `bytesPerFrame` in each buffer.
AudioStreamBasicDescription floatFormat(double sampleRate, UInt32 flags, UInt32 channels,
                                        UInt32 bytesPerFrame)
{
    return {sampleRate, kAudioFormatLinearPCM, flags, bytesPerFrame, 1, bytesPerFrame, channels, 32, 0};
}

bool chooseFormats(Load& load)
{
    const double rate = load.fileFormat.mSampleRate;
    const auto inputChannels = static_cast<UInt32>(load.request.inputChannels);
    const auto outputChannels = static_cast<UInt32>(load.request.outputChannels);
    constexpr UInt32 sampleBytes = sizeof(float);
    static_cast<AudioStreamBasicDescription&>(*load.player.clientFormat) =
        floatFormat(rate, kAudioFormatFlagsNativeFloatPacked, inputChannels, sampleBytes * inputChannels);
    static_cast<AudioStreamBasicDescription&>(*load.player.outputFormat) =
        floatFormat(rate, kAudioFormatFlagsNativeFloatPacked | kAudioFormatFlagIsNonInterleaved,
                    outputChannels, sampleBytes);
    storeRelaxed(load.player.position, UInt32{0});
    storeRelaxed(load.player.endFrame, UInt32{0});
    return true;
}

bool readLength(Load& load)
{
    SInt64 length = 0;
    UInt32 size = sizeof length;
    if (!load.succeeded(
            ExtAudioFileGetProperty(load.file, kExtAudioFileProperty_FileLengthFrames, &size, &length)))
        return false;
    const double ratio = load.player.clientFormat->mSampleRate / load.fileFormat.mSampleRate;
    load.frames = static_cast<UInt64>(truncateTo64(static_cast<double>(length) * ratio));
    return true;
}

bool setClientFormat(Load& load)
{
    const AudioStreamBasicDescription* const format = load.player.clientFormat;
    return load.succeeded(
        ExtAudioFileSetProperty(load.file, kExtAudioFileProperty_ClientDataFormat, sizeof *format, format));
}

/// Where there are no frames, or no channels, there are no samples, and no memory is needed.
bool allocateSamples(Load& load)
{
    LoadedAudio& audio = *load.player.loadedAudio;
    const UInt64 channels = load.player.clientFormat->mChannelsPerFrame;
    audio.frameCount = static_cast<UInt32>(load.frames);
    audio.format = *load.player.clientFormat;
    audio.byteSize = static_cast<UInt32>(sizeof(float) * channels * load.frames);
    if (load.frames == 0 || channels == 0) return true;
    if (channels <= static_cast<UInt64>(largestAllocation) / load.frames)
        load.samples = allocateZeroed<float>(static_cast<std::int64_t>(channels * load.frames));
    if (load.samples) return true;
    load.request.isOutOfMemory = true;
    return false;
}

bool describeData(Load& load)
{
    AUPlayerData& player = load.player;
    const CAStreamBasicDescription& format = *player.clientFormat;
    const auto keep = [](HostBoolean& field, bool value) { storeRelaxed(field, HostBoolean{value}); };
    const auto count = [](HostInteger& field, UInt32 value) {
        storeRelaxed(field, static_cast<HostInteger>(value));
    };
    keep(player.dataIsPCM, format.isPCM());
    keep(player.dataIsInterleaved, format.isInterleaved());
    keep(player.dataIsFloat, format.isFloat());
    keep(player.dataIsNativeEndian, format.isNativeEndian());
    keep(player.dataIsSignedInteger, format.isSignedInteger());
    count(player.dataNumberInterleavedChannels, format.numberInterleavedChannels());
    count(player.dataNumberChannelStreams, format.numberChannelStreams());
    count(player.dataNumberChannels, format.numberChannels());
    count(player.dataSampleWordSize, format.sampleWordSize());
    load.request.hasFormats = true;
    return true;
}

/// All of it in one read, and only then for others to see. Its status goes nowhere: the one before it, a
/// success, stays.
bool readSamples(Load& load)
{
    LoadedAudio& audio = *load.player.loadedAudio;
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {load.player.clientFormat->mChannelsPerFrame, audio.byteSize, load.samples.get()};
    auto frames = static_cast<UInt32>(load.frames);
    if (ExtAudioFileRead(load.file, &frames, &list) != noErr) return false;
    storeReleased(audio.samples, load.samples.release());
    audio.frameCount = std::min(frames, static_cast<UInt32>(load.frames));
    storeRelaxed(load.player.endFrame, audio.frameCount);
    storeRelaxed(load.player.loopIn, unset);
    storeRelaxed(load.player.loopOut, unset);
    storeRelaxed(load.player.isLooping, HostBoolean{false});
    return true;
}

/// The handle that is asked for the duration belongs to the file, and is closed all the same, before it.
bool readDuration(Load& load)
{
    AudioFileID handle = nullptr;
    UInt32 size = sizeof handle;
    if (!load.succeeded(ExtAudioFileGetProperty(load.file, kExtAudioFileProperty_AudioFile, &size, &handle)))
        return false;
    double seconds = 0;
    size = sizeof seconds;
    const bool isKnown =
        load.succeeded(AudioFileGetProperty(handle, kAudioFilePropertyEstimatedDuration, &size, &seconds));
    if (isKnown) {
        storeRelaxed(load.player.trackLength, seconds);
        storeRelaxed(load.player.sampleRate, load.fileFormat.mSampleRate);
    }
    giveBack(AudioFileClose, handle);
    load.closeFile();
    return isKnown;
}

// ---- the graph ----

/// What a call that fails leaves in its place is not ours.
bool makeGraph(Load& load)
{
    AUGraph graph = nullptr;
    if (!load.succeeded(NewAUGraph(&graph))) return false;
    storeReleased(load.player.graph, graph);
    return true;
}

OSType outputSubType(HostInteger choice)
{
    switch (choice) {
    case 1:
        return kAudioUnitSubType_GenericOutput;
    case 3:
        return kAudioUnitSubType_DefaultOutput;
    case 4:
        return kAudioUnitSubType_SystemOutput;
    default:
        return kAudioUnitSubType_HALOutput;
    }
}

bool addNodes(Load& load)
{
    const OSType timePitch =
        CGPathCreateCopyByTransformingPath ? newTimePitchSubType : OSType{kAudioUnitSubType_TimePitch};
    const struct {
        OSType type, subType;
    } units[] = {
        {kAudioUnitType_Output, outputSubType(loadRelaxed(load.player.outputUnit))},
        {kAudioUnitType_FormatConverter, kAudioUnitSubType_Varispeed},
        {kAudioUnitType_FormatConverter, timePitch},
        {kAudioUnitType_Effect, kAudioUnitSubType_GraphicEQ},
        {kAudioUnitType_Mixer, kAudioUnitSubType_MultiChannelMixer},
        {kAudioUnitType_FormatConverter, kAudioUnitSubType_AUConverter},
    };
    static_assert(std::size(units) == nodeCount);
    for (std::size_t i = 0; i < std::size(units); ++i) {
        const AudioComponentDescription description = {units[i].type, units[i].subType,
                                                       kAudioUnitManufacturer_Apple, 0, 0};
        if (!load.succeeded(AUGraphAddNode(load.player.graph, &description, &load.nodes[i]))) return false;
    }
    return true;
}

bool connectNodes(Load& load)
{
    static const NodeIndex path[] = {converterNode, mixerNode,     equalizerNode,
                                     timePitchNode, varispeedNode, outputNode};
    for (std::size_t i = 1; i < std::size(path); ++i)
        if (!load.succeeded(AUGraphConnectNodeInput(load.player.graph, load.nodes[path[i - 1]], 0,
                                                    load.nodes[path[i]], 0)))
            return false;
    return true;
}

bool openGraph(Load& load)
{
    AUPlayerData& player = load.player;
    player.outputNode = load.nodes[outputNode];
    player.timePitchNode = load.nodes[timePitchNode];
    player.varispeedNode = load.nodes[varispeedNode];
    player.equalizerNode = load.nodes[equalizerNode];
    player.mixerNode = load.nodes[mixerNode];
    player.converterNode = load.nodes[converterNode];
    return load.succeeded(AUGraphOpen(player.graph));
}

bool fetchUnits(Load& load)
{
    static const struct {
        AUNode AUPlayerData::*node;
        AudioUnit AUPlayerData::*unit;
    } units[] = {
        {&AUPlayerData::outputNode, &AUPlayerData::output},
        {&AUPlayerData::converterNode, &AUPlayerData::converter},
        {&AUPlayerData::mixerNode, &AUPlayerData::mixer},
        {&AUPlayerData::timePitchNode, &AUPlayerData::timePitch},
        {&AUPlayerData::varispeedNode, &AUPlayerData::varispeed},
        {&AUPlayerData::equalizerNode, &AUPlayerData::equalizer},
    };
    for (const auto& row : units) {
        AudioUnit unit = nullptr;
        if (!load.succeeded(AUGraphNodeInfo(load.player.graph, load.player.*row.node, nullptr, &unit)))
            return false;
        storeReleased(load.player.*row.unit, unit);
    }
    return true;
}

// ---- the units ----

bool set(Load& load, AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope, UInt32 value)
{
    return load.succeeded(AudioUnitSetProperty(unit, property, scope, 0, &value, sizeof value));
}

bool setMixer(Load& load)
{
    return set(load, load.player.mixer, kAudioUnitProperty_ElementCount, kAudioUnitScope_Input, 1) &&
           set(load, load.player.mixer, kAudioUnitProperty_MeteringMode, kAudioUnitScope_Input, 1);
}

/// The rate unit that is not wanted is bypassed. A choice that names neither bypasses neither.
bool bypassOtherRateUnit(Load& load)
{
    const auto bypass = [&load](AudioUnit unit) {
        return set(load, unit, kAudioUnitProperty_BypassEffect, kAudioUnitScope_Global, 1);
    };
    switch (static_cast<RateUnit>(loadRelaxed(load.player.timePitchUnit))) {
    case RateUnit::varispeed:
        return bypass(load.player.timePitch);
    case RateUnit::byDefault:
    case RateUnit::timePitch:
        return bypass(load.player.varispeed);
    default:
        return true;
    }
}

bool giveCallback(Load& load)
{
    const AURenderCallbackStruct callback = {renderInput, &load.player};
    return load.succeeded(
        AUGraphSetNodeInputCallback(load.player.graph, load.player.converterNode, 0, &callback));
}

bool setFormats(Load& load)
{
    const AUPlayerData& player = load.player;
    const auto setFormat = [&load](AudioUnit unit, AudioUnitScope scope,
                                   const AudioStreamBasicDescription* format) {
        return load.succeeded(
            AudioUnitSetProperty(unit, kAudioUnitProperty_StreamFormat, scope, 0, format, sizeof *format));
    };
    if (!setFormat(player.converter, kAudioUnitScope_Input, player.clientFormat)) return false;
    for (AudioUnit unit :
         {player.converter, player.mixer, player.equalizer, player.timePitch, player.varispeed})
        if (!setFormat(unit, kAudioUnitScope_Output, player.outputFormat)) return false;
    return true;
}

/// A unit that refuses a limit keeps its own, and pulls more often.
bool setSliceLimit(Load& load)
{
    const AUPlayerData& player = load.player;
    const HostInteger wanted = loadRelaxed(player.maximumFramesPerSlice);
    if (wanted < sliceLimitWorthSetting) return true;
    const auto limit = static_cast<UInt32>(wanted);
    for (AudioUnit unit :
         {player.timePitch, player.equalizer, player.mixer, player.converter, player.varispeed})
        AudioUnitSetProperty(unit, kAudioUnitProperty_MaximumFramesPerSlice, kAudioUnitScope_Global, 0,
                             &limit, sizeof limit);
    return true;
}

bool chooseBands(Load& load)
{
    return load.succeeded(AudioUnitSetParameter(load.player.equalizer, kGraphicEQParam_NumberOfBands,
                                                kAudioUnitScope_Global, 0, everyBandOfThirtyOne, 0));
}

bool initializeGraph(Load& load) { return load.succeeded(AUGraphInitialize(load.player.graph)); }

bool setQuality(Load& load)
{
    for (AudioUnit unit : {load.player.timePitch, load.player.varispeed})
        if (!set(load, unit, kAudioUnitProperty_RenderQuality, kAudioUnitScope_Global, bestQuality))
            return false;
    return true;
}

bool (*const steps[])(Load&) = {
    openFile,      readFileFormat, chooseFormats,   readLength,          setClientFormat, allocateSamples,
    describeData,  readSamples,    readDuration,    makeGraph,           addNodes,        connectNodes,
    openGraph,     fetchUnits,     setMixer,        bypassOtherRateUnit, giveCallback,    setFormats,
    setSliceLimit, chooseBands,    initializeGraph, setQuality,
};

} // namespace

void LoadFileInternal(const void* work)
{
    LoadRequest& request = *static_cast<LoadRequest*>(const_cast<void*>(work));
    const AUPlayerData& player = *request.player;
    if (!player.loadedAudio || !player.clientFormat || !player.outputFormat) {
        request.isOutOfMemory = true; // since the object was made
        return;
    }
    try {
        Load load(request);
        request.result =
            std::all_of(std::begin(steps), std::end(steps), [&load](auto* step) { return step(load); });
    } catch (...) { // the platform's; this thread has nobody else to catch it
        request.result = false;
    }
}

} // namespace auplayer
