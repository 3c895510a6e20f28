// Conversion of interleaved floats from one sample rate to another.
//
// The first output frame has the time of the first input frame: the filter looks ahead and does not delay.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <memory>

namespace kvxplatform::pcm {

/// The number of frames that a call of a conversion used and made.
struct Progress {
    UInt32 used; ///< number of input frames used
    UInt32 made; ///< number of output frames made
};

/// A rate converter. One thread at a time calls its functions; only prepare() allocates.
class RateConverter {
public:
    enum class Quality { fast, normal, best };

    /// A source from which convert() pulls input.
    struct Input {
        /// Return the next `frames` frames as [frame * channels + channel], valid until the next call.
        const Float32* (*pull)(void* context, UInt32 frames);
        void* context;
    };

    RateConverter();
    ~RateConverter();
    RateConverter(const RateConverter&) = delete;

    /// Whether the ratio of two positive rates is within 1/256 to 256.
    static bool takes(Float64 from, Float64 to);

    /// Prepare to convert between two rates. Throws std::bad_alloc.
    /// Returns  false if takes(from, to) is false, or if `channels` is 0 or more than 128.
    bool prepare(Float64 from, Float64 to, UInt32 channels, Quality quality);

    /// Set the ratio of the following output frames, as output frames per input frame, 1/256 to 256. A small
    /// step of the ratio is inaudible.
    void setRatio(double ratio);

    /// Clear the filter and the unread input.
    void reset();

    /// Returns  the look-ahead of the filter: the number of input frames past the time of an output frame
    ///          that the filter reads for that frame.
    static UInt32 lookAhead(Float64 from, Float64 to, Quality quality);

    /// Convert until all input is used or the output is full. Do not mix calls of process() and convert().
    /// Shape    in, out[frame * channels + channel]; null with 0 frames.
    Progress process(const Float32* in, UInt32 frames, Float32* out, UInt32 capacity);

    /// Write `frames` frames of output. Input is pulled in calls of at most `largestPull` frames.
    void convert(Float32* out, UInt32 frames, UInt32 largestPull, const Input& input);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace kvxplatform::pcm
