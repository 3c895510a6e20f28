// The arguments and results of one load of a file.
#pragma once

#include "auplayer/au_player.h"

#include <CoreFoundation/CoreFoundation.h>

namespace auplayer {

/// Owner   the caller keeps this record on its stack, and keeps the URL, until the load has returned.
struct LoadRequest {
    std::int32_t inputChannels;  ///< number of channels of the samples in memory
    std::int32_t outputChannels; ///< number of channels of the streams between the units
    AUPlayerData* player;
    std::uint8_t isOutOfMemory; ///< result: whether memory was missing
    std::uint8_t result;        ///< result: whether the load succeeded
    std::uint8_t isThreaded;    ///< whether the load runs on a background thread
    /// Result: whether both formats are set, so that the caller makes their texts.
    std::uint8_t hasFormats;
    CFURLRef url;
};

} // namespace auplayer
