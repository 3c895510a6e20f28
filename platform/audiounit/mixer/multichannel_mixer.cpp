// The multichannel mixer sums its connected inputs in bus order. Each input has a fader and a balance, and
// the output has a fader. Each bus has meters.
//
// Channels  input channel n goes to output channel n; a mono input goes to both channels of a stereo output.
//           Other input channels are dropped; other output channels are silent.
//
// Gains     volume, enable and pan ramp to a new value. Before the first slice after initialising or a reset,
//           a new value applies at once. A gain that rests at 1 changes no bit.
#include "platform/audiounit/common_properties.h"
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

constexpr AudioUnitRenderActionFlags isSilence = kAudioUnitRenderAction_OutputIsSilence;

struct Bus {
    BusMeters meters;
    /// The gain that the volume and enable parameters set.
    /// [audio & rendering]
    pcm::Gain fader = {1, 1};
    /// The gains of an input for the left and the right channel of a stereo output.
    /// [audio & rendering]
    pcm::Gain balance[2] = {{1, 1}, {1, 1}};
};

struct Mixer {
    Bus inputs[multichannelMixerInputs.most];
    Bus output;
    /// Whether no slice has been rendered since the start, so that gains have no value to ramp from.
    /// [audio & rendering]
    bool isFresh = true;
};

// ---- gains ----

void setGain(pcm::Gain& gain, Float32 target, bool isAtOnce)
{
    if (isAtOnce)
        gain = {target, target};
    else
        gain.rampTo(target);
}

/// Read the parameters into the gains. The gains of an input without a source change at once, without a ramp.
void updateGains(Unit& unit, Mixer& mixer)
{
    const bool isStereo = unit.output(0).format.mChannelsPerFrame == 2;
    for (UInt32 i = 0; i < unit.inputs().count; ++i) {
        const auto value = [&](AudioUnitParameterID id) {
            return parameterValue(unit, id, kAudioUnitScope_Input, i);
        };
        const Float32 volume = value(kMultiChannelMixerParam_Volume);
        const bool isOn = value(kMultiChannelMixerParam_Enable) >= 1;
        const Float32 pan = isStereo ? value(kMultiChannelMixerParam_Pan) : 0;
        const bool isAtOnce = mixer.isFresh || !unit.input(i).source.get();
        Bus& bus = mixer.inputs[i];
        setGain(bus.fader, isOn ? volume : 0, isAtOnce);
        setGain(bus.balance[0], pan > 0 ? 1 - pan : 1, isAtOnce);
        setGain(bus.balance[1], pan < 0 ? 1 + pan : 1, isAtOnce);
    }
    const Float32 volume = parameterValue(unit, kMultiChannelMixerParam_Volume, kAudioUnitScope_Output, 0);
    setGain(mixer.output.fader, volume, mixer.isFresh);
}

/// Complete a bus's part of a slice: advance its ramps and publish its levels.
void finish(Bus& bus, UInt32 frames)
{
    bus.fader.advance(frames);
    for (pcm::Gain& gain : bus.balance) gain.advance(frames);
    bus.meters.publish();
}

/// Apply a bus's fader to samples in place, and measure the levels before and after the fader.
void applyFader(Bus& bus, AudioBufferList& list, UInt32 frames)
{
    if (bus.fader.isUnity()) return bus.meters.measureBoth(list, frames);
    bus.meters.measure(Stage::preFader, list, frames);
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
        applyGain(bus.fader, static_cast<Float32*>(list.mBuffers[i].mData), frames);
    bus.meters.measure(Stage::postFader, list, frames);
}

// ---- sum of the inputs ----

/// The output of a slice while inputs are added. The first `written` channels hold samples; the others hold
/// none yet.
struct Sum {
    AudioBufferList& out;
    UInt32 frames;
    UInt32 written = 0;

    void add(const AudioBufferList& in, const pcm::Gain (&balance)[2])
    {
        const bool isStereo = out.mNumberBuffers == 2, isMonoToStereo = isStereo && in.mNumberBuffers == 1;
        const UInt32 channels = isMonoToStereo ? 2 : std::min(in.mNumberBuffers, out.mNumberBuffers);
        for (UInt32 i = 0; i < channels; ++i)
            (i < written ? addWithGain : copyWithGain)(isStereo ? balance[i] : unity,
                                                       samplesOf(in, isMonoToStereo ? 0 : i),
                                                       samplesOf(out, i), frames);
        written = std::max(written, channels);
    }

