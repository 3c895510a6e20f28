// A conversion that pulls its input: it uses the unconverted input first, then further input, then the tail
// of the filter.
#pragma once

#include "platform/pcm/buffers.h"
#include "platform/pcm/conversion.h"

#include <algorithm>
#include <optional>

namespace kvxplatform::pcm {

/// The input of the last pull.
struct PulledInput {
    /// The buffer list of the input. It points at memory of the source, valid until the next pull.
    ListStorage storage;
    UInt32 first = 0, count = 0; ///< range of the unconverted input frames
    bool hasEnded = false;       ///< whether the source has no further input

    /// Discard the unconverted input and expect further input.
    void reset()
    {
        count = 0;
        hasEnded = false;
    }
};

/// Convert until `out` holds `frames` frames, the input has ended, or `pull` fails.
///
/// Shape    `pull(count)` replaces `input` by about `count` frames or sets hasEnded, and returns a status.
///          Output begins at frame `made` of `out`; the function advances `made`.
/// Returns  the status of the last pull.
/// Neither allocates nor locks, apart from `pull`.
/// [any]
template <class Pull>
OSStatus convertPulled(Conversion& conversion, PulledInput& input, AudioBufferList& out, UInt32 frames,
                       UInt32& made, Pull pull)
{
    OSStatus status = noErr;
    while (made < frames && !status) {
        if (input.count) {
            const auto [used, converted] =
                conversion.convert(input.storage.list(), input.first, input.count, out, made, frames - made);
            input.first += used;
            input.count -= used;
            made += converted;
        } else if (input.hasEnded) {
            made += conversion.drain(out, made, frames - made);
            break;
        } else {
            status = pull(conversion.framesFor(frames - made));
        }
    }
    return status;
}

/// Returns  the number of frames that every buffer of `list` can hold. No value if the buffer or channel
///          counts are not those of `format`, or if a buffer has no memory.
/// [any]
inline std::optional<UInt32> capacityOf(const AudioStreamBasicDescription& format,
                                        const AudioBufferList& list)
{
    if (list.mNumberBuffers != buffersOf(format)) return std::nullopt;
    UInt32 frames = ~UInt32{0};
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i) {
        const AudioBuffer& buffer = list.mBuffers[i];
        if (!buffer.mData || buffer.mNumberChannels != channelsPerBuffer(format)) return std::nullopt;
        frames = std::min(frames, buffer.mDataByteSize / format.mBytesPerFrame);
    }
    return frames;
}

} // namespace kvxplatform::pcm
