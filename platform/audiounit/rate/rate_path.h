// The signal path of a rate unit: the unchanged input, a rate engine, or a crossfade between two of these.
//
// To fade in, an engine starts at an input frame ahead of the output, at the rate and pitch of the present
// output, and reads a little more than its share of input in every slice until the output gets there. The
// crossfade joins two signals that sound alike; after it the engine ramps to its setting. To fade out, the
// engine ramps to the input's rate and pitch first. The first slice needs no crossfade: an engine starts at
// its setting.
#pragma once

#include "platform/audiounit/rate/rate_engine.h"
#include "platform/support/published.h"

#include <vector>

namespace kvxplatform::audiounit {

/// What the unit shall render.
struct RateRequest {
    bool usesEngine = false; ///< otherwise the unchanged input
    Setting setting;
};

class RatePath {
public:
    /// Allocate what rendering the unchanged input needs. Throws std::bad_alloc.
    /// [any & stopped]
    void prepare(const AudioStreamBasicDescription& format);

    /// Free the engines and all memory.
    /// [any & stopped], with settings
    void release(const RenderScope& scope);

    /// Allocate once what rendering with an engine needs. Throws std::bad_alloc.
    /// [any], with settings
    void prepareForEngine(double historyFrames);

    /// Hand an engine to the render thread, which replaces its present one. Throws std::bad_alloc.
    /// [any], with settings
    void publish(std::unique_ptr<RateEngine> engine, const RenderScope& scope)
    {
        engines_.publish(std::move(engine), scope);
    }

    /// The engine published last, or null.
    /// [any], with settings
    const RateEngine* engine() const { return engines_.get(); }

    /// Forget the past with the next slice.
    /// [audio & rendering]
    void reset() { isFresh_ = true; }

    /// Render a slice. Allocates nothing.
    /// Returns  the status of the last pull that failed.
    /// [audio & rendering]
    OSStatus render(Unit& unit, Slice& slice, const RateRequest& request);

    /// Input frames that were pulled and not rendered.
    /// [audio & rendering]
    double framesAhead() const { return static_cast<double>(history_.end()) - position(); }

    /// Input frames for an output frame.
    /// [audio & rendering]
    double rate() const { return active_ ? setting_.rate : 1; }

private:
    enum class Change { none, preparing, fading };

    void begin(Float64 time, const RateRequest& request);
    void takeEngine();
    void useIncoming();
    void startChange(const RateRequest& request);
    void startEngine(RateEngine& engine, std::int64_t frame, const Setting& setting);
    UInt32 renderSpan(EngineInput& input, Float32* const* out, UInt32 frames);
    UInt32 renderBeforeFade(EngineInput& input, Float32* const* out, UInt32 frames);
    UInt32 crossfade(EngineInput& input, Float32* const* out, UInt32 frames);
    void renderActive(EngineInput& input, Float32* const* out, UInt32 frames);
    void renderInput(EngineInput& input, Float32* const* out, UInt32 frames);
    double position() const { return active_ ? active_->position() : static_cast<double>(inputFrame_); }

    Published<RateEngine> engines_;
    InputHistory history_;

    // [audio & rendering]
    RateEngine* engine_ = nullptr;   ///< held; used when a setting needs one
    RateEngine* incoming_ = nullptr; ///< held; replaces `engine_` by a crossfade
    RateEngine* active_ = nullptr;   ///< rendered now; null for the unchanged input
    Setting setting_;                ///< of the active engine
    std::int64_t inputFrame_ = 0;    ///< the next frame of the unchanged input
    bool isFresh_ = true;

    Change change_ = Change::none;
    RateEngine* next_ = nullptr; ///< what a change leads to
    Setting nextSetting_;
    std::int64_t fadeStart_ = 0; ///< input frame where the crossfade begins
    UInt32 framesFaded_ = 0;

    std::vector<Float32> nextOutput_; ///< a block of what a crossfade leads to, planar
    std::vector<Float32*> nextPlanes_, planes_, restPlanes_;
};

} // namespace kvxplatform::audiounit
