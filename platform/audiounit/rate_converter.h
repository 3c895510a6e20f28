// Rate conversion by pulling: asked for frames at one rate, it asks for as many as it needs at the other.
//
// The first frame out stands where the first frame in stood: the filter looks ahead instead of delaying.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <memory>

namespace kvxplatform::audiounit {

class RateConverter {
public:
    enum class Quality { normal, best };

    /// Gives `frames` more input frames, interleaved, valid until it is asked again.
    struct Input {
        const Float32* (*pull)(void* context, UInt32 frames);
        void* context;
    };

    RateConverter();
    ~RateConverter();
    RateConverter(const RateConverter&) = delete;

    /// False: the rates are further apart than 1 to 256, or there are too many channels (more than 128).
    /// Throws std::bad_alloc.
    bool prepare(Float64 from, Float64 to, UInt32 channels, Quality quality);

    /// Forget the past.
    void reset();

    /// `frames` frames of output, pulled in pieces of at most `largestPull`. Allocates nothing.
    void convert(Float32* out, UInt32 frames, UInt32 largestPull, const Input& input);

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace kvxplatform::audiounit
