// Start, stop and the play position.
//
// Times are seconds; `framesPerSecond` converts them to frames. They are not clamped: a negative or very
// large time wraps to some frame, and rendering treats a position past the end as the end.
// All functions: [main].
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// Start or stop the graph. Without a graph, or in the requested state already, nothing happens.
void Play(REALobjectStruct* object);
void Pause(REALobjectStruct* object);

/// Clear the units' signal history. The position stays.
void Reset(REALobjectStruct* object);

/// Whether the graph runs; false also if the platform cannot tell.
HostBoolean getPlaying(REALobjectStruct* object, HostInteger);
void setPlaying(REALobjectStruct* object, HostInteger, HostBoolean value);

double getCurrentTime(REALobjectStruct* object, HostInteger);
void setCurrentTime(REALobjectStruct* object, HostInteger, double seconds);

double getTrackLength(REALobjectStruct* object, HostInteger);
double getSampleRate(REALobjectStruct* object, HostInteger); ///< Hz

} // namespace auplayer
