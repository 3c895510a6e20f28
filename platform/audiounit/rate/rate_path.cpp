#include "platform/audiounit/rate/rate_path.h"

#include "platform/audiounit/rate/best_match.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 blockFrames = 512;
constexpr UInt32 fadeFrames = 1024;

// Before its crossfade, a starting engine reads this many input frames for each input frame that the output
// advances.
constexpr double preparationFactor = 2.25;

/// Returns  the gain of the new signal in a frame of a crossfade. The curve begins and ends flat.
Float32 fadeGain(UInt32 frame)
{
    const double x = (frame + 0.5) / fadeFrames;
    return static_cast<Float32>(x * x * (3 - 2 * x));
}

} // namespace

void RatePath::prepare(const AudioStreamBasicDescription& format)
{
    history_.prepare(format);
    planes_.resize(format.mChannelsPerFrame);
    restPlanes_.resize(format.mChannelsPerFrame);
    isFresh_ = true;
}

void RatePath::prepareForEngine(double historyFrames)
{
    if (history_.isAllocated()) return;
    nextOutput_.assign(std::size_t{blockFrames} * history_.channels(), 0);
    nextPlanes_.resize(history_.channels());
    for (UInt32 channel = 0; channel < history_.channels(); ++channel)
        nextPlanes_[channel] = nextOutput_.data() + std::size_t{channel} * blockFrames;
    // The history is allocated last, so that isAllocated() means that all memory is allocated.
    history_.allocate(historyFrames);
}

void RatePath::release(const RenderScope& scope)
{
    engines_.release(engine_);
    engines_.release(incoming_);
    engine_ = incoming_ = active_ = next_ = nullptr;
    engines_.sweep(scope);
    // Publishing null does not allocate, because no replaced engine is left.
    if (engines_.get()) engines_.publish(nullptr, scope);
    history_ = InputHistory();
    nextOutput_ = {};
    nextPlanes_ = planes_ = restPlanes_ = {};
}

void RatePath::begin(Float64 time, const RateRequest& request)
{
    isFresh_ = false;
    history_.start(time);
    inputFrame_ = 0;
    active_ = nullptr;
    change_ = Change::none;
    takeEngine();
    if (!request.usesEngine || !engine_) return;
    setting_ = request.setting;
    engine_->start(0, setting_);
    active_ = engine_;
}

/// Hold the newest engine, unless a change is in progress. If no engine is active, the newest engine becomes
/// the one to use; otherwise it will replace the active engine.
void RatePath::takeEngine()
{
    if (change_ != Change::none) return;
    if (!active_) useIncoming();
    if (!incoming_) incoming_ = engines_.hold();
    if (!active_) useIncoming();
}

void RatePath::useIncoming()
{
    if (!incoming_) return;
    engines_.release(engine_);
    engine_ = incoming_;
    incoming_ = nullptr;
}

void RatePath::startEngine(RateEngine& engine, std::int64_t frame, const Setting& setting)
{
    next_ = &engine;
    nextSetting_ = setting;
    fadeStart_ = frame;
    change_ = Change::preparing;
    engine.start(frame, setting);
}

void RatePath::startChange(const RateRequest& request)
{
    const Setting neutral;
    if (!active_) {
        if (request.usesEngine && engine_)
            startEngine(*engine_, inputFrame_ + engine_->leadIn(neutral), neutral);
    } else if (!request.usesEngine) {
        if (!active_->isNeutral()) return;
        next_ = nullptr;
        change_ = Change::fading;
        framesFaded_ = 0;
    } else if (incoming_) {
        const auto frame = static_cast<std::int64_t>(std::ceil(active_->position()));
        startEngine(*incoming_, frame + incoming_->leadIn(setting_), setting_);
    }
}

