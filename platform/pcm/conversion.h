// Linear PCM of one format into another, of another sample rate too.
//
// The first frame out has the time of the first frame in. n frames in give, after draining, n * rate out /
// rate in frames, rounded up.
#pragma once

#include "platform/pcm/format_converter.h"
#include "platform/pcm/rate_converter.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace kvxplatform::pcm {

/// One thread at a time calls a conversion; no function but prepare allocates.
class Conversion {
public:
    using Quality = RateConverter::Quality;

    /// Both formats are linear PCM. False: the rates are further apart than 1 to 256, or differ while both
    /// sides have more than 128 channels. Throws std::bad_alloc.
    bool prepare(const AudioStreamBasicDescription& source, const AudioStreamBasicDescription& destination,
                 const ChannelMap& map, Quality quality);

    /// Clear the filter and the unread input.
    void reset();

    bool convertsRate() const { return rate_ != nullptr; }

    /// How many more input frames `frames` more output frames need: at least 1.
    UInt32 framesFor(UInt32 frames) const;

    /// Convert frames [first, first + frames) of `in` into frames [firstOut, firstOut + capacity) of `out`,
    /// until the input is used or the output is full. Reads and writes as FormatConverter::run.
    Progress convert(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                     UInt32 firstOut, UInt32 capacity);

    /// After the last input: write up to `capacity` frames of the rest and return how many. Only reset or
    /// another drain may follow.
    UInt32 drain(AudioBufferList& out, UInt32 firstOut, UInt32 capacity);

private:
    bool readBlock(const AudioBufferList& in, UInt32 first, UInt32 frames);
    UInt32 writeBlock(AudioBufferList& out, UInt32 firstOut, UInt32 capacity);

    FormatConverter direct_; ///< at the same rate

    // At another rate: to floats, to the other rate, from floats.
    FormatConverter toFloats_, fromFloats_;
    std::unique_ptr<RateConverter> rate_;
    UInt32 channels_ = 0;  ///< of the floats: the fewer of both sides
    UInt32 lookAhead_ = 0; ///< of the filter, frames
    Float64 sourceRate_ = 1, destinationRate_ = 1;
    std::vector<Float32> inBlock_, outBlock_;
    UInt32 unreadFrom_ = 0, unread_ = 0; ///< frames of inBlock_ that the filter has not used
    std::uint64_t framesIn_ = 0, framesOut_ = 0;
};

} // namespace kvxplatform::pcm
