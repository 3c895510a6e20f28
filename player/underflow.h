// Ends playback on the render thread when the player has no data, or after a stop request.
#pragma once

#include "player/output_buffers.h"
#include "player/player.h"

namespace player {

/// Render silence, then stop the I/O procedure on the device, remove the procedure and clear isRunning. With
/// noUnderflow set, only render silence and set hadUnderflow.
/// Returns whether the player keeps running. If the result is false, the host may already have freed the
///         player.
/// [audio & running]
bool renderUnderflow(AudioPlayerData& player, OutputBuffers& output, AudioDeviceID device);

} // namespace player
