// What plays the tape at another rate or pitch: one for each way to do it. A rate unit fades between a voice
// and the input as it is.
#pragma once

#include "platform/audiounit/rate/input_tape.h"

namespace kvxplatform::audiounit {

/// How the tape is to be played.
struct Setting {
    double rate = 1;  // input frames for a frame out
    double pitch = 1; // of a frequency out to the same one in, where that is not the rate's doing

    bool isNeutral() const { return rate == 1 && pitch == 1; }
};

/// The tape, and how to get more of it.
struct Reader {
    InputTape& tape;
    InputTape::Request& request;
};

/// Thread [audio & in a slice] throughout, and nothing allocates; but a voice is made and destroyed
/// elsewhere.
class Voice {
public:
    virtual ~Voice() = default;

    /// Forget the past. The next frame heard stands where input frame `frame` stands. `frame` - leadIn() and
    /// what follows is what the voice will ask for; where it is not on the tape any more, it hears silence.
    virtual void start(std::int64_t frame, const Setting& setting) = 0;

    /// Input frames that a voice wants to have heard before its first.
    virtual std::int64_t leadIn(const Setting& setting) const = 0;

    /// Get ready to be heard, taking about `most` input frames. True: ready.
    virtual bool prepare(Reader& reader, std::int64_t most) = 0;

    /// The next frames, on the way to a setting.
    virtual void read(Reader& reader, const Setting& setting, Float32* const* out, UInt32 frames) = 0;

    /// Where the next frame heard stands in the input.
    virtual double position() const = 0;

    /// Whether what is heard is as it is in the input.
    virtual bool isNeutral() const = 0;

    /// What comes later than it is pulled, and what sounds on behind the last frame: output frames. Thread
    /// [any].
    virtual double framesAhead(const Setting& setting) const = 0;
    virtual double framesOfTail(const Setting& setting) const = 0;
};

} // namespace kvxplatform::audiounit
