// The units' parameters: levels, rates, equaliser bands, and the choice between the two rate units.
//
// Before a load a getter returns 0, and `Lasterror` has the platform's status. Values are not clamped.
// All functions: [main].
#pragma once

#include "auplayer/au_player.h"
#include "plugin/host_array.h"

namespace auplayer {

double getPan(REALobjectStruct* object, HostInteger); ///< of mixer input 0: -1 left … 1 right
void setPan(REALobjectStruct* object, HostInteger, double value);

double getOutputVolume(REALobjectStruct* object, HostInteger); ///< linear gain of the mixer's output
void setOutputVolume(REALobjectStruct* object, HostInteger, double value);

double getMeterLevel(REALobjectStruct* object, HostInteger); ///< average power of mixer input 0, in dBFS

// The rate getters read the time-pitch unit. The setters set both rate units, so that switching units keeps
// the rates; `Lasterror` is the time-pitch unit's status, because the varispeed unit lacks some parameters.

double getTimeRate(REALobjectStruct* object, HostInteger);             ///< 1 as recorded, 2 twice as fast
void setTimeRate(REALobjectStruct* object, HostInteger, double value); ///< rounded down to hundredths

double getPitchRate(REALobjectStruct* object, HostInteger); ///< cents
void setPitchRate(REALobjectStruct* object, HostInteger, double value);

double getOverlap(REALobjectStruct* object, HostInteger); ///< of the stretching windows
void setOverlap(REALobjectStruct* object, HostInteger, double value);

HostBoolean getEnablePeakLocking(REALobjectStruct* object, HostInteger); ///< parameter above 0.5
void setEnablePeakLocking(REALobjectStruct* object, HostInteger, HostBoolean value);

/// Choose the active rate unit (a RateUnit; the default is timePitch) and bypass the other one. Before a load
/// the choice is only stored. An unknown number changes nothing.
void setTimePitchUnit(REALobjectStruct* object, HostInteger, HostInteger value);

double getInputVolume(REALobjectStruct* object, std::uint32_t inputNum); ///< linear gain of a mixer input
void setInputVolume(REALobjectStruct* object, std::uint32_t inputNum, double value);

/// Whether a mixer input is enabled: the low byte of the parameter, truncated, is not 0.
HostBoolean getInputEnabled(REALobjectStruct* object, std::uint32_t inputNum);
void setInputEnabled(REALobjectStruct* object, std::uint32_t inputNum, HostBoolean value);

/// Set the gains of the equaliser's bands, in decibels, lowest band first. Before a load nothing happens.
/// Errors  nil raises "NilObjectException"; `Lasterror` stays unchanged.
void updateEQDouble(REALobjectStruct* object, ArrayOf<double>* eqBands);
void updateEQSingle(REALobjectStruct* object, ArrayOf<float>* eqBands);

} // namespace auplayer
