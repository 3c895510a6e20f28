// One source of a mixer: a queue of buffers, rendered at the mixer's rate and channel count.
//
// Clients queue buffers, one at a time under the mixer's lock; the render thread plays them without a lock.
// Two counters, which wrap, join the two: the entries [played, queued) wait.
#pragma once

#include "platform/pcm/rate_converter.h"

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
    UInt32 channels; ///< 1 or 2
};

class Source {
public:
    static constexpr UInt32 capacity = 64; ///< buffers that can wait

    explicit Source(const MixFormat& format) : format_(format) {}
    Source(const Source&) = delete;

    /// Add a buffer to the end of the queue.
    /// Owner    the caller keeps the block and its samples alive until its completion, a stop or a removal.
    /// Errors   those of linearPCM; siInvalidSampleRate for a rate too far from the mixer's; queueFull;
    ///          paramErr for a buffer without samples. Throws std::bad_alloc.
    /// [client]
    OSErr queue(SoundParamBlockPtr block);

    /// Whether a buffer was ever queued.
    /// [client]
    bool hasBuffers() const { return queued_ != 0; }

    /// A source with the same settings and an empty queue, paused. Throws std::bad_alloc.
    /// [client]
    std::unique_ptr<Source> withoutBuffers() const;

    /// Drop the waiting buffers without calling their completions. May be called inside render().
    /// [client]
    void end() { hasEnded_ = true; }

    /// Render up to `frames` frames; fewer when the queue is empty. Calls the completion routines of buffers
    /// that end.
    /// [audio & rendering]
    UInt32 render(Float32* out, UInt32 frames);

    std::atomic<bool> isPlaying{false};
    std::atomic<UInt32> volume{kFullVolume << 16 | kFullVolume}; ///< 8.8 each: right high, left low
    std::atomic<UInt32> rateMultiplier{0x10000};                 ///< 16.16; of buffers queued later

private:
    /// The rate conversion that successive buffers of one rate share.
    struct Conversion {
        pcm::RateConverter converter;
        Float64 rate = 0;        ///< of the input, Hz
        Float64 ratio = 1;       ///< output frames for an input frame
        UInt32 lastEntry = 0;    ///< the last one that uses it; [client]
        Float64 due = 0;         ///< output frames still to come for the input so far; [audio]
        bool hasInput = false;   ///< since the start or the last reset; [audio]
        bool isDraining = false; ///< silence followed the input, so no buffer may follow; [audio]
    };

    struct Entry {
        SoundParamBlockPtr block;
        AudioStreamBasicDescription format;
        const Byte* samples;
        UInt32 frames;
        Conversion* conversion; ///< null at the mixer's rate
        Float32 left, right;    ///< gains of the buffer
    };

    static void setBlock(Entry& entry, SoundParamBlockPtr block);
    Conversion* conversionFor(Float64 rate);
    void finish(Entry& entry);
    UInt32 decode(const Entry& entry, UInt32 frames, Float32* out);
    UInt32 convert(const Entry& entry, Conversion& conversion, Float32* out, UInt32 frames);
    UInt32 drain(Conversion& conversion, Float32* out, UInt32 frames);

    static constexpr UInt32 spanFrames = 256; ///< decoded at a time

    const MixFormat format_;
    std::array<Entry, capacity> entries_;
    std::atomic<UInt32> queued_{0}, played_{0};
    std::atomic<bool> hasEnded_{false};
    std::vector<std::unique_ptr<Conversion>> conversions_; ///< the newest last; [client]
    std::atomic<Conversion*> active_{nullptr};             ///< written by [audio], read by [client]
    UInt32 framesPlayed_ = 0;                              ///< of the front entry; [audio]
    std::array<Float32, spanFrames * 2> decoded_, span_;   ///< [audio]
};

} // namespace kvxplatform::soundmanager
