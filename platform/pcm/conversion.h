// Conversion of linear PCM from one format to another, with a change of the sample rate where the formats
// differ in rate.
//
// The first output frame has the time of the first input frame. After draining, n input frames have given
// n * outputRate / inputRate output frames, rounded up.
#pragma once

#include "platform/pcm/format_converter.h"
#include "platform/pcm/rate_converter.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace kvxplatform::pcm {

/// A conversion. One thread at a time calls its functions; only prepare() allocates.
class Conversion {
public:
    using Quality = RateConverter::Quality;

    /// Prepare to convert between two linear PCM formats. Throws std::bad_alloc.
    /// Returns  false if the ratio of the rates is not within 1/256 to 256, or if the rates differ and both
    ///          sides have more than 128 channels.
    bool prepare(const AudioStreamBasicDescription& source, const AudioStreamBasicDescription& destination,
                 const ChannelMap& map, Quality quality);

    /// Clear the filter and the unread input.
    void reset();

    bool convertsRate() const { return rate_ != nullptr; }

    /// Returns  how many more input frames the conversion needs for `frames` more output frames, at least 1.
    UInt32 framesFor(UInt32 frames) const;

    /// Convert frames [first, first + frames) of `in` into frames [firstOut, firstOut + capacity) of `out`,
    /// until all input is used or the output is full. `in` and `out` have the shape that FormatConverter::run
    /// states.
    Progress convert(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                     UInt32 firstOut, UInt32 capacity);

    /// Write up to `capacity` remaining output frames after the last input. Only reset() or another drain()
    /// may follow.
    /// Returns  the number of frames written.
    UInt32 drain(AudioBufferList& out, UInt32 firstOut, UInt32 capacity);

private:
    bool readBlock(const AudioBufferList& in, UInt32 first, UInt32 frames);
    UInt32 writeBlock(AudioBufferList& out, UInt32 firstOut, UInt32 capacity);

    FormatConverter direct_; ///< converter for formats of equal rate

    // For formats of different rates: conversion to floats, to the other rate, then from floats.
    FormatConverter toFloats_, fromFloats_;
    std::unique_ptr<RateConverter> rate_;
    UInt32 channels_ = 0;  ///< channels of the floats: the channel count of the side with fewer channels
    UInt32 lookAhead_ = 0; ///< look-ahead of the filter in input frames
    Float64 sourceRate_ = 1, destinationRate_ = 1;
    std::vector<Float32> inBlock_, outBlock_;
    UInt32 unreadFrom_ = 0, unread_ = 0; ///< frames of inBlock_ that the filter has not used
    std::uint64_t framesIn_ = 0, framesOut_ = 0;
};

} // namespace kvxplatform::pcm
