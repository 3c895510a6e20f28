// Start, stop and the play position.
//
// Times are in seconds and are converted to frames with `framesPerSecond`. Times are not clamped, so a
// negative or very large time wraps to some frame. Rendering treats a position past the end of the file as
// the end.
// All functions: [main].
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// Start or stop the graph. Nothing happens without a graph, or if the graph is already in the requested
/// state.
void Play(REALobjectStruct* object);
void Pause(REALobjectStruct* object);

/// Clear the units' signal history. The play position stays.
void Reset(REALobjectStruct* object);

/// Whether the graph is running. The getter returns false also if the platform refuses the query. The setter
/// starts or stops the graph.
HostBoolean getPlaying(REALobjectStruct* object, HostInteger);
void setPlaying(REALobjectStruct* object, HostInteger, HostBoolean value);

/// The play position in seconds. If the setter runs while a slice is being rendered, the end of that slice
/// may overwrite the new position.
double getCurrentTime(REALobjectStruct* object, HostInteger);
void setCurrentTime(REALobjectStruct* object, HostInteger, double seconds);

/// Estimated duration in seconds; 0 before a load.
double getTrackLength(REALobjectStruct* object, HostInteger);
/// Sample rate of the file in Hz; 0 before a load.
double getSampleRate(REALobjectStruct* object, HostInteger);

} // namespace auplayer
