// The graph's input: a callback that copies frames of the loaded file.
#pragma once

#include <AudioUnit/AudioUnit.h>

namespace auplayer {

/// Render the next `frames` frames of the file into the first buffer of `list`; `client` is the AUPlayerData.
///
/// Shape   the loaded format, interleaved, in one buffer. Past the end of the file the slice is silence, and
///         the position stays at the end. The loop jump is made after a slice: the slice that passes the
///         loop's end is rendered whole, and the next one begins at the loop's start.
/// Returns 0 always. Only copies memory: no lock, no allocation, no platform call.
/// [audio & running]
OSStatus renderInput(void* client, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time, UInt32 bus,
                     UInt32 frames, AudioBufferList* list);

} // namespace auplayer
