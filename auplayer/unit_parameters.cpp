#include "auplayer/unit_parameters.h"

#include "plugin/host_exceptions.h"
#include "plugin/truncate.h"

#include <cmath>

namespace auplayer {

namespace {

struct Parameter {
    AudioUnit AUPlayerData::*unit;
    AudioUnitParameterID id;
    AudioUnitScope scope;
};

// Identifiers of parameters that the oldest supported headers lack.
constexpr AudioUnitParameterID mixerPan = 2;
constexpr AudioUnitParameterID newTimePitchRate = 0;
constexpr AudioUnitParameterID newTimePitchPitch = 1;
constexpr AudioUnitParameterID newTimePitchOverlap = 4;
constexpr AudioUnitParameterID newTimePitchPeakLocking = 6;

// clang-format off
//                                  unit                      ID                                            scope
constexpr Parameter outputVolume = {&AUPlayerData::mixer,     kMultiChannelMixerParam_Volume,               kAudioUnitScope_Output};
constexpr Parameter inputVolume  = {&AUPlayerData::mixer,     kMultiChannelMixerParam_Volume,               kAudioUnitScope_Input};
constexpr Parameter inputEnabled = {&AUPlayerData::mixer,     kMultiChannelMixerParam_Enable,               kAudioUnitScope_Input};
constexpr Parameter pan          = {&AUPlayerData::mixer,     mixerPan,                                     kAudioUnitScope_Input};
constexpr Parameter meterLevel   = {&AUPlayerData::mixer,     kMultiChannelMixerParam_PostAveragePower,     kAudioUnitScope_Input};
constexpr Parameter timeRate     = {&AUPlayerData::timePitch, newTimePitchRate,                             kAudioUnitScope_Global};
constexpr Parameter pitchRate    = {&AUPlayerData::timePitch, newTimePitchPitch,                            kAudioUnitScope_Global};
constexpr Parameter overlap      = {&AUPlayerData::timePitch, newTimePitchOverlap,                          kAudioUnitScope_Global};
constexpr Parameter peakLocking  = {&AUPlayerData::timePitch, newTimePitchPeakLocking,                      kAudioUnitScope_Global};
// clang-format on

double get(REALobjectStruct* object, const Parameter& parameter, AudioUnitElement element = 0)
{
    AUPlayerData& player = beginCall(object);
    AudioUnitParameterValue value = 0;
    keepStatus(player, AudioUnitGetParameter(loadAcquired(player.*parameter.unit), parameter.id,
                                             parameter.scope, element, &value));
    return value;
}

void set(REALobjectStruct* object, const Parameter& parameter, double value, AudioUnitElement element = 0)
{
    AUPlayerData& player = beginCall(object);
    keepStatus(player,
               AudioUnitSetParameter(loadAcquired(player.*parameter.unit), parameter.id, parameter.scope,
                                     element, static_cast<AudioUnitParameterValue>(value), 0));
}

void setRate(REALobjectStruct* object, const Parameter& parameter, double value)
{
    set(object, parameter, value);
    AudioUnitSetParameter(loadAcquired(dataOf(object).varispeed), parameter.id, parameter.scope, 0,
                          static_cast<AudioUnitParameterValue>(value), 0);
}

void bypass(AUPlayerData& player, const AudioUnit& unit, UInt32 isBypassed)
{
    keepStatus(player, AudioUnitSetProperty(loadAcquired(unit), kAudioUnitProperty_BypassEffect,
                                            kAudioUnitScope_Global, 0, &isBypassed, sizeof isBypassed));
}

/// Bypass the other rate unit first, then activate the chosen rate unit.
void switchTo(AUPlayerData& player, RateUnit choice, const AudioUnit& chosen, const AudioUnit& other)
{
    const auto number = static_cast<HostInteger>(choice);
    if (loadRelaxed(player.timePitchUnit) == number) return;
    bypass(player, other, 1);
    bypass(player, chosen, 0);
    storeRelaxed(player.timePitchUnit, number);
}

template <class Element>
void updateEQ(REALobjectStruct* object, ArrayOf<Element>* eqBands)
{
    if (!eqBands) {
        RaiseException("NilObjectException", "eqBands is nil!");
        return;
    }
    const AudioUnit equalizer = loadAcquired(dataOf(object).equalizer);
    if (!equalizer) return;
    const std::int64_t count = arrayCount(eqBands);
    for (std::int64_t i = 0; i < count; ++i) {
        Element gain = 0;
        readArrayElement(eqBands, static_cast<HostInteger>(i), gain);
        AudioUnitSetParameter(equalizer, static_cast<AudioUnitParameterID>(i), kAudioUnitScope_Global, 0,
                              static_cast<AudioUnitParameterValue>(gain), 0);
    }
}

} // namespace

double getPan(REALobjectStruct* object, HostInteger) { return get(object, pan); }
void setPan(REALobjectStruct* object, HostInteger, double value) { set(object, pan, value); }

double getOutputVolume(REALobjectStruct* object, HostInteger) { return get(object, outputVolume); }
void setOutputVolume(REALobjectStruct* object, HostInteger, double value)
{
    set(object, outputVolume, value);
}

double getMeterLevel(REALobjectStruct* object, HostInteger) { return get(object, meterLevel); }

double getTimeRate(REALobjectStruct* object, HostInteger) { return get(object, timeRate); }
void setTimeRate(REALobjectStruct* object, HostInteger, double value)
{
    setRate(object, timeRate, std::floor(value * 100) / 100);
}

double getPitchRate(REALobjectStruct* object, HostInteger) { return get(object, pitchRate); }
void setPitchRate(REALobjectStruct* object, HostInteger, double value) { setRate(object, pitchRate, value); }

double getOverlap(REALobjectStruct* object, HostInteger) { return get(object, overlap); }
void setOverlap(REALobjectStruct* object, HostInteger, double value) { setRate(object, overlap, value); }

HostBoolean getEnablePeakLocking(REALobjectStruct* object, HostInteger)
{
    return get(object, peakLocking) > 0.5;
}
void setEnablePeakLocking(REALobjectStruct* object, HostInteger, HostBoolean value)
{
    setRate(object, peakLocking, value ? 1.0 : 0.0);
}

void setTimePitchUnit(REALobjectStruct* object, HostInteger, HostInteger value)
{
    AUPlayerData& player = beginCall(object);
    switch (static_cast<RateUnit>(value)) {
    case RateUnit::byDefault:
    case RateUnit::timePitch:
        switchTo(player, RateUnit::timePitch, player.timePitch, player.varispeed);
        break;
    case RateUnit::varispeed:
        switchTo(player, RateUnit::varispeed, player.varispeed, player.timePitch);
        break;
    }
}

double getInputVolume(REALobjectStruct* object, std::uint32_t inputNum)
{
    return get(object, inputVolume, inputNum);
}
void setInputVolume(REALobjectStruct* object, std::uint32_t inputNum, double value)
{
    set(object, inputVolume, value, inputNum);
}

HostBoolean getInputEnabled(REALobjectStruct* object, std::uint32_t inputNum)
{
    return (truncateTo64(get(object, inputEnabled, inputNum)) & 0xFF) != 0;
}
void setInputEnabled(REALobjectStruct* object, std::uint32_t inputNum, HostBoolean value)
{
    set(object, inputEnabled, value ? 1.0 : 0.0, inputNum);
}

void updateEQDouble(REALobjectStruct* object, ArrayOf<double>* eqBands) { updateEQ(object, eqBands); }
void updateEQSingle(REALobjectStruct* object, ArrayOf<float>* eqBands) { updateEQ(object, eqBands); }

} // namespace auplayer
