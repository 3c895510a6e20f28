// The loop points and the loop jump.
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// The loop points in seconds; the getters return 0 for an unset loop point. If a new LoopIn is later than
/// LoopOut, LoopOut moves to LoopIn. If a new LoopOut is earlier than LoopIn, LoopOut becomes LoopIn. Times
/// are not clamped.
/// [main]
double getLoopIn(REALobjectStruct* object, HostInteger);
void setLoopIn(REALobjectStruct* object, HostInteger, double seconds);
double getLoopOut(REALobjectStruct* object, HostInteger);
void setLoopOut(REALobjectStruct* object, HostInteger, double seconds);

/// Whether the loop is active. The loop cannot be activated before both loop points are set.
/// [main]
HostBoolean getLooping(REALobjectStruct* object, HostInteger);
void setLooping(REALobjectStruct* object, HostInteger, HostBoolean value);

/// Return the first frame of the next slice, after a slice that ended at frame `position`: the loop's start
/// if that frame is outside the loop, also before it, otherwise `position`. A loop end after the end of the
/// file is never reached, so the file then ends without a jump.
/// [audio & running]
UInt32 loopedPosition(const AUPlayerData& player, UInt32 position);

} // namespace auplayer
