// What runs on the audio thread: the sample reader and the I/O procedure.
#pragma once

#include "player/player.h"

namespace player {

/// The sample at `index` of the time line that began with the start; 0.0 where there is none.
/// Shape   samples, not frames: 2 a frame for stereo. Reading past the current buffer frees it and takes the
/// next, so
///         indexes must not fall back behind a buffer once it has been left. An index past the next buffer
///         too (a step longer than a whole buffer) is 0.0.
/// Thread  [audio & running]. Waits for the queue's lock, and frees, only where a buffer ends.
float GetSample(AudioPlayerData& player, std::int64_t index);

/// Render one slice, from `sampleRate` to the device's rate by linear interpolation between neighbouring
/// frames. Shape   frames come from the first buffer; mono goes to every channel of every buffer, stereo to
/// the first two
///         of each (the first one of a buffer with just one channel; further channels are left as they are).
/// Units   32-bit float, not clipped. Mono is interpolated in double precision, stereo in single: meant to
/// differ. Returns 0, whatever happens. Without data, or when a stop is requested, the slice is silence; then
/// the procedure
///         stops the device for itself, removes itself, and clears isRunning as the last thing it does to the
///         player - unless noUnderflow keeps it going, which sets hadUnderflow.
/// Thread  [audio & running]. Allocates nothing; waits for the queue's lock only where a buffer ends.
///
/// One seam is heard at rates other than the device's: when the look-ahead of a slice's last frame has
/// already taken the next buffer, the first frame of the next slice finds its left neighbour gone, and 0.0 in
/// its place. It happens once per buffer at most; long buffers make it rare.
OSStatus MyPlayIOProc(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                      const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                      const AudioTimeStamp* outputTime, void* client);

} // namespace player
