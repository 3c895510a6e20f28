// A file into memory: the first part of a load.
#pragma once

#include "auplayer/load_request.h"

namespace auplayer {

/// Decode the whole file into `loadedAudio` and describe its format in the player's record.
/// Units   the sample rate is the file's; samples are 32-bit float, interleaved.
/// Returns false at the first platform call that fails, whose status is in `Lasterror` (0 for a failed read).
///         The file is always closed. Without memory for the samples isOutOfMemory is set.
/// [main | worker]
bool decodeFile(LoadRequest& request);

} // namespace auplayer
