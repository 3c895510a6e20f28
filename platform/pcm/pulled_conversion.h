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
    AudioBufferList* list = nullptr; ///< frames of the source, valid until the next pull
    UInt32 first = 0, count = 0;     ///< range of the unconverted input frames
    bool hasEnded = false;           ///< whether the source has no further input

    /// Discard the unconverted input and expect further input.
    void reset()
    {
        count = 0;
        hasEnded = false;
    }
};

/// A conversion and its input, which are replaced together.
struct PulledConversion {
    /// Discard all input.
    void reset()
    {
        conversion.reset();
        input.reset();
    }

    Conversion conversion;
    PulledInput input;
};

/// Convert until `out` holds `frames` frames and the conversion has its lead, the input has ended, or `pull`
/// fails.
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
    if (frames == made) return noErr; // a call for no frames pulls nothing, not even the lead
    while (made < frames || (!input.hasEnded && input.count == 0 && conversion.framesFor(0) > 0)) {
        if (input.count == 0 && !input.hasEnded) {
            // Input is pulled before the reserve is used, so that every call pulls its share.
            const UInt32 missing = conversion.framesFor(frames - made);
            const OSStatus status = missing ? pull(missing) : OSStatus{noErr};
            if (status) return status;
        }
        if (input.count == 0 && input.hasEnded) {
            made += conversion.drain(out, made, frames - made);
            break;
        }
        const Progress progress =
            conversion.convert(*input.list, input.first, input.count, out, made, frames - made);
        input.first += progress.used;
        input.count -= progress.used;
        made += progress.made;
    }
    return noErr;
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