    /// Add the first input, which was rendered directly into the output.
    void addInPlace(const pcm::Gain (&balance)[2])
    {
        written = out.mNumberBuffers;
        if (written == 2)
            for (UInt32 i = 0; i < 2; ++i) applyGain(balance[i], samplesOf(out, i), frames);
    }

    void silenceRest()
    {
        for (; written < out.mNumberBuffers; ++written) std::fill_n(samplesOf(out, written), frames, 0.0f);
    }

    static constexpr pcm::Gain unity = {1, 1};

    static Float32* samplesOf(const AudioBufferList& list, UInt32 channel)
    {
        return static_cast<Float32*>(list.mBuffers[channel].mData);
    }
};

/// Pull an input that has a source and add its frames to the sum. Sets `hasSound` unless the source reports
/// silence.
OSStatus addInput(Unit& unit, Slice& slice, UInt32 bus, Sum& sum, bool& hasSound)
{
    const Element& input = unit.input(bus);
    if (input.format.mSampleRate != unit.output(0).format.mSampleRate)
        // The source was connected after the mixer was initialised.
        return kAudioUnitErr_FormatNotSupported;
    AudioUnitRenderActionFlags flags = slice.flags & ~isSilence;
    AudioBufferList* in = &slice.out;
    // The first audible input is rendered directly into the output if the formats are equal.
    const bool isInPlace = !sum.written && pcm::isSameFormat(input.format, unit.output(0).format);
    const OSStatus status = isInPlace ? pullInto(slice.out, 0, unit, bus, flags, slice.time, slice.frames)
                                      : pull(unit, bus, flags, slice.time, slice.frames, in);
    // A source that was disconnected during this slice is not an error.
    if (status) return status == kAudioUnitErr_NoConnection && !input.source.get() ? noErr : status;

    Bus& state = stateOf<Mixer>(unit).inputs[bus];
    applyFader(state, *in, slice.frames);
    hasSound |= !(flags & isSilence);
    if (state.fader.isSilence()) return noErr; // adding silence would change an output sample of -0 to 0
    if (isInPlace)
        sum.addInPlace(state.balance);
    else
        sum.add(*in, state.balance);
    return noErr;
}

// ---- properties and parameters ----

BusMeters& metersAt(Unit& unit, AudioUnitScope scope, AudioUnitElement element)
{
    auto& mixer = stateOf<Mixer>(unit);
    return scope == kAudioUnitScope_Input ? mixer.inputs[element].meters : mixer.output.meters;
}

OSStatus getMetering(Unit& unit, ElementAddress address, void* data, UInt32&)
{
    return give(data, UInt32{metersAt(unit, address.scope, address.element).isEnabled()});
}

OSStatus setMetering(Unit& unit, ElementAddress address, const void* data, UInt32)
{
    metersAt(unit, address.scope, address.element).setEnabled(valueAt<UInt32>(data) != 0);
    return noErr;
}

template <Level which>
OSStatus getLevel(Unit& unit, const Parameter& row, AudioUnitElement element, UInt32 channel, Float32& out)
{
    out = metersAt(unit, row.scope, element).level(which, channel);
    return noErr;
}

template <AudioUnitScope scope>
UInt32 channelsMetered(const Unit& unit, AudioUnitElement element)
{
    return std::min(unit.scopes[scope].elements[element].channels.load(), meteredChannels);
}

constexpr auto input = kAudioUnitScope_Input, output = kAudioUnitScope_Output;
constexpr auto decibels = kAudioUnitParameterUnit_Decibels;

} // namespace

// clang-format off
const Property mixerProperties[] = {
    // property                                scopes              element     bytes                  access             settable          get                  set          size of
    {kAudioUnitProperty_SupportedNumChannels,  inGlobal,           anyElement, sizeof(AUChannelInfo), Access::readOnly,  Settable::always, getAnyChannelCounts, nullptr,     nullptr},
    {kAudioUnitProperty_MeteringMode,          inInput | inOutput, anyElement, sizeof(UInt32),        Access::readWrite, Settable::always, getMetering,         setMetering, nullptr},
};

