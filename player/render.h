// What runs on the audio thread: the sample reader and the I/O procedure.
#pragma once

#include "player/player.h"

namespace player {

/// The sample at `index` of the time line that began with the start; 0.0 where there is none.
/// Shape   samples, not frames: 2 a frame for stereo. Reading past the current buffer frees it and takes the
///         next; what lies before the buffer that is then current is 0.0 from there on. So is an index past
///         the next buffer, too (a step longer than a whole buffer).
/// Thread  [audio & running]. Waits for the queue's lock, and frees, only where a buffer ends.
float GetSample(AudioPlayerData& player, std::int64_t index);

/// Render one slice, resampled to the device's rate by linear interpolation between neighbouring frames.
/// Shape   frames come from the first buffer; mono goes to every channel of every buffer, stereo to the first
///         two of each (to the one of a buffer with just one; further channels are left as they are).
/// Units   32-bit float, not clipped. Mono is interpolated in double precision, stereo in single: meant to
///         differ.
/// Thread  [audio & running]. Allocates nothing; waits for the queue's lock only where a buffer ends.
/// Returns 0, whatever happens. Without data, or when a stop is requested, the slice is silence; then the
///         procedure stops the device for itself, removes itself, and clears isRunning as the last thing it
///         does to the player - unless noUnderflow keeps it going, which sets hadUnderflow.
///
/// One seam is heard at rates other than the device's: when the look-ahead of a slice's last frame has taken
/// the next buffer, the next slice finds the left neighbour of its first source frame gone, and 0.0 in its
/// place. It happens once per buffer at most; long buffers make it rare.
OSStatus MyPlayIOProc(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                      const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                      const AudioTimeStamp* outputTime, void* client);

} // namespace player
