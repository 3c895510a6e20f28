// The multichannel mixer: adds up its connected inputs, in their order, each behind a fader and a balance,
// and has a fader and levels of its own.
//
// Channels  n to n; of two outputs, a single input channel goes to both. What the output has not is dropped,
//           what no input has is silence.
//
// Gains     volume, enable and pan glide; after initialising and after a reset they stand at once where they
//           are set. At rest at 1 they leave every sample as it is.
#include "platform/audiounit/mixer/bus_meters.h"
#include "platform/audiounit/mixer/fader.h"
#include "platform/audiounit/mixer/mixer_unit.h"
#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"
#include "platform/audiounit/render.h"
#include "platform/audiounit/source.h"

#include <algorithm>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 mostInputs = multichannelMixerInputs.most;
constexpr AudioUnitRenderActionFlags isSilence = kAudioUnitRenderAction_OutputIsSilence;

struct Bus {
    BusMeters meters;

    // [audio & in a slice]
    pcm::Gain fader = {1, 1};
    pcm::Gain balance[2] = {{1, 1}, {1, 1}}; // inputs only: left and right of an output of two channels
};

struct Mixer {
    Bus inputs[mostInputs];
    Bus output;
    bool isFresh = true; // nothing has been heard yet: there is nothing to glide from. [audio & in a slice]
};

} // namespace

OSStatus openMixer(Unit& unit)
{
    unit.state = new Mixer;
    return noErr;
}

void destroyMixer(void* state) { delete static_cast<Mixer*>(state); }

OSStatus initializeMixer(Unit& unit)
{
    auto& mixer = stateOf<Mixer>(unit);
    const AudioStreamBasicDescription& out = unit.output(0).format;
    for (UInt32 bus = 0; bus < unit.inputs().count; ++bus) {
        const Element& input = unit.input(bus);
        if (input.source.get() && input.format.mSampleRate != out.mSampleRate)
            return kAudioUnitErr_FormatNotSupported;
        mixer.inputs[bus].meters.prepare(input.format.mChannelsPerFrame, out.mSampleRate);
    }
    mixer.output.meters.prepare(out.mChannelsPerFrame, out.mSampleRate);
    mixer.isFresh = true;
    return noErr;
}

void resetMixer(Unit& unit) { stateOf<Mixer>(unit).isFresh = true; }

namespace {

// ---- a slice ----

void turn(pcm::Gain& gain, Float32 target, bool atOnce)
{
    if (atOnce)
        gain = {target, target};
    else
        gain.rampTo(target);
}

/// Take on what the parameters say. An input without a source has nothing to glide either.
void turnGains(Unit& unit, Mixer& mixer)
{
    const bool isStereo = unit.output(0).format.mChannelsPerFrame == 2;
    for (UInt32 i = 0; i < unit.inputs().count; ++i) {
        const auto value = [&](AudioUnitParameterID id) {
            return parameterValue(unit, id, kAudioUnitScope_Input, i);
        };
        const Float32 volume = value(kMultiChannelMixerParam_Volume);
        const bool isOn = value(kMultiChannelMixerParam_Enable) >= 1;
        const Float32 pan = isStereo ? value(kMultiChannelMixerParam_Pan) : 0;
        const bool atOnce = mixer.isFresh || !unit.input(i).source.get();
        Bus& bus = mixer.inputs[i];
        turn(bus.fader, isOn ? volume : 0, atOnce);
        turn(bus.balance[0], pan > 0 ? 1 - pan : 1, atOnce);
        turn(bus.balance[1], pan < 0 ? 1 + pan : 1, atOnce);
    }
    turn(mixer.output.fader, parameterValue(unit, kMultiChannelMixerParam_Volume, kAudioUnitScope_Output, 0),
         mixer.isFresh);
}

/// The slice is over for a bus.
void finish(Bus& bus, UInt32 frames)
{
    bus.fader.advance(frames);
    for (pcm::Gain& gain : bus.balance) gain.advance(frames);
    bus.meters.publish();
}

/// Put a list behind a bus's fader, and measure it on both sides.
void fade(Bus& bus, AudioBufferList& list, UInt32 frames)
{
    bus.meters.measure(Stage::preFader, list, frames);
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
        applyGain(bus.fader, static_cast<Float32*>(list.mBuffers[i].mData), frames);
    bus.meters.measure(Stage::postFader, list, frames);
}

/// The output while inputs are added to it: its channels up to `written` hold something.
struct Sum {
    AudioBufferList& out;
    UInt32 frames;
    UInt32 written = 0;

