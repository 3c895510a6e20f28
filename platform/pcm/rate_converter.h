// Rate conversion: frames at one rate into frames at another, given in pieces, or pulled as they are needed.
//
// The first frame out stands where the first frame in stood: the filter looks ahead instead of delaying.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <memory>

namespace kvxplatform::pcm {

class RateConverter {
public:
    enum class Quality { fast, normal, best };

    /// Gives `frames` more input frames, interleaved, valid until it is asked again.
    struct Input {
        const Float32* (*pull)(void* context, UInt32 frames);
        void* context;
    };

    RateConverter();
    ~RateConverter();
    RateConverter(const RateConverter&) = delete;

    /// Whether two rates, both positive, are close enough: from 1 to 256 to 256 to 1.
    static bool takes(Float64 from, Float64 to);

    /// False: the rates are further apart than 1 to 256, or there are too many channels (more than 128).
    /// Throws std::bad_alloc.
    bool prepare(Float64 from, Float64 to, UInt32 channels, Quality quality);

    /// Another ratio, frames out for a frame in, from the next frame out on. 1 to 256 either way. Small steps
    /// are not heard. Allocates nothing.
    void setRatio(double ratio);

    /// Forget the past.
    void reset();

    /// How far ahead of its place the filter looks: so many frames more must be in before a frame comes out.
    static UInt32 lookAhead(Float64 from, Float64 to, Quality quality);

    struct Piece {
        UInt32 used, made;
    };

    /// Take up to `frames` frames of input and give up to `room` frames of output, as far as both go. Either
    /// may be 0, and then its pointer null. Allocates nothing. Not to be mixed with convert.
    Piece process(const Float32* in, UInt32 frames, Float32* out, UInt32 room);

    /// `frames` frames of output, pulled in pieces of at most `largestPull`. Allocates nothing.
    void convert(Float32* out, UInt32 frames, UInt32 largestPull, const Input& input);

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace kvxplatform::pcm
