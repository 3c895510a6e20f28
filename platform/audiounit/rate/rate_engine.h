// The interface of rate engines. An engine renders the input history at another rate or pitch; a rate unit
// crossfades between an engine and its unchanged input.
#pragma once

#include "platform/audiounit/rate/input_history.h"

namespace kvxplatform::audiounit {

struct Setting {
    double rate = 1;  ///< input frames for an output frame
    double pitch = 1; ///< frequency ratio, output to input, beyond what the engine's rate causes

    bool isNeutral() const { return rate == 1 && pitch == 1; }
};

/// The history, and the render call that can pull more into it.
struct EngineInput {
    InputHistory& history;
    InputHistory::Call& call;
};

// All functions but the constructor, destructor, latency() and tail(): [audio & rendering]. They allocate
// nothing.
class RateEngine {
public:
    virtual ~RateEngine() = default;

    /// Forget the past. The next output frame will correspond to input frame `frame`. The engine reads from
    /// `frame` - leadIn() on; frames that the history no longer holds are silence.
    virtual void start(std::int64_t frame, const Setting& setting) = 0;

    /// How many input frames before its start frame the engine reads.
    virtual std::int64_t leadIn(const Setting& setting) const = 0;

    /// Read about `frames` input frames towards the first output frame. True: ready for read().
    virtual bool prepare(EngineInput& input, std::int64_t frames) = 0;

    /// Render the next frames, planar, ramping to a setting.
    virtual void read(EngineInput& input, const Setting& setting, Float32* const* out, UInt32 frames) = 0;

    /// The input frame that the next output frame corresponds to.
    virtual double position() const = 0;

    /// Whether the output now has the rate and the pitch of the input.
    virtual bool isNeutral() const = 0;

    /// Latency and tail, in output frames.
    /// [any]
    virtual double latency(const Setting& setting) const = 0;
    virtual double tail(const Setting& setting) const = 0;
};

} // namespace kvxplatform::audiounit
