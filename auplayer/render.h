// The graph's input: a callback that copies frames of the loaded file.
#pragma once

#include <AudioUnit/AudioUnit.h>

namespace auplayer {

/// Render the next `frames` frames of the file into the first buffer of `list`; `client` is the AUPlayerData.
///
/// The function only copies memory: it takes no lock, allocates nothing and makes no platform call.
/// Shape   one buffer of interleaved samples in the client format. Past the end of the file the slice is
///         silence, and the position stays at the end. The loop jump follows a slice: the slice that passes
///         the loop's end is rendered completely, and the next slice begins at the loop's start.
/// Returns 0 always.
/// [audio & running]
OSStatus renderInput(void* client, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time, UInt32 bus,
                     UInt32 frames, AudioBufferList* list);

} // namespace auplayer
