#include "platform/audiounit/rate/varispeed_engine.h"

namespace kvxplatform::audiounit {

VarispeedEngine::VarispeedEngine(const AudioStreamBasicDescription& format,
                                 pcm::VariableRateConverter::Quality quality)
    : channels_(format.mChannelsPerFrame), quality_(quality), converter_(channels_, quality),
      pulled_(std::size_t{GlidingConverter::blockFrames} * channels_), planes_(channels_)
{
}

void VarispeedEngine::start(std::int64_t frame, const Setting& setting)
{
    converter_.start(setting.rate);
    nextInput_ = frame;
    position_ = static_cast<double>(frame);
}

const Float32* VarispeedEngine::pull(EngineInput& input, UInt32 frames)
{
    input.history.pullUntil(input.call, nextInput_ + frames);
    for (UInt32 done = 0; done < frames;) {
        const UInt32 count = input.history.look(nextInput_, frames - done, planes_.data());
        interleave(planes_.data(), channels_, count, pulled_.data() + std::size_t{done} * channels_);
        nextInput_ += count;
        done += count;
    }
    return pulled_.data();
}

void VarispeedEngine::read(EngineInput& input, const Setting& setting, Float32* const* out, UInt32 frames)
{
    converter_.glideTo(setting.rate);
    converter_.read(
        out, frames, [&](UInt32 count) { return pull(input, count); },
        [&](double inputFrames) { position_ += inputFrames; });
}

double VarispeedEngine::latency(const Setting& setting) const
{
    return pcm::VariableRateConverter::lookAhead(1 / setting.rate, quality_) / setting.rate;
}

} // namespace kvxplatform::audiounit
