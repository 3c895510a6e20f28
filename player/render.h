// The I/O procedure, which renders the slices.
#pragma once

#include "player/player.h"

namespace player {

/// Render one slice, resampled to the device's rate by linear interpolation between neighbouring frames.
///
/// Shape   the first buffer gives the number of frames. Mono goes to every channel of every buffer; stereo to
///         the first two channels of each, or to the only one. Further channels stay unchanged.
/// Units   32-bit float, not clipped. Mono is interpolated in double precision, stereo in single, on purpose.
/// Returns 0 always. Without data, or after a stop request, the slice is silence, and the procedure stops the
///         device for itself, removes itself and clears isRunning as its last access to the player. With
///         noUnderflow it keeps running instead and sets hadUnderflow.
///
/// Known seam, at rates other than the device's: if the look-ahead of a slice's last frame has taken the next
/// buffer, the next slice reads 0.0 as the left neighbour of its first frame. At most one seam per buffer.
/// [audio & running]
OSStatus MyPlayIOProc(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                      const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                      const AudioTimeStamp* outputTime, void* client);

} // namespace player
