// A file into memory: the first part of a load.
#pragma once

#include "auplayer/load_request.h"

namespace auplayer {

/// Decode the whole file into `loadedAudio` and describe its format in the player's record.
/// Units   the sample rate is the file's; samples are 32-bit float, interleaved.
/// Returns false at the first platform call that fails, whose status is in `Lasterror`; a failed read leaves
/// it at
///         0. The file is always closed. Sets isOutOfMemory if there is no memory for the samples.
/// [load]
bool decodeFile(LoadRequest& request);

} // namespace auplayer
