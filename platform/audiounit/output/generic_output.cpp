// The generic output unit: an output unit without a device. Whoever renders its output pulls the client's
// input, in any PCM format and rate on either side. Started, it waits to be pulled.
#include "platform/audiounit/linear_pcm.h"
#include "platform/audiounit/output/channel_map.h"
#include "platform/audiounit/output/client_side.h"
#include "platform/audiounit/output/output_units.h"
#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {
namespace {

struct GenericOutput {
    std::atomic<bool> isRunning{false};
    ClientSide client;
    std::vector<Float32> placed; // a piece in the output's channels
};

OSStatus openUnit(Unit& unit)
{
    unit.state = new GenericOutput;
    return noErr;
}

void destroy(void* state) { delete static_cast<GenericOutput*>(state); }

OSStatus initializeUnit(Unit& unit)
{
    auto& state = stateOf<GenericOutput>(unit);
    const AudioStreamBasicDescription& out = unit.output(0).format;
    if (const OSStatus status = state.client.prepare(unit, out.mSampleRate)) return status;
    state.placed.assign(std::size_t{unit.sliceLimit} * out.mChannelsPerFrame, 0);
    state.client.setSampleTime(0);
    return noErr;
}

void resetUnit(Unit& unit) { stateOf<GenericOutput>(unit).client.reset(); }

bool takesFormat(const Unit&, AudioUnitScope, AudioUnitElement, const AudioStreamBasicDescription& format)
{
    return isLinearPCM(format);
}

OSStatus renderSlice(Unit& unit, Slice& slice)
{
    auto& state = stateOf<GenericOutput>(unit);
    const AudioStreamBasicDescription& out = unit.output(0).format;
    // Frame for frame at the same rate: the client hears the caller's time. At another, time runs by what it
    // gave.
    if (!state.client.convertsRate()) state.client.setSampleTime(slice.time.mSampleTime);

    const ClientSide::Request request{unit, slice.flags, slice.time, false};
    OSStatus failure = noErr;
    for (UInt32 done = 0; done < slice.frames;) {
        UInt32 frames = slice.frames - done;
        OSStatus status = noErr;
        const Float32* samples = state.client.next(request, frames, status);
        if (status) failure = status;
        place(samples, state.client.channels(), frames, nullptr, {1, 1}, done, 0, out.mChannelsPerFrame,
              state.placed.data());
        encode(out, state.placed.data(), frames, slice.out, done);
        done += frames;
    }
    return failure;
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

} // namespace

const UnitKind genericOutput = {
    kAudioUnitType_Output,
    kAudioUnitSubType_GenericOutput,
    "Generic Output",
    {1, 1, 1},
    {1, 1, 1},
    properties,
    {},
    takesFormat,
    openUnit,
    nullptr,
    destroy,
    initializeUnit,
    nullptr,
    resetUnit,
    renderSlice,
    nullptr,
    startUnit,
    stopUnit,
};

} // namespace kvxplatform::audiounit
