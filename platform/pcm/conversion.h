// Conversion of linear PCM from one format to another, with a change of the sample rate where the formats
// differ in rate.
//
// The first output frame has the time of the first input frame. After draining, n input frames have given
// n * outputRate / inputRate output frames, rounded up.
#pragma once

#include "platform/pcm/fixed_rate_converter.h"
#include "platform/pcm/format_converter.h"

#include <optional>

namespace kvxplatform::pcm {

/// The number of frames that a call of a conversion used and made.
struct Progress {
    UInt32 used; ///< number of input frames used
    UInt32 made; ///< number of output frames made
};

/// A conversion. One thread at a time calls its functions; only prepare() allocates.
class Conversion {
public:
    using Quality = FixedRateConverter::Quality;

    /// Prepare to convert between two linear PCM formats. Throws std::bad_alloc.
    /// Returns  false if the ratio of the rates is not within 1/256 to 256, or if the rates differ and both
    ///          sides have more than 128 channels.
    bool prepare(const AudioStreamBasicDescription& source, const AudioStreamBasicDescription& destination,
                 const ChannelMap& map, Quality quality);

    /// Discard all input, as FixedRateConverter::reset() does.
    void reset();

    bool convertsRate() const { return rate_.has_value(); }

    /// Returns  the number of input frames that the conversion reads ahead of its output; 0 at equal rates.
    UInt32 lead() const { return rate_ ? rate_->lead() : 0; }

    /// Returns  how many more input frames the conversion needs for `frames` more output frames and the lead.
    UInt32 framesFor(UInt32 frames) const { return rate_ ? rate_->framesFor(frames) : frames; }

    /// Convert frames [first, first + frames) of `in` into frames [firstOut, firstOut + capacity) of `out`.
    /// Stops when the output is full and the reserve for the lead is full, or all input is used. `in` and
    /// `out` have the shape that FormatConverter::run states.
    Progress convert(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                     UInt32 firstOut, UInt32 capacity);

    /// Write up to `capacity` remaining output frames after the last input. Only reset() or another drain()
    /// may follow.
    /// Returns  the number of frames written.
    UInt32 drain(AudioBufferList& out, UInt32 firstOut, UInt32 capacity);

private:
    UInt32 readInput(const AudioBufferList& in, UInt32 first, UInt32 frames);
    UInt32 writeOutput(AudioBufferList& out, UInt32 firstOut, UInt32 capacity);

    FormatConverter direct_; ///< converter for formats of equal rate

    // For formats of different rates: conversion to floats, to the other rate, then from floats.
    FormatConverter toFloats_, fromFloats_;
    std::optional<FixedRateConverter> rate_;
    UInt32 channels_ = 0; ///< channels of the floats: the channel count of the side with fewer channels
};

} // namespace kvxplatform::pcm
