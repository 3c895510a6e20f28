// The varispeed unit, which changes rate and pitch together, as a tape machine does. Its two parameters
// represent one value in different units.
#include "platform/audiounit/rate/rate_unit.h"
#include "platform/audiounit/rate/rate_units.h"
#include "platform/audiounit/rate/varispeed_engine.h"

#include <cmath>

namespace kvxplatform::audiounit {
namespace {

Float32 rateAt(Float32 cents) { return static_cast<Float32>(std::exp2(double{cents} / 1200)); }

Setting settingOf(const Unit& unit) { return {globalValue(unit, kVarispeedParam_PlaybackRate), 1}; }

int qualityAt(const Unit&, UInt32 quality)
{
    return static_cast<int>(quality >= kRenderQuality_High ? pcm::VariableRateConverter::Quality::normal
                                                           : pcm::VariableRateConverter::Quality::fast);
}

std::unique_ptr<RateEngine> make(const AudioStreamBasicDescription& format, int quality)
{
    return std::make_unique<VarispeedEngine>(format,
                                             static_cast<pcm::VariableRateConverter::Quality>(quality));
}

double historyFrames(Float64) { return 8192; }

constexpr RateKind kind = {settingOf, qualityAt, make, historyFrames};

// The rate parameter holds the value. The cents that were set last are stored too, so that they are returned
// exactly as long as they correspond to the rate.
OSStatus getCents(Unit& unit, const Parameter&, AudioUnitElement, UInt32, Float32& out)
{
    const Float32 rate = globalValue(unit, kVarispeedParam_PlaybackRate);
    const Float32 cents = globalValue(unit, kVarispeedParam_PlaybackCents);
    out = rateAt(cents) == rate ? cents : static_cast<Float32>(1200 * std::log2(double{rate}));
    return noErr;
}

OSStatus setCents(Unit& unit, const Parameter& row, AudioUnitElement element, UInt32, Float32 value)
{
    storeParameter(unit, row.id, row.scope, element, value);
    const Parameter& rateRow = varispeedParameters[0];
    return setRateParameter(unit, rateRow, element, 0, rateAt(value));
}

constexpr auto global = kAudioUnitScope_Global;

} // namespace

// clang-format off
const Parameter varispeedParameters[] = {
    // id                          count scope   name              unit                         least most  initial read only get  set
    {kVarispeedParam_PlaybackRate,  1, global, "playback rate",  kAudioUnitParameterUnit_Rate,  0.25f, 4,    1, false, nullptr, setRateParameter},
    {kVarispeedParam_PlaybackCents, 1, global, "playback cents", kAudioUnitParameterUnit_Cents, -2400, 2400, 0, false, getCents, setCents},
};
// clang-format on

OSStatus openVarispeed(Unit& unit) { return openRateUnit(unit, kind); }

} // namespace kvxplatform::audiounit
