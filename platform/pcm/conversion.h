// Linear PCM into any other, of another rate too: what is put in comes out, in whatever pieces.
//
// Shape    the first frame out stands where the first frame in stood; n frames in give, once drained,
//          n x (rate out / rate in) frames, rounded up.
//
// Thread   [any], one call at a time; [audio] too, but preparing. Nothing else allocates.
#pragma once

#include "platform/pcm/rate_converter.h"
#include "platform/pcm/translation.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace kvxplatform::pcm {

class Conversion {
public:
    using Quality = RateConverter::Quality;

    /// Both formats are linear PCM. False: the rates are further apart than 1 to 256, or differ while both
    /// sides have more than 128 channels. Throws std::bad_alloc.
    bool prepare(const AudioStreamBasicDescription& from, const AudioStreamBasicDescription& to,
                 const ChannelMap& routing, Quality quality);

    /// Forget the past.
    void reset();

    bool convertsRate() const { return rate != nullptr; }

    /// How many frames have to come in for `frames` more to come out: at least 1.
    UInt32 framesFor(UInt32 frames) const;

    struct Piece {
        UInt32 used, made;
    };

    /// Convert frames [first, first + frames) of `in` into frames [firstOut, firstOut + room) of `out`, as
    /// far as both go: all of the one is used, or all of the other made. As Translation::run reads and
    /// writes.
    Piece convert(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                  UInt32 firstOut, UInt32 room);

    /// Nothing more comes in: write up to `room` frames of what is left, and say how many. Only reset or more
    /// draining may follow.
    UInt32 drain(AudioBufferList& out, UInt32 firstOut, UInt32 room);

private:
    bool takeIn(const AudioBufferList& in, UInt32 first, UInt32 frames);
    UInt32 giveOut(AudioBufferList& out, UInt32 firstOut, UInt32 room);

    Translation whole; // at the same rate

    // At another: into floats, to the rate, out of floats.
    Translation before, after;
    std::unique_ptr<RateConverter> rate;
    UInt32 channels = 0; // of the floats: the fewer of both sides
    UInt32 ahead = 0;    // frames that the filter looks ahead
    Float64 from = 1, to = 1;
    std::vector<Float32> taken, given;   // a block each
    UInt32 waitingFrom = 0, waiting = 0; // of the block taken
    std::uint64_t framesIn = 0, framesOut = 0;
};

} // namespace kvxplatform::pcm
