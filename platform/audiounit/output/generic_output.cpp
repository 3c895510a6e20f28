#include "platform/audiounit/output/generic_output.h"

#include "platform/audiounit/common_properties.h"
#include "platform/audiounit/converter/slice_conversion.h"
#include "platform/pcm/channel_map.h"

namespace kvxplatform::audiounit {
namespace {

constexpr SliceConversion::Quality quality = SliceConversion::Quality::high;

struct GenericOutput {
    std::atomic<bool> isRunning{false};
    SliceConversion conversion;
};

pcm::ChannelMap channelMapOf(Unit& unit)
{
    return pcm::identityChannelMap(unit.output(0).format.mChannelsPerFrame);
}

OSStatus setRunning(Unit& unit, bool isRunning)
{
    stateOf<GenericOutput>(unit).isRunning = isRunning;
    return noErr;
}

OSStatus getTail(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, stateOf<GenericOutput>(unit).conversion.tail(unit, quality));
}

OSStatus getIsRunning(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, UInt32{stateOf<GenericOutput>(unit).isRunning});
}

} // namespace

// clang-format off
const Property genericOutputProperties[] = {
    // property                               scopes    element     bytes                  access            settable          get                  set      size of
    {kAudioUnitProperty_SupportedNumChannels, inGlobal, anyElement, sizeof(AUChannelInfo), Access::readOnly, Settable::always, getAnyChannelCounts, nullptr, nullptr},
    {kAudioUnitProperty_TailTime,             inGlobal, anyElement, sizeof(Float64),       Access::readOnly, Settable::always, getTail,             nullptr, nullptr},
    {kAudioOutputUnitProperty_IsRunning,      inGlobal, anyElement, sizeof(UInt32),        Access::readOnly, Settable::always, getIsRunning,        nullptr, nullptr},
};
// clang-format on

OSStatus openGenericOutput(Unit& unit)
{
    unit.state = new GenericOutput;
    return noErr;
}

void destroyGenericOutput(void* state) { delete static_cast<GenericOutput*>(state); }

OSStatus initializeGenericOutput(Unit& unit)
{
    return stateOf<GenericOutput>(unit).conversion.prepare(unit, channelMapOf(unit), quality);
}

void uninitializeGenericOutput(Unit& unit) { stateOf<GenericOutput>(unit).conversion.release(unit); }

OSStatus renewGenericOutput(Unit& unit)
{
    if (!convertsRate(unit)) return noErr;
    return stateOf<GenericOutput>(unit).conversion.replace(unit, channelMapOf(unit), quality);
}

void resetGenericOutput(Unit& unit) { stateOf<GenericOutput>(unit).conversion.reset(); }

OSStatus renderGenericOutput(Unit& unit, Slice& slice)
{
    return stateOf<GenericOutput>(unit).conversion.render(unit, slice);
}

OSStatus startGenericOutput(Unit& unit) { return setRunning(unit, true); }
OSStatus stopGenericOutput(Unit& unit) { return setRunning(unit, false); }

} // namespace kvxplatform::audiounit
