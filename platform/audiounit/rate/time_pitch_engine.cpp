#include "platform/audiounit/rate/time_pitch_engine.h"

#include <algorithm>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 blockFrames = GlidingConverter::blockFrames;

// Number of past frames that a conversion needs when it begins in the middle of the sound: more than half the
// filter length.
constexpr UInt32 recentFrames = 32;

double stretchRatio(const Setting& setting) { return setting.pitch / setting.rate; }

} // namespace

// The fast filter is sufficient for the converter, because the filter's error is far below that of the
// stretcher.
TimePitchEngine::TimePitchEngine(const AudioStreamBasicDescription& format, Stretcher::Mode mode)
    : channels_(format.mChannelsPerFrame), stretcher_(format.mSampleRate, channels_, mode),
      converter_(channels_, pcm::VariableRateConverter::Quality::fast),
      stretched_(std::size_t{blockFrames} * channels_), pulled_(stretched_.size()), planes_(channels_),
      recent_(std::size_t{recentFrames} * channels_)
{
}

void TimePitchEngine::start(std::int64_t frame, const Setting& setting)
{
    stretcher_.start(frame, stretchRatio(setting));
    converter_.start(setting.pitch);
    isConverting_ = setting.pitch != 1;
    unplayed_ = 0;
    std::fill(recent_.begin(), recent_.end(), 0.0f);
}

std::int64_t TimePitchEngine::leadIn(const Setting& setting) const
{
    return stretcher_.leadIn(stretchRatio(setting));
}

bool TimePitchEngine::prepare(EngineInput& input, std::int64_t frames)
{
    return stretcher_.prepare(input, frames);
}

const Float32* TimePitchEngine::pull(EngineInput& input, UInt32 frames)
{
    for (UInt32 channel = 0; channel < channels_; ++channel)
        planes_[channel] = stretched_.data() + std::size_t{channel} * blockFrames;
    stretcher_.read(input, planes_.data(), frames);
    interleave(planes_.data(), channels_, frames, pulled_.data());
    unplayed_ += frames;
    return pulled_.data();
}

/// Feed the recent output to the converter, so that the output of the converter continues that output.
void TimePitchEngine::beginConversion(EngineInput& input)
{
    bool isPastFed = false;
    converter_.prime(recentFrames, [&](UInt32 frames) -> const Float32* {
        if (isPastFed) return pull(input, frames);
        isPastFed = true;
        return recent_.data();
    });
    isConverting_ = true;
}

void TimePitchEngine::readStretched(EngineInput& input, Float32* const* out, UInt32 frames)
{
    stretcher_.read(input, out, frames);
    const UInt32 kept = std::min(frames, recentFrames);
    std::move(recent_.begin() + static_cast<std::ptrdiff_t>(kept * channels_), recent_.end(),
              recent_.begin());
    for (UInt32 channel = 0; channel < channels_; ++channel)
        planes_[channel] = out[channel] + (frames - kept);
    interleave(planes_.data(), channels_, kept,
               recent_.data() + std::size_t{recentFrames - kept} * channels_);
}

void TimePitchEngine::read(EngineInput& input, const Setting& setting, Float32* const* out, UInt32 frames)
{
    stretcher_.setRatio(stretchRatio(setting));
    converter_.glideTo(setting.pitch);
    if (!isConverting_ && !converter_.isGliding()) return readStretched(input, out, frames);
    if (!isConverting_) beginConversion(input);
    converter_.read(
        out, frames, [&](UInt32 count) { return pull(input, count); },
        [&](double inputFrames) { unplayed_ -= inputFrames; });
}

bool TimePitchEngine::isNeutral() const
{
    return !converter_.isGliding() && converter_.rate() == 1 && stretcher_.isSettled() &&
           stretcher_.ratio() == 1;
}

double TimePitchEngine::latency(const Setting& setting) const
{
    return stretcher_.latency(stretchRatio(setting)) / setting.rate;
}

double TimePitchEngine::tail(const Setting& setting) const
{
    return stretcher_.tail(stretchRatio(setting)) / setting.pitch;
}

} // namespace kvxplatform::audiounit
