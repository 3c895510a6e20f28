// The loop points and the loop jump.
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// The loop points, in seconds; 0 if unset. Setting a start after the end moves the end to the start; an end
/// before the start becomes the start. Times are not clamped.
/// [main]
double getLoopIn(REALobjectStruct* object, HostInteger);
void setLoopIn(REALobjectStruct* object, HostInteger, double seconds);
double getLoopOut(REALobjectStruct* object, HostInteger);
void setLoopOut(REALobjectStruct* object, HostInteger, double seconds);

/// Whether the loop is active. It cannot be switched on before both points are set.
/// [main]
HostBoolean getLooping(REALobjectStruct* object, HostInteger);
void setLooping(REALobjectStruct* object, HostInteger, HostBoolean value);

/// Return the position (frames) of the next slice, after a slice that ended at `position`.
/// [audio & running]
UInt32 loopedPosition(const AUPlayerData& player, UInt32 position);

} // namespace auplayer