const Parameter mixerParameters[] = {
    // id                                     count            scope   name                  unit                                least        most          initial      read only get                           set      present
    {kMultiChannelMixerParam_Volume,           1,               input,  "volume",             kAudioUnitParameterUnit_LinearGain, 0,           1,            1,           false,    nullptr,                      nullptr, nullptr},
    {kMultiChannelMixerParam_Enable,           1,               input,  "enable",             kAudioUnitParameterUnit_Boolean,    0,           1,            1,           false,    nullptr,                      nullptr, nullptr},
    {kMultiChannelMixerParam_Pan,              1,               input,  "pan",                kAudioUnitParameterUnit_Pan,        -1,          1,            0,           false,    nullptr,                      nullptr, nullptr},
    {kMultiChannelMixerParam_PreAveragePower,  meteredChannels, input,  "pre average power",  decibels,                           minDecibels, maxDecibels, minDecibels, true,     getLevel<Level::preAverage>,  nullptr, channelsMetered<input>},
    {kMultiChannelMixerParam_PrePeakHoldLevel, meteredChannels, input,  "pre peak hold",      decibels,                           minDecibels, maxDecibels, minDecibels, true,     getLevel<Level::prePeak>,     nullptr, channelsMetered<input>},
    {kMultiChannelMixerParam_PostAveragePower, meteredChannels, input,  "post average power", decibels,                           minDecibels, maxDecibels, minDecibels, true,     getLevel<Level::postAverage>, nullptr, channelsMetered<input>},
    {kMultiChannelMixerParam_PostPeakHoldLevel, meteredChannels, input, "post peak hold",     decibels,                           minDecibels, maxDecibels, minDecibels, true,     getLevel<Level::postPeak>,    nullptr, channelsMetered<input>},
    {kMultiChannelMixerParam_Volume,           1,               output, "volume",             kAudioUnitParameterUnit_LinearGain, 0,           1,            1,           false,    nullptr,                      nullptr, nullptr},
    {kMultiChannelMixerParam_PreAveragePower,  meteredChannels, output, "pre average power",  decibels,                           minDecibels, maxDecibels, minDecibels, true,     getLevel<Level::preAverage>,  nullptr, channelsMetered<output>},
    {kMultiChannelMixerParam_PrePeakHoldLevel, meteredChannels, output, "pre peak hold",      decibels,                           minDecibels, maxDecibels, minDecibels, true,     getLevel<Level::prePeak>,     nullptr, channelsMetered<output>},
    {kMultiChannelMixerParam_PostAveragePower, meteredChannels, output, "post average power", decibels,                           minDecibels, maxDecibels, minDecibels, true,     getLevel<Level::postAverage>, nullptr, channelsMetered<output>},
    {kMultiChannelMixerParam_PostPeakHoldLevel, meteredChannels, output, "post peak hold",    decibels,                           minDecibels, maxDecibels, minDecibels, true,     getLevel<Level::postPeak>,    nullptr, channelsMetered<output>},
};
// clang-format on

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
        const Element& element = unit.input(bus);
        if (element.source.get() && element.format.mSampleRate != out.mSampleRate)
            return kAudioUnitErr_FormatNotSupported;
        mixer.inputs[bus].meters.prepare(element.format.mChannelsPerFrame, out.mSampleRate);
    }
    mixer.output.meters.prepare(out.mChannelsPerFrame, out.mSampleRate);
    mixer.isFresh = true;
    return noErr;
}

void resetMixer(Unit& unit) { stateOf<Mixer>(unit).isFresh = true; }

OSStatus renderMixer(Unit& unit, Slice& slice)
{
    auto& mixer = stateOf<Mixer>(unit);
    updateGains(unit, mixer);
    Sum sum{slice.out, slice.frames};
    OSStatus failure = noErr;
    bool hasSound = false;
    for (UInt32 i = 0; i < unit.inputs().count; ++i) {
        Bus& bus = mixer.inputs[i];
        bus.meters.begin(mixer.isFresh);
        if (unit.input(i).source.get()) {
            const OSStatus status = addInput(unit, slice, i, sum, hasSound);
            if (status && !failure) failure = status;
        } else {
            bus.meters.measureSilence(slice.frames);
        }
        finish(bus, slice.frames);
    }
    sum.silenceRest();
    if (failure) pcm::clear(slice.out);
    slice.flags = hasSound ? slice.flags & ~isSilence : slice.flags | isSilence;

    mixer.output.meters.begin(mixer.isFresh);
    applyFader(mixer.output, slice.out, slice.frames);
    finish(mixer.output, slice.frames);
    mixer.isFresh = false;
    return failure;
}

} // namespace kvxplatform::audiounit
