// What runs on the audio thread: the head of the graph.
#pragma once

#include <AudioUnit/AudioUnit.h>

namespace auplayer {

/// Render the next `frames` frames of the file into the first buffer of `list`, and move on; `client` is the
/// AUPlayerData.
/// Shape   the loaded format, interleaved: one buffer.
/// Thread  [audio & running]. Copies, and nothing else: no lock, no allocation, no call.
/// Returns 0, whatever happens.
///
/// The slice that reaches the end is music up to there and silence behind it; from then on all is silence,
/// and the position stays at the end. A loop is looked at once a slice, after it: the slice that passes the
/// loop's end is rendered whole, and the next begins at the loop's start.
OSStatus renderInput(void* client, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time, UInt32 bus,
                     UInt32 frames, AudioBufferList* list);

} // namespace auplayer
