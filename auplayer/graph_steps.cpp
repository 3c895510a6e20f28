// Steps of a load: the graph around it.
#include "auplayer/load_steps.h"

#include "auplayer/render.h"
#include "plugin/weak_symbols.h"

#include <iterator>

namespace auplayer::load_steps {

namespace {

// Newer than the oldest headers.
constexpr OSType newTimePitchSubType = 'nutp';

constexpr UInt32 everyBandOfThirtyOne = 1;           // the index of the equaliser's larger set of bands
constexpr HostInteger sliceLimitWorthSetting = 1157; // what the units take as they come is 1156
constexpr UInt32 bestQuality = 127;

// Which of its kind a unit is.
template <OSType subType>
OSType always(const AUPlayerData&)
{
    return subType;
}

OSType outputSubType(const AUPlayerData& player)
{
    switch (static_cast<OutputUnit>(loadRelaxed(player.outputUnit))) {
    case OutputUnit::generic:
        return kAudioUnitSubType_GenericOutput;
    case OutputUnit::defaultDevice:
        return kAudioUnitSubType_DefaultOutput;
    case OutputUnit::systemDevice:
        return kAudioUnitSubType_SystemOutput;
    case OutputUnit::byDefault:
    case OutputUnit::hal:
    default:
        return kAudioUnitSubType_HALOutput;
    }
}

OSType timePitchSubType(const AUPlayerData&)
{
    return CGPathCreateCopyByTransformingPath ? newTimePitchSubType : OSType{kAudioUnitSubType_TimePitch};
}

/// A unit, and where the record keeps its node and itself.
struct Unit {
    AUNode AUPlayerData::*node;
    AudioUnit AUPlayerData::*unit;
    OSType type;
    OSType (*subType)(const AUPlayerData&);
};

// clang-format off
constexpr Unit units[] = { // by UnitIndex
    // node                         unit                      type                             subtype
    {&AUPlayerData::outputNode,    &AUPlayerData::output,    kAudioUnitType_Output,          outputSubType},
    {&AUPlayerData::varispeedNode, &AUPlayerData::varispeed, kAudioUnitType_FormatConverter, always<kAudioUnitSubType_Varispeed>},
    {&AUPlayerData::timePitchNode, &AUPlayerData::timePitch, kAudioUnitType_FormatConverter, timePitchSubType},
    {&AUPlayerData::equalizerNode, &AUPlayerData::equalizer, kAudioUnitType_Effect,          always<kAudioUnitSubType_GraphicEQ>},
    {&AUPlayerData::mixerNode,     &AUPlayerData::mixer,     kAudioUnitType_Mixer,           always<kAudioUnitSubType_MultiChannelMixer>},
    {&AUPlayerData::converterNode, &AUPlayerData::converter, kAudioUnitType_FormatConverter, always<kAudioUnitSubType_AUConverter>},
};
// clang-format on
static_assert(std::size(units) == unitCount);

// Graph and units are read each time: host programs may write them, also while a file is loaded.

AUGraph graphOf(const Load& load) { return loadRelaxed(load.player.graph); }

AudioUnit unitOf(const Load& load, UnitIndex index) { return loadRelaxed(load.player.*units[index].unit); }

bool set(Load& load, UnitIndex unit, AudioUnitPropertyID property, AudioUnitScope scope, UInt32 value)
{
    return load.succeeded(AudioUnitSetProperty(unitOf(load, unit), property, scope, 0, &value, sizeof value));
}

bool setFormat(Load& load, UnitIndex unit, AudioUnitScope scope, const AudioStreamBasicDescription* format)
{
    return load.succeeded(AudioUnitSetProperty(unitOf(load, unit), kAudioUnitProperty_StreamFormat, scope, 0,
                                               format, sizeof *format));
}

} // namespace

/// What a call that fails leaves in its place is not ours.
bool makeGraph(Load& load)
{
    AUGraph graph = nullptr;
    if (!load.succeeded(NewAUGraph(&graph))) return false;
    storeReleased(load.player.graph, graph);
    return true;
}

bool addNodes(Load& load)
{
    for (std::size_t i = 0; i < unitCount; ++i) {
        const AudioComponentDescription description = {units[i].type, units[i].subType(load.player),
                                                       kAudioUnitManufacturer_Apple, 0, 0};
        if (!load.succeeded(AUGraphAddNode(graphOf(load), &description, &load.nodes[i]))) return false;
    }
    return true;
}

bool connectNodes(Load& load)
{
    static constexpr UnitIndex path[] = {converter, mixer, equalizer, timePitch, varispeed, output};
    for (std::size_t i = 1; i < std::size(path); ++i)
        if (!load.succeeded(
                AUGraphConnectNodeInput(graphOf(load), load.nodes[path[i - 1]], 0, load.nodes[path[i]], 0)))
            return false;
    return true;
}

bool openGraph(Load& load)
{
    for (std::size_t i = 0; i < unitCount; ++i) load.player.*units[i].node = load.nodes[i];
    return load.succeeded(AUGraphOpen(graphOf(load)));
}

bool fetchUnits(Load& load)
{
    for (const UnitIndex index : {output, converter, mixer, timePitch, varispeed, equalizer}) {
        AudioUnit unit = nullptr;
        if (!load.succeeded(AUGraphNodeInfo(graphOf(load), load.player.*units[index].node, nullptr, &unit)))
            return false;
        storeReleased(load.player.*units[index].unit, unit);
    }
    return true;
}

bool setMixer(Load& load)
{
    return set(load, mixer, kAudioUnitProperty_ElementCount, kAudioUnitScope_Input, 1) &&
           set(load, mixer, kAudioUnitProperty_MeteringMode, kAudioUnitScope_Input, 1);
}

/// The rate unit that is not wanted is bypassed. A choice that names neither bypasses neither.
bool bypassOtherRateUnit(Load& load)
{
    const auto bypass = [&load](UnitIndex unit) {
        return set(load, unit, kAudioUnitProperty_BypassEffect, kAudioUnitScope_Global, 1);
    };
    switch (static_cast<RateUnit>(loadRelaxed(load.player.timePitchUnit))) {
    case RateUnit::varispeed:
        return bypass(timePitch);
    case RateUnit::byDefault:
    case RateUnit::timePitch:
        return bypass(varispeed);
    default:
        return true;
    }
}

bool giveCallback(Load& load)
{
    const AURenderCallbackStruct callback = {renderInput, &load.player};
    return load.succeeded(
        AUGraphSetNodeInputCallback(graphOf(load), load.player.converterNode, 0, &callback));
}

bool setFormats(Load& load)
{
    if (!setFormat(load, converter, kAudioUnitScope_Input, load.player.clientFormat)) return false;
    for (const UnitIndex unit : {converter, mixer, equalizer, timePitch, varispeed})
        if (!setFormat(load, unit, kAudioUnitScope_Output, load.player.outputFormat)) return false;
    return true;
}

/// A unit that refuses a limit keeps its own, and pulls more often.
bool setSliceLimit(Load& load)
{
    const HostInteger wanted = loadRelaxed(load.player.maximumFramesPerSlice);
    if (wanted < sliceLimitWorthSetting) return true;
    const auto limit = static_cast<UInt32>(wanted);
    for (const UnitIndex unit : {timePitch, equalizer, mixer, converter, varispeed})
        AudioUnitSetProperty(unitOf(load, unit), kAudioUnitProperty_MaximumFramesPerSlice,
                             kAudioUnitScope_Global, 0, &limit, sizeof limit);
    return true;
}

bool chooseBands(Load& load)
{
    return load.succeeded(AudioUnitSetParameter(unitOf(load, equalizer), kGraphicEQParam_NumberOfBands,
                                                kAudioUnitScope_Global, 0, everyBandOfThirtyOne, 0));
}

bool initializeGraph(Load& load) { return load.succeeded(AUGraphInitialize(graphOf(load))); }

bool setQuality(Load& load)
{
    for (const UnitIndex unit : {timePitch, varispeed})
        if (!set(load, unit, kAudioUnitProperty_RenderQuality, kAudioUnitScope_Global, bestQuality))
            return false;
    return true;
}

} // namespace auplayer::load_steps
