// One source of a mixer: a queue of buffers, rendered at the mixer's rate and channel count.
//
// Clients queue buffers, one at a time under the mixer's lock; the render thread plays them without a lock.
// Both sides share two counters, which wrap. The waiting entries are those from `played_` to `queued_` - 1.
#pragma once

#include "platform/pcm/fixed_rate_converter.h"

#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

#include <array>
#include <atomic>
#include <memory>
#include <vector>

namespace kvxplatform::soundmanager {

/// The format in which a mixer adds its sources: interleaved 32-bit float.
struct MixFormat {
    Float64 sampleRate;
    UInt32 channels; ///< number of channels, 1 or 2
};

class Source {
public:
    static constexpr UInt32 capacity = 64; ///< maximum number of waiting buffers

    explicit Source(const MixFormat& format) : format_(format) {}
    Source(const Source&) = delete;

    /// Add a buffer to the end of the queue.
    /// Owner    the caller keeps the parameter block and its samples alive until the buffer is completed, or
    ///          the source is stopped or removed.
    /// Errors   those of linearPCM(); siInvalidSampleRate for a rate too far from the mixer's; queueFull;
    ///          paramErr for a buffer without samples. Throws std::bad_alloc.
    /// [client]
    OSErr queue(SoundParamBlockPtr block);

    /// Whether a buffer was ever queued.
    /// [client]
    bool hasBuffers() const { return queued_ != 0; }

    /// Make a paused source with the settings of this source and an empty queue. Throws std::bad_alloc.
    /// [client]
    std::unique_ptr<Source> withoutBuffers() const;

    /// Drop the waiting buffers without calling their completion routines. A completion routine may call this
    /// function.
    /// [client]
    void end() { hasEnded_ = true; }

    /// Render up to `frames` frames and call the completion routines of the buffers that end.
    /// Returns  the number of rendered frames; fewer than `frames` when the queue becomes empty.
    /// [audio & rendering]
    UInt32 render(Float32* out, UInt32 frames);

    std::atomic<bool> isPlaying{false};
    /// Two 8.8 fixed-point volumes: the right channel in the high half, the left channel in the low half.
    std::atomic<UInt32> volume{kFullVolume << 16 | kFullVolume};
    std::atomic<UInt32> rateMultiplier{0x10000}; ///< 16.16 fixed-point rate factor for buffers queued later

private:
    /// A rate conversion, shared by successive buffers of one sample rate.
    struct Conversion {
        pcm::FixedRateConverter converter;
        Float64 rate = 0;        ///< sample rate of the input, in Hz
        Float64 ratio = 1;       ///< number of output frames for each input frame
        UInt32 lastEntry = 0;    ///< value of `queued_` for the last entry that uses the conversion [client]
        Float64 due = 0;         ///< number of output frames still to come for the input so far [audio]
        bool hasInput = false;   ///< whether the converter has received input since its last reset [audio]
        bool isDraining = false; ///< whether silence follows the input, so no buffer may continue it [audio]
    };

    struct Entry {
        SoundParamBlockPtr block;
        AudioStreamBasicDescription format;
        const Byte* samples;
        UInt32 frames;
        Conversion* conversion; ///< rate conversion; null for a buffer at the mixer's rate
        Float32 left, right;    ///< channel gains of the buffer
    };

    static void setBlock(Entry& entry, SoundParamBlockPtr block);
    Conversion* conversionFor(Float64 rate);
    void finish(Entry& entry);
    UInt32 decode(const Entry& entry, UInt32 frames, Float32* out);
    UInt32 convert(const Entry& entry, Conversion& conversion, Float32* out, UInt32 frames);
    UInt32 read(Conversion& conversion, Float32* out, UInt32 frames);
    UInt32 drain(Conversion& conversion, Float32* out, UInt32 frames);

    static constexpr UInt32 spanFrames = 256; ///< maximum number of frames decoded at a time

    const MixFormat format_;
    std::array<Entry, capacity> entries_;
    std::atomic<UInt32> queued_{0}, played_{0};
    std::atomic<bool> hasEnded_{false};
    std::vector<std::unique_ptr<Conversion>> conversions_; ///< rate conversions, newest last [client]
    std::atomic<Conversion*> active_{nullptr};    ///< last rendered entry's conversion; set by [audio]
    UInt32 framesPlayed_ = 0;                     ///< frame position in the front entry [audio]
    std::array<Float32, spanFrames * 2> decoded_; ///< scratch memory of decode() [audio]
};

} // namespace kvxplatform::soundmanager
