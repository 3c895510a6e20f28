#include "platform/audiounit/rate/stretcher.h"

#include <cmath>

namespace kvxplatform::audiounit {
namespace {

using RubberBand::RubberBandStretcher;

constexpr UInt32 blockFrames = 1024; // largest number of frames given to Rubber Band at once

// A level far above full scale. The phases in Rubber Band never recover from an infinite sample or a NaN.
constexpr Float32 maxSample = 1e9f;

constexpr int common = RubberBandStretcher::OptionProcessRealTime |
                       RubberBandStretcher::OptionThreadingNever | RubberBandStretcher::OptionEngineFiner |
                       RubberBandStretcher::OptionChannelsTogether;
constexpr int options[] = {common, common | RubberBandStretcher::OptionWindowShort};

// Returns  the nearest sample rate that Rubber Band supports. At other rates Rubber Band works as at that
//          rate.
std::size_t supportedRate(Float64 sampleRate)
{
    return static_cast<std::size_t>(std::clamp(sampleRate, 8000.0, 192000.0));
}

} // namespace

Stretcher::Stretcher(Float64 sampleRate, UInt32 channels, Mode mode)
    : rubberBand_(supportedRate(sampleRate), channels, options[static_cast<int>(mode)]),
      silence_(blockFrames, 0), finite_(std::size_t{blockFrames} * channels), dropped_(finite_.size()),
      in_(channels), planes_(channels)
{
    rubberBand_.setMaxProcessSize(blockFrames);
    pad_ = static_cast<UInt32>(rubberBand_.getPreferredStartPad());
    delay_ = static_cast<UInt32>(rubberBand_.getStartDelay());
}

// With Rubber Band's preferred pad the first window begins at the first frame. Output has full level only
// where all windows overlap, so the lead-in is longer than the pad, and the output of the lead-in is dropped.
std::int64_t Stretcher::leadIn(double ratio) const
{
    return pad_ + static_cast<std::int64_t>(std::ceil(delay_ / ratio));
}

void Stretcher::start(std::int64_t frame, double ratio)
{
    rubberBand_.reset();
    rubberBand_.setTimeRatio(ratio);
    ratio_ = ratio;
    nextInput_ = frame - leadIn(ratio);
    framesToDrop_ = delay_ + std::llround(static_cast<double>(leadIn(ratio) - pad_) * ratio);
    unsettledFrames_ = 0;
}

void Stretcher::setRatio(double ratio)
{
    if (ratio == ratio_) return;
    rubberBand_.setTimeRatio(ratio);
    ratio_ = ratio;
    unsettledFrames_ = std::int64_t{2} * delay_ + rubberBand_.available();
}

void Stretcher::process(UInt32 frames)
{
    rubberBand_.process(in_.data(), frames, false);
    nextInput_ += frames;
}

/// Copy the input, with silence in place of samples that are not finite or too large.
void Stretcher::silenceInvalid(UInt32 frames)
{
    for (std::size_t channel = 0; channel < in_.size(); ++channel) {
        const Float32* from = in_[channel];
        Float32* to = finite_.data() + channel * blockFrames;
        for (UInt32 frame = 0; frame < frames; ++frame)
            to[frame] = std::fabs(from[frame]) <= maxSample ? from[frame] : 0;
        in_[channel] = to;
    }
}

/// Give Rubber Band the input of its next window, or a block of that input. Called when no output is
/// available, because only then does getSamplesRequired() state where the window ends.
void Stretcher::feed(EngineInput& input)
{
    const std::size_t required = std::max<std::size_t>(rubberBand_.getSamplesRequired(), 1);
    const auto count = static_cast<UInt32>(std::min<std::size_t>(required, blockFrames));
    windowEnd_ = nextInput_ + static_cast<std::int64_t>(required);
    readSinceWindow_ = 0;
    const std::int64_t missing = input.history.begin() - nextInput_;
    if (missing > 0) {
        std::fill(in_.begin(), in_.end(), silence_.data());
        process(static_cast<UInt32>(std::min<std::int64_t>(missing, count)));
        return;
    }
    input.history.pullUntil(input.call, nextInput_ + count);
    for (UInt32 done = 0; done < count;) {
        const UInt32 frames = input.history.look(nextInput_, count - done, in_.data());
        silenceInvalid(frames);
        process(frames);
        done += frames;
    }
}

UInt32 Stretcher::retrieve(Float32* const* out, std::int64_t maxFrames)
{
    const std::int64_t available = std::min<std::int64_t>(maxFrames, rubberBand_.available());
    if (available <= 0) return 0;
    const std::size_t frames = rubberBand_.retrieve(out, static_cast<std::size_t>(available));
    readSinceWindow_ += static_cast<std::int64_t>(frames);
    return static_cast<UInt32>(frames);
}

void Stretcher::dropStart()
{
    for (std::size_t channel = 0; channel < planes_.size(); ++channel)
        planes_[channel] = dropped_.data() + channel * blockFrames;
    while (framesToDrop_ > 0) {
        const UInt32 frames = retrieve(planes_.data(), std::min<std::int64_t>(framesToDrop_, blockFrames));
        if (frames == 0) return;
        framesToDrop_ -= frames;
    }
}

bool Stretcher::prepare(EngineInput& input, std::int64_t frames)
{
    const std::int64_t end = nextInput_ + frames;
    for (;;) {
        dropStart();
        if (framesToDrop_ == 0 && rubberBand_.available() > 0) return true;
        if (nextInput_ >= end) return false;
        feed(input);
    }
}

void Stretcher::read(EngineInput& input, Float32* const* out, UInt32 frames)
{
    for (UInt32 done = 0; done < frames;) {
        while (!prepare(input, blockFrames)) {
        }
        for (std::size_t channel = 0; channel < planes_.size(); ++channel)
            planes_[channel] = out[channel] + done;
        done += retrieve(planes_.data(), frames - done);
    }
    unsettledFrames_ = std::max<std::int64_t>(unsettledFrames_ - frames, 0);
}

// The newest window extends `pad_` frames to either side of its middle. The first output frame after the
// completion of that window lies `delay_` output frames before the middle.
double Stretcher::position(double framesAgo) const
{
    const auto frames = static_cast<double>(readSinceWindow_) - delay_ - framesAgo;
    return static_cast<double>(windowEnd_ - pad_) + frames / ratio_;
}

} // namespace kvxplatform::audiounit
