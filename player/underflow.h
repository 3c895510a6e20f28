// The end of playback on the render thread: without data, or after a stop request.
#pragma once

#include "player/output_buffers.h"
#include "player/player.h"

namespace player {

/// Render silence, then stop the device, remove the I/O procedure from it and clear isRunning. With
/// noUnderflow render silence and set hadUnderflow. Returns whether the player keeps running. If not, the
/// host may have freed the player already. [audio & running]
bool renderUnderflow(AudioPlayerData& player, OutputBuffers& output, AudioDeviceID device);

} // namespace player
