// Conversion of interleaved floats between two sample rates whose ratio may change during the conversion.
//
// The first output frame has the time of the first input frame: the filter looks ahead and does not delay.
// For a constant ratio, FixedRateConverter is faster and flatter.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <memory>

namespace kvxplatform::pcm {

/// A rate converter. One thread at a time calls its functions; only prepare() allocates.
class VariableRateConverter {
public:
    enum class Quality { fast, normal };

    /// A source from which convert() pulls input.
    struct Input {
        /// Return the next `frames` frames as [frame * channels + channel], valid until the next call.
        const Float32* (*pull)(void* context, UInt32 frames);
        void* context;
    };

    VariableRateConverter();
    ~VariableRateConverter();
    VariableRateConverter(const VariableRateConverter&) = delete;

    /// Prepare to convert 1 to 128 channels, at a ratio of 1. Throws std::bad_alloc.
    /// Returns  false for another channel count.
    bool prepare(UInt32 channels, Quality quality);

    /// Set the ratio of the following output frames, as output frames per input frame, 1/256 to 256. A small
    /// step of the ratio is inaudible.
    void setRatio(double ratio);

    /// Clear the filter and the unread input.
    void reset();

    /// Returns  the look-ahead of the filter: the number of input frames past the time of an output frame
    ///          that the filter reads for that frame.
    static UInt32 lookAhead(double ratio, Quality quality);

    /// Write `frames` frames of output. Input is pulled in calls of at most `largestPull` frames.
    void convert(Float32* out, UInt32 frames, UInt32 largestPull, const Input& input);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace kvxplatform::pcm
