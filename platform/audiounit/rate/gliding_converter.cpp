#include "platform/audiounit/rate/gliding_converter.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace kvxplatform::audiounit {

GlidingConverter::GlidingConverter(UInt32 channels, pcm::RateConverter::Quality quality)
    : channels_(channels), converted_(std::size_t{blockFrames} * channels)
{
    if (!converter_.prepare(1, 1, channels, quality)) throw std::bad_alloc();
}

void GlidingConverter::start(double rate)
{
    converter_.reset();
    converter_.setRatio(1 / rate);
    rate_ = target_ = rate;
    stepsLeft_ = 0;
}

void GlidingConverter::glideTo(double rate)
{
    if (rate == target_) return;
    target_ = rate;
    stepFactor_ = std::pow(target_ / rate_, 1.0 / steps);
    stepsLeft_ = steps;
}

/// How many frames, at most `frames`, to render at rate(), which is updated at the beginning of each step.
UInt32 GlidingConverter::nextSpan(UInt32 frames)
{
    if (stepsLeft_ == 0) return frames;
    if (framesOfStep_ == stepFrames) framesOfStep_ = 0;
    if (framesOfStep_ == 0) rate_ = --stepsLeft_ ? rate_ * stepFactor_ : target_;
    const UInt32 span = std::min(frames, stepFrames - framesOfStep_);
    framesOfStep_ += span;
    return span;
}

void GlidingConverter::deinterleave(Float32* const* out, UInt32 offset, UInt32 frames) const
{
    for (UInt32 channel = 0; channel < channels_; ++channel)
        for (UInt32 frame = 0; frame < frames; ++frame)
            out[channel][offset + frame] = converted_[std::size_t{frame} * channels_ + channel];
}

} // namespace kvxplatform::audiounit
