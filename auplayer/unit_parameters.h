// The units' parameters: levels, rates, equaliser bands, and the choice between the two rate units.
//
// Before a load every getter returns 0 and sets `Lasterror` to the status of the refused platform call.
// Values are not clamped.
// All functions: [main].
#pragma once

#include "auplayer/au_player.h"
#include "plugin/host_array.h"

namespace auplayer {

/// Stereo position of mixer input 0, from -1 (left) to 1 (right).
double getPan(REALobjectStruct* object, HostInteger);
void setPan(REALobjectStruct* object, HostInteger, double value);

double getOutputVolume(REALobjectStruct* object, HostInteger); ///< linear gain of the mixer output
void setOutputVolume(REALobjectStruct* object, HostInteger, double value);

double getMeterLevel(REALobjectStruct* object, HostInteger); ///< average power of mixer input 0, in dBFS

// The getters of TimeRate, PitchRate, Overlap and EnablePeakLocking read the time-pitch unit. The setters set
// both rate units, so that the values stay when the host program switches between the units. A setter sets
// `Lasterror` to the status of the time-pitch unit, because the varispeed unit lacks some of the parameters.

/// Speed: 1 as recorded, 2 twice as fast.
double getTimeRate(REALobjectStruct* object, HostInteger);
/// The value is rounded down to hundredths.
void setTimeRate(REALobjectStruct* object, HostInteger, double value);

double getPitchRate(REALobjectStruct* object, HostInteger); ///< pitch shift in cents
void setPitchRate(REALobjectStruct* object, HostInteger, double value);

double getOverlap(REALobjectStruct* object, HostInteger); ///< overlap of the time-stretching windows
void setOverlap(REALobjectStruct* object, HostInteger, double value);

/// Whether the parameter is above 0.5.
HostBoolean getEnablePeakLocking(REALobjectStruct* object, HostInteger);
void setEnablePeakLocking(REALobjectStruct* object, HostInteger, HostBoolean value);

/// Choose the active rate unit by a number of RateUnit and bypass the other rate unit. 0 means timePitch.
/// Before a load the choice is only stored. An unknown number changes nothing.
void setTimePitchUnit(REALobjectStruct* object, HostInteger, HostInteger value);

double getInputVolume(REALobjectStruct* object, std::uint32_t inputNum); ///< linear gain of a mixer input
void setInputVolume(REALobjectStruct* object, std::uint32_t inputNum, double value);

/// Whether a mixer input is enabled. The getter truncates the parameter to an integer and returns whether the
/// low byte of that integer is not 0.
HostBoolean getInputEnabled(REALobjectStruct* object, std::uint32_t inputNum);
void setInputEnabled(REALobjectStruct* object, std::uint32_t inputNum, HostBoolean value);

/// Set the gains of the equaliser's bands, in decibels, lowest band first. Before a load nothing happens.
/// Errors  nil raises "NilObjectException". `Lasterror` stays unchanged in every case.
void updateEQDouble(REALobjectStruct* object, ArrayOf<double>* eqBands);
void updateEQSingle(REALobjectStruct* object, ArrayOf<float>* eqBands);

} // namespace auplayer
