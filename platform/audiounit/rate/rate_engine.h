// The interface of rate engines. An engine renders the input history at another rate or pitch. A rate unit
// crossfades between an engine and the unchanged input.
#pragma once

#include "platform/audiounit/rate/input_history.h"

namespace kvxplatform::audiounit {

struct Setting {
    double rate = 1; ///< number of input frames per output frame
    /// Frequency ratio of output to input, in addition to the change of pitch that an engine's rate causes.
    double pitch = 1;

    bool isNeutral() const { return rate == 1 && pitch == 1; }
};

/// The input of an engine: the history, and the render call that can pull more input into the history.
struct EngineInput {
    InputHistory& history;
    InputHistory::Call& call;
};

// All functions but the constructor, destructor, latency() and tail(): [audio & rendering].
// These functions allocate nothing.
class RateEngine {
public:
    virtual ~RateEngine() = default;

    /// Clear the engine. The next output frame will correspond to input frame `frame`. The engine reads input
    /// from `frame` - leadIn() on; frames that the history no longer contains are silence.
    virtual void start(std::int64_t frame, const Setting& setting) = 0;

    /// Returns  how many input frames before its start frame the engine reads.
    virtual std::int64_t leadIn(const Setting& setting) const = 0;

    /// Read about `frames` input frames on the way to the first output frame.
    /// Returns  true when read() can be called.
    virtual bool prepare(EngineInput& input, std::int64_t frames) = 0;

    /// Render the next frames, planar, and ramp to a setting.
    virtual void read(EngineInput& input, const Setting& setting, Float32* const* out, UInt32 frames) = 0;

    /// Returns  the input frame to which the next output frame corresponds.
    virtual double position() const = 0;

    /// Whether the output now has the rate and the pitch of the input.
    virtual bool isNeutral() const = 0;

    /// Returns  the latency or the tail at a setting, in output frames.
    /// [any]
    virtual double latency(const Setting& setting) const = 0;
    virtual double tail(const Setting& setting) const = 0;
};

} // namespace kvxplatform::audiounit