    void add(const AudioBufferList& in, const pcm::Gain (&balance)[2])
    {
        const bool isStereo = out.mNumberBuffers == 2, isDoubled = isStereo && in.mNumberBuffers == 1;
        const UInt32 channels = isDoubled ? 2 : std::min(in.mNumberBuffers, out.mNumberBuffers);
        for (UInt32 i = 0; i < channels; ++i)
            (i < written ? addWithGain : copyWithGain)(
                isStereo ? balance[i] : unity, samplesOf(in, isDoubled ? 0 : i), samplesOf(out, i), frames);
        written = std::max(written, channels);
    }

    /// The first input, where it lies in the output already.
    void begin(const pcm::Gain (&balance)[2])
    {
        written = out.mNumberBuffers;
        if (written == 2)
            for (UInt32 i = 0; i < 2; ++i) applyGain(balance[i], samplesOf(out, i), frames);
    }

    void fillUp()
    {
        for (; written < out.mNumberBuffers; ++written) std::fill_n(samplesOf(out, written), frames, 0.0f);
    }

    static constexpr pcm::Gain unity = {1, 1};

    static Float32* samplesOf(const AudioBufferList& list, UInt32 channel)
    {
        return static_cast<Float32*>(list.mBuffers[channel].mData);
    }
};

/// Pull an input that has a source and add it. `gaveSound` becomes true unless the source says that it is
/// silent.
OSStatus addInput(Unit& unit, Slice& slice, UInt32 bus, Sum& sum, bool& gaveSound)
{
    const Element& input = unit.input(bus);
    if (input.format.mSampleRate != unit.output(0).format.mSampleRate)
        return kAudioUnitErr_FormatNotSupported; // a source that came later
    AudioUnitRenderActionFlags flags = slice.flags & ~isSilence;
    AudioBufferList* in = &slice.out;
    // The first one heard needs no copy where it is as wide as the output.
    const bool isInPlace = !sum.written && pcm::isSameFormat(input.format, unit.output(0).format);
    const OSStatus status = isInPlace ? pullInto(slice.out, 0, unit, bus, flags, slice.time, slice.frames)
                                      : pull(unit, bus, flags, slice.time, slice.frames, in);
    if (status) // one that was taken away meanwhile is none
        return status == kAudioUnitErr_NoConnection && !input.source.get() ? noErr : status;

    Bus& own = stateOf<Mixer>(unit).inputs[bus];
    fade(own, *in, slice.frames);
    gaveSound |= !(flags & isSilence);
    if (own.fader.isSilence()) return noErr; // nothing added changes not a bit of the others
    if (isInPlace)
        sum.begin(own.balance);
    else
        sum.add(*in, own.balance);
    return noErr;
}

} // namespace

OSStatus renderMixer(Unit& unit, Slice& slice)
{
    auto& mixer = stateOf<Mixer>(unit);
    turnGains(unit, mixer);
    Sum sum{slice.out, slice.frames};
    OSStatus failure = noErr;
    bool gaveSound = false;
    for (UInt32 i = 0; i < unit.inputs().count; ++i) {
        Bus& bus = mixer.inputs[i];
        bus.meters.begin(mixer.isFresh);
        if (unit.input(i).source.get()) {
            const OSStatus status = addInput(unit, slice, i, sum, gaveSound);
            if (status && !failure) failure = status;
        } else {
            bus.meters.measureSilence(slice.frames);
        }
        finish(bus, slice.frames);
    }
    sum.fillUp();
    if (failure) pcm::clear(slice.out);
    slice.flags = gaveSound ? slice.flags & ~isSilence : slice.flags | isSilence;

    mixer.output.meters.begin(mixer.isFresh);
    fade(mixer.output, slice.out, slice.frames);
    finish(mixer.output, slice.frames);
    mixer.isFresh = false;
    return failure;
}

// ---- what it says and is told ----

