// The I/O procedure, which renders the slices.
#pragma once

#include "player/player.h"

namespace player {

/// Render one slice, resampled to the device's rate by linear interpolation between neighbouring frames.
///
/// Shape   the size of the first buffer determines the number of frames. Mono data is written to every
///         channel of every buffer. Stereo data is written to the first two channels of each buffer; a buffer
///         with one channel gets the left channel. Further channels stay unchanged.
/// Units   32-bit float, not clipped. Mono data is intentionally interpolated in double precision and stereo
///         data in single precision.
/// Returns 0 always. Without data, or after a stop request, the slice is silence. The procedure then stops
///         itself on the device, removes itself and clears isRunning as its last access to the player. With
///         noUnderflow set, the procedure sets hadUnderflow instead and stays installed.
///
/// Known defect (a seam) at rates other than the device's, at most once per buffer: if the last frame of a
/// slice needs the next buffer as its right neighbour, the current buffer is freed. The next slice then reads
/// 0.0 as the left neighbour until its position reaches the new buffer.
/// [audio & running]
OSStatus MyPlayIOProc(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                      const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                      const AudioTimeStamp* outputTime, void* client);

} // namespace player
