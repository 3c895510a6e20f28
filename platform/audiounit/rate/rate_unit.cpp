#include "platform/audiounit/rate/rate_unit.h"

#include "platform/audiounit/common_properties.h"
#include "platform/audiounit/rate/rate_units.h"
#include "platform/audiounit/render.h"

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 mostRateChannels = 64;

Wish wishOf(const Unit& unit)
{
    const Setting setting = stateOf<RateUnit>(unit).kind.setting(unit);
    return {!unit.isBypassed && !setting.isNeutral(), setting};
}

// Whether a voice is wanted that has not been made, and which.
bool lacksVoice(const Unit& unit, int& which)
{
    const auto& state = stateOf<RateUnit>(unit);
    which = state.kind.voiceFor(unit, state.quality);
    return which != state.made && wishOf(unit).isVoiced;
}

// With settings.
void makeVoice(Unit& unit)
{
    auto& state = stateOf<RateUnit>(unit);
    int which = 0;
    if (!lacksVoice(unit, which)) return;
    const AudioStreamBasicDescription& format = unit.output(0).format;
    state.path.prepareForVoices(state.kind.tapeFrames(format.mSampleRate));
    std::unique_ptr<Voice> voice = state.kind.make(format, which);
    state.latest = voice.get();
    state.box.put(std::move(voice));
    state.made = which;
}

void makeVoiceWhileInitialized(Unit& unit) // with settings
{
    if (unit.isInitialized && !unit.scope.isInside()) makeVoice(unit);
}

OSStatus getLatency(Unit& unit, ElementAddress, void* data, UInt32&)
{
    const auto& state = stateOf<RateUnit>(unit);
    if (!unit.isInitialized) return give(data, Float64{0});
    const Float32 measured = unit.isResetPending ? 0 : state.secondsAhead.load();
    if (measured > 0) return give(data, Float64{measured});
    const Wish wish = wishOf(unit);
    const double frames = wish.isVoiced && state.latest ? state.latest->framesAhead(wish.setting) : 0;
    return give(data, Float64{frames / unit.output(0).format.mSampleRate});
}

OSStatus getTail(Unit& unit, ElementAddress, void* data, UInt32&)
{
    const auto& state = stateOf<RateUnit>(unit);
    const Wish wish = wishOf(unit);
    const bool hasTail = unit.isInitialized && wish.isVoiced && state.latest;
    const double frames = hasTail ? state.latest->framesOfTail(wish.setting) : 0;
    return give(data, Float64{frames / unit.output(0).format.mSampleRate});
}

OSStatus setBypassAndMakeVoice(Unit& unit, ElementAddress address, const void* data, UInt32 size)
{
    setBypass(unit, address, data, size);
    makeVoiceWhileInitialized(unit);
    return noErr;
}

OSStatus getQuality(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, stateOf<RateUnit>(unit).quality.load());
}

OSStatus setQuality(Unit& unit, ElementAddress, const void* data, UInt32)
{
    const auto quality = valueAt<UInt32>(data);
    if (quality > kRenderQuality_Max) return kAudioUnitErr_InvalidPropertyValue;
    stateOf<RateUnit>(unit).quality = quality;
    makeVoiceWhileInitialized(unit);
    return noErr;
}

OSStatus getChannelCounts(Unit&, ElementAddress, void* data, UInt32&)
{
    return give(data, AUChannelInfo{-1, -1});
}

constexpr auto always = Settable::always;
constexpr auto read = Access::readOnly;
constexpr auto both = Access::readWrite;

} // namespace

// clang-format off
const Property rateProperties[] = {
    // property                                scopes    element     bytes                  access settable get               set                    size of
    {kAudioUnitProperty_Latency,               inGlobal, anyElement, sizeof(Float64),       read,  always,  getLatency,       nullptr,               nullptr},
    {kAudioUnitProperty_SupportedNumChannels,  inGlobal, anyElement, sizeof(AUChannelInfo), read,  always,  getChannelCounts, nullptr,               nullptr},
    {kAudioUnitProperty_TailTime,              inGlobal, anyElement, sizeof(Float64),       read,  always,  getTail,          nullptr,               nullptr},
    {kAudioUnitProperty_BypassEffect,          inGlobal, anyElement, sizeof(UInt32),        both,  always,  getBypass,        setBypassAndMakeVoice, nullptr},
    {kAudioUnitProperty_RenderQuality,         inGlobal, anyElement, sizeof(UInt32),        both,  always,  getQuality,       setQuality,            nullptr},
};
// clang-format on

void destroyRateUnit(void* state) { delete static_cast<RateUnit*>(state); }

bool takesRateFormat(const Unit&, AudioUnitScope, AudioUnitElement, const AudioStreamBasicDescription& format)
{
    return pcm::isCanonical(format) && format.mChannelsPerFrame <= mostRateChannels;
}

OSStatus initializeRateUnit(Unit& unit)
{
    auto& state = stateOf<RateUnit>(unit);
    const AudioStreamBasicDescription& format = unit.output(0).format;
    if (!pcm::isSameFormat(unit.input(0).format, format)) return kAudioUnitErr_FormatNotSupported;
    state.path.prepare(format);
    state.secondsAhead = 0;
    makeVoice(unit);
    return noErr;
}

void uninitializeRateUnit(Unit& unit)
{
    auto& state = stateOf<RateUnit>(unit);
    state.made = -1;
    state.latest = nullptr;
    state.box.clear();
    state.path.release();
}

void resetRateUnit(Unit& unit) { stateOf<RateUnit>(unit).path.reset(); }

OSStatus renderRateUnit(Unit& unit, Slice& slice)
{
    auto& state = stateOf<RateUnit>(unit);
    const OSStatus status = state.path.render(unit, slice, wishOf(unit), state.box);
    const Float64 framesOut = state.path.framesAhead() / state.path.rate();
    state.secondsAhead = static_cast<Float32>(framesOut / unit.output(0).format.mSampleRate);
    return status;
}

void makeVoiceIfWanted(Unit& unit)
{
    int which = 0;
    if (unit.scope.isInside() || !lacksVoice(unit, which)) return;
    const std::lock_guard<std::mutex> guard(unit.settings); // waits while the unit is being initialised
    makeVoiceWhileInitialized(unit);
}

OSStatus setRateParameter(Unit& unit, const Parameter& row, AudioUnitElement element, UInt32 index,
                          Float32 value)
{
    storeParameter(unit, row.id + index, row.scope, element, value);
    makeVoiceIfWanted(unit);
    return noErr;
}

} // namespace kvxplatform::audiounit
