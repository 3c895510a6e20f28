// Start, stop, where the file plays, and what it repeats. Thread: [main].
//
// Host programs speak of seconds, the record of frames; the frames of a second are those that were read over
// the duration that the platform estimates. Nothing is clamped: a time that is negative or too large wraps to
// some frame, and rendering takes what lies behind the end as the end.
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// Start and stop the graph; nothing happens without one, or when it does so already.
void Play(REALobjectStruct* object);
void Pause(REALobjectStruct* object);

/// Let the units forget what they have heard. The position stays.
void Reset(REALobjectStruct* object);

/// Whether the graph runs; false, too, when that cannot be told.
HostBoolean getPlaying(REALobjectStruct* object, HostInteger);
void setPlaying(REALobjectStruct* object, HostInteger, HostBoolean value);

double getCurrentTime(REALobjectStruct* object, HostInteger);
void setCurrentTime(REALobjectStruct* object, HostInteger, double seconds);

double getTrackLength(REALobjectStruct* object, HostInteger);
double getSampleRate(REALobjectStruct* object, HostInteger); ///< Hz

/// Loop points; 0 for one that is not set. The end never lies in front of the start: setting the start moves
/// the end along, and an end in front of it becomes the start.
double getLoopIn(REALobjectStruct* object, HostInteger);
void setLoopIn(REALobjectStruct* object, HostInteger, double seconds);
double getLoopOut(REALobjectStruct* object, HostInteger);
void setLoopOut(REALobjectStruct* object, HostInteger, double seconds);

/// Takes effect only once both loop points are set.
HostBoolean getLooping(REALobjectStruct* object, HostInteger);
void setLooping(REALobjectStruct* object, HostInteger, HostBoolean value);

} // namespace auplayer
