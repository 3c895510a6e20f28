// Decodes a file into memory, which is the first part of a load.
#pragma once

#include "auplayer/load_request.h"

namespace auplayer {

/// Decode the whole file into `loadedAudio` and describe its format in the player's record.
/// Units   32-bit float samples, interleaved, at the file's sample rate.
/// Returns false at the first platform call that fails, with the status of that call in `Lasterror`, or 0
///         there if reading the samples failed. The function always closes the file.
/// Errors  isOutOfMemory is set if there is no memory for the samples.
/// [main], [worker]
bool decodeFile(LoadRequest& request);

} // namespace auplayer
