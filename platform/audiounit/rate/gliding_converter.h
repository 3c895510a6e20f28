// A rate conversion whose ratio glides to a new value in equal musical steps, because a jump would click.
#pragma once

#include "platform/pcm/variable_rate_converter.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

namespace kvxplatform::audiounit {

/// Copy planar samples to interleaved samples.
inline void interleave(const Float32* const* in, UInt32 channels, UInt32 frames, Float32* out)
{
    for (UInt32 channel = 0; channel < channels; ++channel)
        for (UInt32 frame = 0; frame < frames; ++frame)
            out[std::size_t{frame} * channels + channel] = in[channel][frame];
}

// All functions but the constructor: [audio & rendering].
class GlidingConverter {
public:
    static constexpr UInt32 blockFrames = 512; ///< largest number of frames pulled at once

    /// Make a converter at a rate of 1. Throws std::bad_alloc.
    GlidingConverter(UInt32 channels, pcm::VariableRateConverter::Quality quality)
        : channels_(channels), converted_(std::size_t{blockFrames} * channels)
    {
        if (!converter_.prepare(channels, quality)) throw std::bad_alloc();
    }

    /// Clear the converter and continue at a rate, in input frames per output frame.
    void start(double rate)
    {
        converter_.reset();
        converter_.setRatio(1 / rate);
        rate_ = target_ = rate;
        stepsLeft_ = 0;
    }

    /// Start a glide to another rate, which the following frames reach step by step.
    void glideTo(double rate)
    {
        if (rate == target_) return;
        target_ = rate;
        stepFactor_ = std::pow(target_ / rate_, 1.0 / steps);
        stepsLeft_ = steps;
    }

    double rate() const { return rate_; }
    bool isGliding() const { return stepsLeft_ > 0; }

    /// Feed past input at a rate of 1 and discard the output, so that the next read() continues that input.
    template <class Pull>
    void prime(UInt32 frames, Pull pull)
    {
        converter_.reset();
        converter_.setRatio(1);
        convert(frames, frames, pull);
    }

    /// Render planar frames. `pull(frames)` returns that many interleaved input frames, valid until the next
    /// call. `advance(frames)` is called after each part of the output with the number of input frames that
    /// the part represents.
    template <class Pull, class Advance>
    void read(Float32* const* out, UInt32 frames, Pull pull, Advance advance)
    {
        for (UInt32 done = 0; done < frames;) {
            const UInt32 span = nextSpan(std::min(frames - done, blockFrames));
            converter_.setRatio(1 / rate_);
            convert(span, blockFrames, pull);
            advance(span * rate_);
            for (UInt32 channel = 0; channel < channels_; ++channel)
                for (UInt32 frame = 0; frame < span; ++frame)
                    out[channel][done + frame] = converted_[std::size_t{frame} * channels_ + channel];
            done += span;
        }
    }

private:
    static constexpr UInt32 stepFrames = 16, steps = 32;

    /// Returns  how many of the next `frames` frames to render at the present rate_. The rate changes at the
    ///          beginning of each step of a glide.
    UInt32 nextSpan(UInt32 frames)
    {
        if (stepsLeft_ == 0) return frames;
        if (framesOfStep_ == stepFrames) framesOfStep_ = 0;
        if (framesOfStep_ == 0) rate_ = --stepsLeft_ ? rate_ * stepFactor_ : target_;
        const UInt32 span = std::min(frames, stepFrames - framesOfStep_);
        framesOfStep_ += span;
        return span;
    }

    template <class Pull>
    void convert(UInt32 frames, UInt32 maxPull, Pull& pull)
    {
        const auto call = [](void* context, UInt32 count) -> const Float32* {
            return (*static_cast<Pull*>(context))(count);
        };
        converter_.convert(converted_.data(), frames, maxPull, {call, &pull});
    }

    UInt32 channels_;
    pcm::VariableRateConverter converter_;
    double rate_ = 1, target_ = 1, stepFactor_ = 1;
    UInt32 stepsLeft_ = 0;
    UInt32 framesOfStep_ = 0;        ///< number of frames rendered in the present step
    std::vector<Float32> converted_; ///< a block of interleaved output
};

} // namespace kvxplatform::audiounit
