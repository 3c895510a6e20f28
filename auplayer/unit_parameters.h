// Numbers of the units: levels, rates, and the choice between the two rate units. Thread: [main].
//
// A getter of a unit that is not there gives 0, with the platform's status in `Lasterror`. Values are not
// clamped here; units do what they do with them.
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

double getPan(REALobjectStruct* object, HostInteger); ///< -1 left … 1 right
void setPan(REALobjectStruct* object, HostInteger, double value);

double getOutputVolume(REALobjectStruct* object, HostInteger); ///< linear gain
void setOutputVolume(REALobjectStruct* object, HostInteger, double value);

double getMeterLevel(REALobjectStruct* object, HostInteger); ///< decibels below full scale

// Rates are read from the time-pitch unit and set on both rate units, so that a later choice between them
// keeps them. `Lasterror` tells of the time-pitch unit alone: the other does not know all of them.

double getTimeRate(REALobjectStruct* object, HostInteger);             ///< 1 as recorded, 2 twice as fast
void setTimeRate(REALobjectStruct* object, HostInteger, double value); ///< rounded down to hundredths

double getPitchRate(REALobjectStruct* object, HostInteger); ///< cents
void setPitchRate(REALobjectStruct* object, HostInteger, double value);

double getOverlap(REALobjectStruct* object, HostInteger);
void setOverlap(REALobjectStruct* object, HostInteger, double value);

HostBoolean getEnablePeakLocking(REALobjectStruct* object, HostInteger);
void setEnablePeakLocking(REALobjectStruct* object, HostInteger, HostBoolean value);

/// Choose the rate unit that works, and bypass the other; before a load the choice is only kept. 0 chooses as
/// 1 does; anything but 0, 1 and 2 changes nothing.
void setTimePitchUnit(REALobjectStruct* object, HostInteger, HostInteger value);

double getInputVolume(REALobjectStruct* object, std::uint32_t inputNum); ///< linear gain
void setInputVolume(REALobjectStruct* object, std::uint32_t inputNum, double value);

HostBoolean getInputEnabled(REALobjectStruct* object, std::uint32_t inputNum);
void setInputEnabled(REALobjectStruct* object, std::uint32_t inputNum, HostBoolean value);

} // namespace auplayer
