#include "auplayer/build_graph.h"

#include "auplayer/render.h"
#include "plugin/weak_symbols.h"

#include <iterator>

namespace auplayer {

namespace {

// Subtype of the newer time-pitch unit. The oldest supported headers lack this constant.
constexpr OSType newTimePitchSubType = 'nutp';

constexpr UInt32 thirtyOneBands = 1;             // parameter value that selects 31 bands in the equaliser
constexpr HostInteger smallestSliceLimit = 1157; // units accept slices of 1156 frames by default
constexpr UInt32 bestQuality = 127;

/// The units, in the order in which their nodes are added to the graph.
enum UnitIndex { output, varispeed, timePitch, equalizer, mixer, converter, unitCount };
using Nodes = AUNode[unitCount]; ///< one node per unit, indexed by UnitIndex

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

/// One unit of the graph: the record's fields for the node and the unit, and the component type and subtype.
struct Unit {
    AUNode AUPlayerData::*node;
    AudioUnit AUPlayerData::*unit;
    OSType type;
    OSType (*subType)(const AUPlayerData&);
};

// clang-format off
constexpr Unit units[] = { // indexed by UnitIndex
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

// The handles are read from the record at each use, because host programs may write them, even during a load.
AUGraph graphOf(const AUPlayerData& player) { return loadRelaxed(player.graph); }
AudioUnit unitOf(const AUPlayerData& player, UnitIndex index)
{
    return loadRelaxed(player.*units[index].unit);
}

bool set(AUPlayerData& player, UnitIndex unit, AudioUnitPropertyID property, AudioUnitScope scope,
         UInt32 value)
{
    return keepStatus(player,
                      AudioUnitSetProperty(unitOf(player, unit), property, scope, 0, &value, sizeof value));
}

bool setFormat(AUPlayerData& player, UnitIndex unit, AudioUnitScope scope,
               const AudioStreamBasicDescription* format)
{
    return keepStatus(player, AudioUnitSetProperty(unitOf(player, unit), kAudioUnitProperty_StreamFormat,
                                                   scope, 0, format, sizeof *format));
}

// A failed call may return an invalid graph, so the graph is stored only after success.
bool makeGraph(AUPlayerData& player)
{
    AUGraph graph = nullptr;
    if (!keepStatus(player, NewAUGraph(&graph))) return false;
    storeReleased(player.graph, graph);
    return true;
}

bool addNodes(AUPlayerData& player, Nodes& nodes)
{
    for (std::size_t i = 0; i < unitCount; ++i) {
        const AudioComponentDescription description = {units[i].type, units[i].subType(player),
                                                       kAudioUnitManufacturer_Apple, 0, 0};
        if (!keepStatus(player, AUGraphAddNode(graphOf(player), &description, &nodes[i]))) return false;
    }
    return true;
}

bool connectNodes(AUPlayerData& player, const Nodes& nodes)
{
    static constexpr UnitIndex path[] = {converter, mixer, equalizer, timePitch, varispeed, output};
    for (std::size_t i = 1; i < std::size(path); ++i)
        if (!keepStatus(player,
                        AUGraphConnectNodeInput(graphOf(player), nodes[path[i - 1]], 0, nodes[path[i]], 0)))
            return false;
    return true;
}

bool openGraph(AUPlayerData& player, const Nodes& nodes)
{
    for (std::size_t i = 0; i < unitCount; ++i) player.*units[i].node = nodes[i];
    return keepStatus(player, AUGraphOpen(graphOf(player)));
}

bool fetchUnits(AUPlayerData& player)
{
    for (const UnitIndex index : {output, converter, mixer, timePitch, varispeed, equalizer}) {
        AudioUnit unit = nullptr;
        if (!keepStatus(player, AUGraphNodeInfo(graphOf(player), player.*units[index].node, nullptr, &unit)))
            return false;
        storeReleased(player.*units[index].unit, unit);
    }
    return true;
}

bool setMixer(AUPlayerData& player)
{
    return set(player, mixer, kAudioUnitProperty_ElementCount, kAudioUnitScope_Input, 1) &&
           set(player, mixer, kAudioUnitProperty_MeteringMode, kAudioUnitScope_Input, 1);
}

/// Bypass the rate unit that timePitchUnit does not choose. For an unknown number, bypass neither rate unit.
bool bypassOtherRateUnit(AUPlayerData& player)
{
    const auto bypass = [&player](UnitIndex unit) {
        return set(player, unit, kAudioUnitProperty_BypassEffect, kAudioUnitScope_Global, 1);
    };
    switch (static_cast<RateUnit>(loadRelaxed(player.timePitchUnit))) {
    case RateUnit::varispeed:
        return bypass(timePitch);
    case RateUnit::byDefault:
    case RateUnit::timePitch:
        return bypass(varispeed);
    default:
        return true;
    }
}

bool setCallback(AUPlayerData& player)
{
    const AURenderCallbackStruct callback = {renderInput, &player};
    return keepStatus(player,
                      AUGraphSetNodeInputCallback(graphOf(player), player.converterNode, 0, &callback));
}

bool setFormats(AUPlayerData& player)
{
    if (!setFormat(player, converter, kAudioUnitScope_Input, player.clientFormat)) return false;
    for (const UnitIndex unit : {converter, mixer, equalizer, timePitch, varispeed})
        if (!setFormat(player, unit, kAudioUnitScope_Output, player.outputFormat)) return false;
    return true;
}

/// Raise the units' limit of frames per slice. A unit that refuses the new limit keeps its own limit and
/// pulls smaller slices more often.
void setSliceLimit(AUPlayerData& player)
{
    const HostInteger requested = loadRelaxed(player.maximumFramesPerSlice);
    if (requested < smallestSliceLimit) return;
    const auto limit = static_cast<UInt32>(requested);
    for (const UnitIndex unit : {timePitch, equalizer, mixer, converter, varispeed})
        AudioUnitSetProperty(unitOf(player, unit), kAudioUnitProperty_MaximumFramesPerSlice,
                             kAudioUnitScope_Global, 0, &limit, sizeof limit);
}

bool chooseBands(AUPlayerData& player)
{
    return keepStatus(player, AudioUnitSetParameter(unitOf(player, equalizer), kGraphicEQParam_NumberOfBands,
                                                    kAudioUnitScope_Global, 0, thirtyOneBands, 0));
}

bool initializeGraph(AUPlayerData& player) { return keepStatus(player, AUGraphInitialize(graphOf(player))); }

bool setQuality(AUPlayerData& player)
{
    for (const UnitIndex unit : {timePitch, varispeed})
        if (!set(player, unit, kAudioUnitProperty_RenderQuality, kAudioUnitScope_Global, bestQuality))
            return false;
    return true;
}

} // namespace

bool buildGraph(AUPlayerData& player)
{
    Nodes nodes = {};
    if (!makeGraph(player) || !addNodes(player, nodes) || !connectNodes(player, nodes)) return false;
    if (!openGraph(player, nodes) || !fetchUnits(player)) return false;
    if (!setMixer(player) || !bypassOtherRateUnit(player)) return false;
    if (!setCallback(player) || !setFormats(player)) return false;
    setSliceLimit(player);
    return chooseBands(player) && initializeGraph(player) && setQuality(player);
}

} // namespace auplayer
