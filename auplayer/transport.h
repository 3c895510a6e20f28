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

/// Whether the graph runs; false also if the platform refuses the query. The setter starts or stops it.
HostBoolean getPlaying(REALobjectStruct* object, HostInteger);
void setPlaying(REALobjectStruct* object, HostInteger, HostBoolean value);

/// The play position, in seconds. A slice that is being rendered may overwrite a new position.
double getCurrentTime(REALobjectStruct* object, HostInteger);
void setCurrentTime(REALobjectStruct* object, HostInteger, double seconds);

double getTrackLength(REALobjectStruct* object, HostInteger); ///< seconds, estimated; 0 before a load
double getSampleRate(REALobjectStruct* object, HostInteger);  ///< Hz, of the file; 0 before a load

} // namespace auplayer
