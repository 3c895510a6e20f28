// Finds the position in the input history where a crossfade to the input is least audible, which is where the
// input is most similar to the present output.
#pragma once

#include "platform/audiounit/rate/input_history.h"

namespace kvxplatform::audiounit {

constexpr std::int64_t matchReach = 256; ///< number of frames to search before and after a frame
constexpr UInt32 minMatchFrames = 64;    ///< smallest number of frames that can be compared

/// Find the input frame near `frame` from which the input is most similar to `output`, by the squared
/// difference of the first two channels. Allocates nothing.
/// Shape    output[channel][frame]. At most 512 frames are compared.
/// Returns  `frame` if there are too few frames to compare.
/// [audio & rendering]
std::int64_t bestMatch(const InputHistory& history, std::int64_t frame, const Float32* const* output,
                       UInt32 frames);

} // namespace kvxplatform::audiounit