namespace {

BusMeters& metersAt(Unit& unit, AudioUnitScope scope, AudioUnitElement element)
{
    auto& mixer = stateOf<Mixer>(unit);
    return scope == kAudioUnitScope_Input ? mixer.inputs[element].meters : mixer.output.meters;
}

OSStatus getMetering(Unit& unit, ElementAddress address, void* data, UInt32&)
{
    return give(data, UInt32{metersAt(unit, address.scope, address.element).isTurnedOn()});
}

OSStatus setMetering(Unit& unit, ElementAddress address, const void* data, UInt32)
{
    metersAt(unit, address.scope, address.element).turn(valueAt<UInt32>(data) != 0);
    return noErr;
}

OSStatus getChannelCounts(Unit&, ElementAddress, void* data, UInt32&)
{
    return give(data, AUChannelInfo{-1, -2});
}

template <Level which>
OSStatus getLevel(Unit& unit, const Parameter& row, AudioUnitElement element, UInt32 channel, Float32& out)
{
    out = metersAt(unit, row.scope, element).level(which, channel);
    return noErr;
}

template <AudioUnitScope scope>
UInt32 channelsWithLevels(const Unit& unit, AudioUnitElement element)
{
    return std::min(unit.scopes[scope].elements[element].channels.load(), meteredChannels);
}

constexpr auto input = kAudioUnitScope_Input, output = kAudioUnitScope_Output;
constexpr auto decibels = kAudioUnitParameterUnit_Decibels;

} // namespace

// clang-format off
const Property mixerProperties[] = {
    // property                                scopes              element     bytes                  access             settable          get               set          size of
    {kAudioUnitProperty_SupportedNumChannels,  inGlobal,           anyElement, sizeof(AUChannelInfo), Access::readOnly,  Settable::always, getChannelCounts, nullptr,     nullptr},
    {kAudioUnitProperty_MeteringMode,          inInput | inOutput, anyElement, sizeof(UInt32),        Access::readWrite, Settable::always, getMetering,      setMetering, nullptr},
};

const Parameter mixerParameters[] = {
    // id                                     count            scope   name                  unit                                least        most          initial      read only get                           set      present
    {kMultiChannelMixerParam_Volume,           1,               input,  "volume",             kAudioUnitParameterUnit_LinearGain, 0,           1,            1,           false,    nullptr,                      nullptr, nullptr},
    {kMultiChannelMixerParam_Enable,           1,               input,  "enable",             kAudioUnitParameterUnit_Boolean,    0,           1,            1,           false,    nullptr,                      nullptr, nullptr},
    {kMultiChannelMixerParam_Pan,              1,               input,  "pan",                kAudioUnitParameterUnit_Pan,        -1,          1,            0,           false,    nullptr,                      nullptr, nullptr},
    {kMultiChannelMixerParam_PreAveragePower,  meteredChannels, input,  "pre average power",  decibels,                           silentLevel, loudestLevel, silentLevel, true,     getLevel<Level::preAverage>,  nullptr, channelsWithLevels<input>},
    {kMultiChannelMixerParam_PrePeakHoldLevel, meteredChannels, input,  "pre peak hold",      decibels,                           silentLevel, loudestLevel, silentLevel, true,     getLevel<Level::prePeak>,     nullptr, channelsWithLevels<input>},
    {kMultiChannelMixerParam_PostAveragePower, meteredChannels, input,  "post average power", decibels,                           silentLevel, loudestLevel, silentLevel, true,     getLevel<Level::postAverage>, nullptr, channelsWithLevels<input>},
    {kMultiChannelMixerParam_PostPeakHoldLevel, meteredChannels, input, "post peak hold",     decibels,                           silentLevel, loudestLevel, silentLevel, true,     getLevel<Level::postPeak>,    nullptr, channelsWithLevels<input>},
    {kMultiChannelMixerParam_Volume,           1,               output, "volume",             kAudioUnitParameterUnit_LinearGain, 0,           1,            1,           false,    nullptr,                      nullptr, nullptr},
    {kMultiChannelMixerParam_PreAveragePower,  meteredChannels, output, "pre average power",  decibels,                           silentLevel, loudestLevel, silentLevel, true,     getLevel<Level::preAverage>,  nullptr, channelsWithLevels<output>},
    {kMultiChannelMixerParam_PrePeakHoldLevel, meteredChannels, output, "pre peak hold",      decibels,                           silentLevel, loudestLevel, silentLevel, true,     getLevel<Level::prePeak>,     nullptr, channelsWithLevels<output>},
    {kMultiChannelMixerParam_PostAveragePower, meteredChannels, output, "post average power", decibels,                           silentLevel, loudestLevel, silentLevel, true,     getLevel<Level::postAverage>, nullptr, channelsWithLevels<output>},
    {kMultiChannelMixerParam_PostPeakHoldLevel, meteredChannels, output, "post peak hold",    decibels,                           silentLevel, loudestLevel, silentLevel, true,     getLevel<Level::postPeak>,    nullptr, channelsWithLevels<output>},
};
// clang-format on

} // namespace kvxplatform::audiounit