OSStatus RatePath::render(Unit& unit, Slice& slice, const RateRequest& request)
{
    AudioUnitRenderActionFlags flags = slice.flags;
    InputHistory::Call call{unit, flags, slice.time};
    EngineInput input{history_, call};
    if (isFresh_) begin(slice.time.mSampleTime, request);
    takeEngine();

    bool isPassedThrough = true;
    for (UInt32 done = 0; done < slice.frames;) {
        if (change_ == Change::none) startChange(request);
        // During a change the active engine keeps its setting.
        if (active_ && change_ == Change::none) setting_ = request.usesEngine ? request.setting : Setting{};
        isPassedThrough =
            isPassedThrough && !active_ && change_ == Change::none && inputFrame_ == history_.end();
        for (UInt32 channel = 0; channel < history_.channels(); ++channel)
            planes_[channel] = static_cast<Float32*>(slice.out.mBuffers[channel].mData) + done;
        done += renderSpan(input, planes_.data(), slice.frames - done);
        // Number of frames to keep before the position, because a crossfade to the input may begin there.
        const std::int64_t reach = active_ ? matchReach : 0;
        // floor() is a slow library call, and is only called for a fractional position.
        const std::int64_t frame =
            active_ ? static_cast<std::int64_t>(std::floor(active_->position())) : inputFrame_;
        const std::int64_t oldest = frame - reach;
        const bool isFadingToInput = change_ == Change::fading && !next_;
        history_.forget(isFadingToInput ? std::min(oldest, inputFrame_) : oldest);
    }
    // The input's silence flag applies to the output only if the output is the unchanged input.
    const AudioUnitRenderActionFlags isSilence = kAudioUnitRenderAction_OutputIsSilence;
    slice.flags = isPassedThrough ? flags : flags & ~isSilence;
    return call.status;
}

/// Render at most `frames` frames. Returns the number of frames rendered, which is 0 if the call only moved a
/// change from its preparation to its crossfade.
UInt32 RatePath::renderSpan(EngineInput& input, Float32* const* out, UInt32 frames)
{
    if (change_ == Change::fading) return crossfade(input, out, std::min(frames, blockFrames));
    if (change_ == Change::preparing) return renderBeforeFade(input, out, std::min(frames, blockFrames));
    if (active_) frames = std::min(frames, blockFrames);
    renderActive(input, out, frames);
    return frames;
}

UInt32 RatePath::renderBeforeFade(EngineInput& input, Float32* const* out, UInt32 frames)
{
    const double left = std::ceil((static_cast<double>(fadeStart_) - position()) / rate());
    if (left <= 0) {
        while (!next_->prepare(input, blockFrames)) {
        }
        change_ = Change::fading;
        framesFaded_ = 0;
        return 0;
    }
    frames = static_cast<UInt32>(std::min<double>(frames, left));
    renderActive(input, out, frames);
    next_->prepare(input, static_cast<std::int64_t>(std::ceil(frames * rate() * preparationFactor)));
    return frames;
}

UInt32 RatePath::crossfade(EngineInput& input, Float32* const* out, UInt32 frames)
{
    frames = std::min(frames, fadeFrames - framesFaded_);
    const bool isStartToInput = framesFaded_ == 0 && !next_;
    if (isStartToInput)
        inputFrame_ = std::clamp<std::int64_t>(std::llround(position()), history_.begin(), history_.end());
    renderActive(input, out, frames);
    if (isStartToInput) inputFrame_ = bestMatch(history_, inputFrame_, out, frames);
    if (next_)
        next_->read(input, nextSetting_, nextPlanes_.data(), frames);
    else
        renderInput(input, nextPlanes_.data(), frames);
    for (UInt32 frame = 0; frame < frames; ++frame) {
        const Float32 gain = fadeGain(framesFaded_ + frame);
        for (UInt32 channel = 0; channel < history_.channels(); ++channel)
            out[channel][frame] += gain * (nextPlanes_[channel][frame] - out[channel][frame]);
    }
    framesFaded_ += frames;
    if (framesFaded_ < fadeFrames) return frames;

    change_ = Change::none;
    active_ = next_;
    setting_ = nextSetting_;
    if (active_ && active_ == incoming_) useIncoming();
    return frames;
}

void RatePath::renderActive(EngineInput& input, Float32* const* out, UInt32 frames)
{
    if (active_)
        active_->read(input, setting_, out, frames);
    else
        renderInput(input, out, frames);
}

/// Render the unchanged input: first from the history, then the remaining frames directly from the source.
void RatePath::renderInput(EngineInput& input, Float32* const* out, UInt32 frames)
{
    if (change_ != Change::none) history_.pullUntil(input.call, inputFrame_ + frames);
    const auto held = static_cast<UInt32>(std::min<std::int64_t>(frames, history_.end() - inputFrame_));
    if (held) history_.copy(inputFrame_, held, out);
    inputFrame_ += held;
    if (held == frames) return;
    history_.forget(inputFrame_);
    for (UInt32 channel = 0; channel < history_.channels(); ++channel)
        restPlanes_[channel] = out[channel] + held;
    history_.pullThrough(input.call, restPlanes_.data(), frames - held);
    inputFrame_ += frames - held;
}

} // namespace kvxplatform::audiounit
