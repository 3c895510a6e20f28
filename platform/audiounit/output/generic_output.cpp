// The generic output unit: an output unit without a device. Whoever renders its output pulls the client's
// input, in any PCM format and rate on either side. Started, it waits to be pulled.
#include "platform/audiounit/converter/slice_conversion.h"
#include "platform/audiounit/output/output_units.h"
#include "platform/audiounit/property.h"
#include "platform/pcm/linear_pcm.h"

#include <numeric>

namespace kvxplatform::audiounit {
namespace {

struct GenericOutput {
    std::atomic<bool> isRunning{false};
    SliceConversion conversion;
};

OSStatus openUnit(Unit& unit)
{
    unit.state = new GenericOutput;
    return noErr;
}

void destroy(void* state) { delete static_cast<GenericOutput*>(state); }

OSStatus initializeUnit(Unit& unit)
{
    // As to a device, channel n goes to channel n.
    pcm::Routing straight(unit.output(0).format.mChannelsPerFrame);
    std::iota(straight.begin(), straight.end(), 0);
    return stateOf<GenericOutput>(unit).conversion.prepare(unit, straight, SliceConversion::Quality::normal);
}

void uninitializeUnit(Unit& unit) { stateOf<GenericOutput>(unit).conversion.release(unit); }

void resetUnit(Unit& unit) { stateOf<GenericOutput>(unit).conversion.reset(); }

bool takesFormat(const Unit&, AudioUnitScope, AudioUnitElement, const AudioStreamBasicDescription& format)
{
    return pcm::isLinearPCM(format);
}

OSStatus renderSlice(Unit& unit, Slice& slice)
{
    return stateOf<GenericOutput>(unit).conversion.render(unit, slice);
}

OSStatus setRunning(Unit& unit, bool isRunning)
{
    stateOf<GenericOutput>(unit).isRunning = isRunning;
    return noErr;
}

OSStatus startUnit(Unit& unit) { return setRunning(unit, true); }
OSStatus stopUnit(Unit& unit) { return setRunning(unit, false); }

OSStatus getIsRunning(Unit& unit, Place, void* data, UInt32&)
{
    return give(data, UInt32{stateOf<GenericOutput>(unit).isRunning});
}

OSStatus getChannelCounts(Unit&, Place, void* data, UInt32&) { return give(data, AUChannelInfo{-1, -2}); }

// clang-format off
const Property properties[] = {
    // property                                scopes    element     bytes                  access             settable          get               set      size of
    {kAudioUnitProperty_SupportedNumChannels,  inGlobal, anyElement, sizeof(AUChannelInfo), Access::readOnly, Settable::always, getChannelCounts, nullptr, nullptr},
    {kAudioOutputUnitProperty_IsRunning,       inGlobal, anyElement, sizeof(UInt32),        Access::readOnly, Settable::always, getIsRunning,     nullptr, nullptr},
};
// clang-format on

constexpr UnitKind genericKind()
{
    UnitKind kind;
    kind.type = kAudioUnitType_Output;
    kind.subType = kAudioUnitSubType_GenericOutput;
    kind.name = "Generic Output";
    kind.properties = properties;
    kind.takesFormat = takesFormat;
    kind.open = openUnit;
    kind.destroy = destroy;
    kind.initialize = initializeUnit;
    kind.uninitialize = uninitializeUnit;
    kind.reset = resetUnit;
    kind.render = renderSlice;
    kind.start = startUnit;
    kind.stop = stopUnit;
    return kind;
}

} // namespace

const UnitKind genericOutput = genericKind();

} // namespace kvxplatform::audiounit
