// The signal path of a rate unit: the unchanged input, a rate engine, or a crossfade between two of these.
//
// Fade-in: an engine starts at an input frame ahead of the output, at the rate and pitch of the present
// output. In every slice it reads a little more input than the slice uses, until the output reaches its start
// frame. The crossfade then joins two similar signals, and after the crossfade the engine ramps to its
// setting. Fade-out: the engine first ramps to the input's rate and pitch. The first slice needs no
// crossfade, so its engine starts at its setting.
#pragma once

#include "platform/audiounit/rate/rate_engine.h"
#include "platform/support/published.h"

#include <vector>

namespace kvxplatform::audiounit {

/// The setting that the unit's properties and parameters request.
struct RateRequest {
    bool usesEngine = false; ///< whether an engine is needed; otherwise the unchanged input is rendered
    Setting setting;
};

class RatePath {
public:
    /// Allocate the memory for rendering the unchanged input. Throws std::bad_alloc.
    /// [any & stopped]
    void prepare(const AudioStreamBasicDescription& format);

    /// Free the engines and all memory. The caller holds the `settings` lock.
    /// [any & stopped]
    void release(const RenderScope& scope);

    /// Allocate the memory for rendering with an engine, if this has not been done yet. The caller holds the
    /// `settings` lock. Throws std::bad_alloc.
    /// [any]
    void prepareForEngine(double historyFrames);

    /// Hand an engine to the render thread, which replaces its present engine. The caller holds the
    /// `settings` lock. Throws std::bad_alloc.
    /// [any]
    void publish(std::unique_ptr<RateEngine> engine, const RenderScope& scope)
    {
        engines_.publish(std::move(engine), scope);
    }

    /// Returns  the engine that was published last; null if there is none. The caller holds the `settings`
    ///          lock.
    /// [any]
    const RateEngine* engine() const { return engines_.get(); }

    /// Request that the next slice starts anew, without the past input.
    /// [audio & rendering]
    void reset() { isFresh_ = true; }

    /// Render a slice. Allocates nothing.
    /// Returns  the status of the last pull that failed.
    /// [audio & rendering]
    OSStatus render(Unit& unit, Slice& slice, const RateRequest& request);

    /// Returns  the number of input frames that were pulled and have not been rendered.
    /// [audio & rendering]
    double framesAhead() const { return static_cast<double>(history_.end()) - position(); }

    /// Returns  the present rate, in input frames per output frame.
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

    // The state of the render thread.
    // [audio & rendering]
    RateEngine* engine_ = nullptr;   ///< held engine that is used when a setting needs one
    RateEngine* incoming_ = nullptr; ///< held engine that replaces `engine_` by a crossfade
    RateEngine* active_ = nullptr;   ///< engine rendered now; null for the unchanged input
    Setting setting_;                ///< setting of the active engine
    std::int64_t inputFrame_ = 0;    ///< next frame of the unchanged input
    bool isFresh_ = true;

    Change change_ = Change::none;
    RateEngine* next_ = nullptr; ///< engine to which the present change leads; null for the unchanged input
    Setting nextSetting_;
    std::int64_t fadeStart_ = 0; ///< input frame where the crossfade begins
    UInt32 framesFaded_ = 0;

    /// A planar block of the signal that a crossfade fades in.
    std::vector<Float32> nextOutput_;
    std::vector<Float32*> nextPlanes_, planes_, restPlanes_;
};

} // namespace kvxplatform::audiounit
