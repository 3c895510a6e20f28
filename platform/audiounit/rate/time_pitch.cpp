// The time-pitch units: rate and pitch apart. The newer and the classic one differ in their parameters alone.
#include "platform/audiounit/rate/rate_unit.h"
#include "platform/audiounit/rate/rate_units.h"
#include "platform/audiounit/rate/time_pitch_voice.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::audiounit {
namespace {

// The same numbers in both.
constexpr AudioUnitParameterID rate = kNewTimePitchParam_Rate, pitch = kNewTimePitchParam_Pitch;
static_assert(kTimePitchParam_Rate == rate && kTimePitchParam_Pitch == pitch);

Float32 valueOf(const Unit& unit, AudioUnitParameterID id)
{
    return parameterValue(unit, id, kAudioUnitScope_Global, 0);
}

Setting settingOf(const Unit& unit)
{
    const double cents = valueOf(unit, pitch);
    return {valueOf(unit, rate), cents == 0 ? 1 : std::exp2(cents / 1200)};
}

// The finer engine where much overlap is asked for and much quality.
constexpr Float32 finerOverlap = 8;
constexpr UInt32 finerQuality = kRenderQuality_High;

int engineAt(Float32 overlap, UInt32 quality)
{
    return static_cast<int>(overlap >= finerOverlap && quality >= finerQuality ? Stretcher::Engine::finer
                                                                               : Stretcher::Engine::faster);
}

int newEngine(const Unit& unit, UInt32 quality)
{
    return engineAt(valueOf(unit, kNewTimePitchParam_Overlap), quality);
}
int classicEngine(const Unit&, UInt32 quality) { return engineAt(finerOverlap, quality); }

std::unique_ptr<Voice> make(const AudioStreamBasicDescription& format, int engine)
{
    return std::make_unique<TimePitchVoice>(format, static_cast<Stretcher::Engine>(engine));
}

// Enough for an engine to start ahead, and for what it holds down to a twelfth of the length.
double tapeFrames(Float64 sampleRate) { return 0.68 * std::max(sampleRate, 48000.0); }

constexpr RateKind newKind = {settingOf, newEngine, make, tapeFrames};
constexpr RateKind classicKind = {settingOf, classicEngine, make, tapeFrames};

constexpr auto global = kAudioUnitScope_Global;
constexpr auto inRate = kAudioUnitParameterUnit_Rate;
constexpr auto inCents = kAudioUnitParameterUnit_Cents;
constexpr auto inTurns = kAudioUnitParameterUnit_Generic;
constexpr auto yesOrNo = kAudioUnitParameterUnit_Boolean;
constexpr Float32 slowest = 1.0f / 32, fastest = 32;

} // namespace

// clang-format off
const Parameter newTimePitchParameters[] = {
    // id                                   count scope  name                   unit     least    most     initial read only get  set
    {kNewTimePitchParam_Rate,               1, global, "rate",                inRate,  slowest, fastest, 1, false, nullptr, setRateParameter},
    {kNewTimePitchParam_Pitch,              1, global, "pitch",               inCents, -2400,   2400,    0, false, nullptr, setRateParameter},
    {kNewTimePitchParam_Overlap,            1, global, "overlap",             inTurns, 3,       32,      8, false, nullptr, setRateParameter},
    {kNewTimePitchParam_EnablePeakLocking,  1, global, "enable peak locking", yesOrNo, 0,       1,       1, false, nullptr, setRateParameter},
};
const Parameter timePitchParameters[] = {
    {kTimePitchParam_Rate,                  1, global, "rate",                inRate,  slowest, fastest, 1, false, nullptr, setRateParameter},
    {kTimePitchParam_Pitch,                 1, global, "pitch",               inCents, -2400,   2400,    0, false, nullptr, setRateParameter},
};
// clang-format on

OSStatus openNewTimePitch(Unit& unit) { return openRateUnit(unit, newKind); }
OSStatus openTimePitch(Unit& unit) { return openRateUnit(unit, classicKind); }

} // namespace kvxplatform::audiounit
