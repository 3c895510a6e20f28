// Conversion of interleaved floats between two fixed sample rates.
//
// The first output frame has the time of the first input frame. The resampling library works in blocks and
// returns its output in bursts, so the converter reads a constant number of input frames ahead of its output
// and keeps the output of these frames in reserve. Slices of equal length then need equal amounts of input.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <cstdint>
#include <memory>
#include <vector>

struct soxr;

namespace kvxplatform::pcm {

/// A rate converter. One thread at a time calls its functions; only prepare() allocates.
class FixedRateConverter {
public:
    enum class Quality { high, veryHigh };

    /// Frames in the converter's memory: [frame * channels + channel].
    struct Span {
        Float32* samples;
        UInt32 frames;
    };

    /// Whether the ratio of two positive rates is within 1/256 to 256.
    static bool accepts(Float64 from, Float64 to);

    /// Prepare to convert between two rates. Throws std::bad_alloc.
    /// Returns  false if accepts(from, to) is false, or if `channels` is 0 or more than 128.
    bool prepare(Float64 from, Float64 to, UInt32 channels, Quality quality);

    /// Discard all input and output; the next input frame is the first one again. The output equals that of a
    /// new converter to within rounding. If the rates have no common period of up to 2,048 input frames, the
    /// output is shifted by at most half an output frame. A new converter does not change.
    void reset();

    /// Returns  the number of input frames that the converter reads ahead of its output.
    UInt32 lead() const { return lead_; }

    /// Returns  how many more input frames the converter needs for `frames` more output frames and the lead.
    UInt32 framesFor(UInt32 frames) const;

    /// Returns  the memory for the next input frames; no frames while too much output is in reserve.
    Span freeInput();

    /// Convert input frames that the caller has written to freeInput(). Samples that are not finite count as
    /// 0, because they would spoil a whole block.
    void addInput(UInt32 frames);

    /// Convert silence, a block at most. The silence does not count as input.
    void addSilence();

    /// Returns  the output in reserve.
    Span output();

    /// Discard the first frames of output().
    void removeOutput(UInt32 frames);

    /// Returns  the number of output frames that the input represents and that removeOutput() has not
    ///          discarded yet.
    std::uint64_t framesLeft() const;

private:
    struct FreeResampler {
        void operator()(soxr* resampler) const;
    };

    void settle();
    void startAgain(UInt32 period);
    UInt32 reserve() const { return outputEnd_ - outputBegin_; }
    void feedSilence(std::uint64_t most);
    void extendBlock(UInt32 frames);
    void convertBlock();
    UInt32 process(const Float32* in, UInt32 frames, Float32* out, UInt32 capacity);

    static constexpr UInt32 blockFrames_ = 64;

    std::unique_ptr<soxr, FreeResampler> resampler_;
    Float64 from_ = 1, to_ = 1;
    UInt32 channels_ = 0;
    UInt32 lead_ = 0;             ///< input frames ahead of the output
    UInt32 largestBurst_ = 0;     ///< the most output frames that a block gives
    UInt32 period_ = 1;           ///< input frames that last a whole number of output frames
    std::vector<Float32> block_;  ///< the next block of input
    UInt32 blockFill_ = 0;        ///< number of frames in block_
    std::vector<Float32> output_; ///< output in reserve: frames [outputBegin_, outputEnd_)
    UInt32 outputBegin_ = 0, outputEnd_ = 0;

    // These counts begin at the resampler's first frame.
    std::uint64_t fed_ = 0, made_ = 0;               ///< input and output of the resampler, in frames
    std::uint64_t firstInput_ = 0, firstOutput_ = 0; ///< positions of the first frames after a reset

    // These counts begin at the last reset.
    std::uint64_t framesIn_ = 0, framesOut_ = 0; ///< input added, output removed
};

} // namespace kvxplatform::pcm
