// The arguments and results of one load.
#pragma once

#include "auplayer/au_player.h"

#include <CoreFoundation/CoreFoundation.h>

namespace auplayer {

/// Owner   the caller keeps the record, on its stack, and the URL until the load has returned.
struct LoadRequest {
    std::int32_t inputChannels;  ///< of the samples in memory
    std::int32_t outputChannels; ///< between the units
    AUPlayerData* player;
    std::uint8_t isOutOfMemory; ///< a result, like the next byte and hasFormats
    std::uint8_t result;
    std::uint8_t isThreaded;
    std::uint8_t hasFormats; ///< both formats are set: the caller makes their texts
    CFURLRef url;
};

} // namespace auplayer
