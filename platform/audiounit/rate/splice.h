// Where one sound goes on in another without being heard: where the two are most alike.
#pragma once

#include "platform/audiounit/rate/input_tape.h"

namespace kvxplatform::audiounit {

constexpr std::int64_t spliceReach = 256; // frames to look on either side
constexpr UInt32 leastSpliceFrames = 64;  // fewer say nothing about what is alike

/// The frame near `frame` on a tape whose sound is most like `heard`, of at most 512 frames; `frame` itself
/// where the tape does not reach far enough. The first two channels tell. Thread [audio & in a slice].
/// Allocates nothing.
std::int64_t bestSplice(const InputTape& tape, std::int64_t frame, const Float32* const* heard,
                        UInt32 frames);

} // namespace kvxplatform::audiounit
