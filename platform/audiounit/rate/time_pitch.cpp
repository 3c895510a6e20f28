// The time-pitch units, which change rate and pitch independently. The newer unit and the classic unit differ
// only in their parameters.
#include "platform/audiounit/rate/rate_unit.h"
#include "platform/audiounit/rate/rate_units.h"
#include "platform/audiounit/rate/time_pitch_engine.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::audiounit {
namespace {

// Rate and pitch have the same IDs in both units.
constexpr AudioUnitParameterID rate = kNewTimePitchParam_Rate, pitch = kNewTimePitchParam_Pitch;
static_assert(kTimePitchParam_Rate == rate && kTimePitchParam_Pitch == pitch);

Setting settingOf(const Unit& unit)
{
    const double cents = globalValue(unit, pitch);
    return {globalValue(unit, rate), cents == 0 ? 1 : std::exp2(cents / 1200)};
}

constexpr Float32 defaultOverlap = 8; // also the overlap of the classic unit

struct Choice {
    Float32 overlap; ///< least overlap
    UInt32 quality;  ///< least render quality
    Stretcher::Mode mode;
};

// The first row whose two limits are met applies. The default settings select all windows, because a single
// window detunes close chords and softens attacks (docs/performance.md).
constexpr Choice choices[] = {
    {defaultOverlap, kRenderQuality_High, Stretcher::Mode::finer},
    {0, kRenderQuality_Min, Stretcher::Mode::faster},
};

int modeAt(Float32 overlap, UInt32 quality)
{
    const Choice* choice = choices;
    while (overlap < choice->overlap || quality < choice->quality) ++choice;
    return static_cast<int>(choice->mode);
}

int newMode(const Unit& unit, UInt32 quality)
{
    return modeAt(globalValue(unit, kNewTimePitchParam_Overlap), quality);
}
int classicMode(const Unit&, UInt32 quality) { return modeAt(defaultOverlap, quality); }

std::unique_ptr<RateEngine> make(const AudioStreamBasicDescription& format, int mode)
{
    return std::make_unique<TimePitchEngine>(format, static_cast<Stretcher::Mode>(mode));
}

// Enough frames for the start of an engine, and for the input that the engine buffers when it shortens the
// duration to a twelfth.
double historyFrames(Float64 sampleRate) { return 0.68 * std::max(sampleRate, 48000.0); }

constexpr RateKind newKind = {settingOf, newMode, make, historyFrames};
constexpr RateKind classicKind = {settingOf, classicMode, make, historyFrames};

constexpr auto global = kAudioUnitScope_Global;
constexpr auto inRate = kAudioUnitParameterUnit_Rate;
constexpr auto inCents = kAudioUnitParameterUnit_Cents;
constexpr auto generic = kAudioUnitParameterUnit_Generic;
constexpr auto boolean = kAudioUnitParameterUnit_Boolean;
constexpr Float32 slowest = 1.0f / 32, fastest = 32;

} // namespace

// clang-format off
const Parameter newTimePitchParameters[] = {
    // id                                   count scope  name                   unit     least    most     initial read only get  set
    {kNewTimePitchParam_Rate,               1, global, "rate",                inRate,  slowest, fastest, 1, false, nullptr, setRateParameter},
    {kNewTimePitchParam_Pitch,              1, global, "pitch",               inCents, -2400,   2400,    0, false, nullptr, setRateParameter},
    {kNewTimePitchParam_Overlap,            1, global, "overlap",             generic, 3,       32,      defaultOverlap, false, nullptr, setRateParameter},
    {kNewTimePitchParam_EnablePeakLocking,  1, global, "enable peak locking", boolean, 0,       1,       1, false, nullptr, setRateParameter},
};
const Parameter timePitchParameters[] = {
    {kTimePitchParam_Rate,                  1, global, "rate",                inRate,  slowest, fastest, 1, false, nullptr, setRateParameter},
    {kTimePitchParam_Pitch,                 1, global, "pitch",               inCents, -2400,   2400,    0, false, nullptr, setRateParameter},
};
// clang-format on

OSStatus openNewTimePitch(Unit& unit) { return openRateUnit(unit, newKind); }
OSStatus openTimePitch(Unit& unit) { return openRateUnit(unit, classicKind); }

} // namespace kvxplatform::audiounit
