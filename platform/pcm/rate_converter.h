// Conversion of interleaved floats from one sample rate to another.
//
// The first frame out has the time of the first frame in: the filter looks ahead and does not delay.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <memory>

namespace kvxplatform::pcm {

/// How far a conversion went.
struct Progress {
    UInt32 used; ///< input frames
    UInt32 made; ///< output frames
};

/// One thread at a time calls a converter; no function but prepare allocates.
class RateConverter {
public:
    enum class Quality { fast, normal, best };

    /// A source of input for convert.
    struct Input {
        /// Return `frames` more frames, [frame * channels + channel], valid until the next call.
        const Float32* (*pull)(void* context, UInt32 frames);
        void* context;
    };

    RateConverter();
    ~RateConverter();
    RateConverter(const RateConverter&) = delete;

    /// Whether the ratio of two positive rates is within 1/256 to 256.
    static bool takes(Float64 from, Float64 to);

    /// False for a ratio that is not taken, and for no or more than 128 channels. Throws std::bad_alloc.
    bool prepare(Float64 from, Float64 to, UInt32 channels, Quality quality);

    /// Set the ratio, frames out per frame in, of the next frames out; 1/256 to 256. A small step is
    /// inaudible.
    void setRatio(double ratio);

    /// Clear the filter and the unread input.
    void reset();

    /// How many input frames past its own time a frame of output needs.
    static UInt32 lookAhead(Float64 from, Float64 to, Quality quality);

    /// Convert until the input is used or the output is full. Not to be mixed with convert.
    /// Shape    in, out[frame * channels + channel]; null with 0 frames.
    Progress process(const Float32* in, UInt32 frames, Float32* out, UInt32 capacity);

    /// Write `frames` frames of output, with input pulled in at most `largestPull` frames per call.
    void convert(Float32* out, UInt32 frames, UInt32 largestPull, const Input& input);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace kvxplatform::pcm
