#include "platform/audiounit/output/client_input.h"

#include "platform/audiounit/source.h"

#include <algorithm>
#include <limits>
#include <new>

namespace kvxplatform::audiounit {
namespace {

// A rate conversion works in blocks of this many frames for any slice limit, so that its buffer stays small.
constexpr UInt32 blockFrames = 1024;

std::size_t samplesOf(UInt32 frames, UInt32 channels)
{
    const std::uint64_t samples = std::uint64_t{frames} * channels;
    if (samples > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(Float32)) throw std::bad_alloc();
    return static_cast<std::size_t>(samples);
}

} // namespace

struct ClientInput::Pulling {
    ClientInput& input;
    const Request& request;
    AudioTimeStamp time;

    static const Float32* pull(void* context, UInt32 frames)
    {
        auto& pulling = *static_cast<Pulling*>(context);
        const Float32* samples = pulling.input.pullFrames(pulling.request, pulling.time, frames);
        pulling.time = later(pulling.time, frames, pulling.input.format_.mSampleRate,
                             pulling.request.unit.hostTicksPerSecond);
        return samples;
    }
};

OSStatus ClientInput::prepare(Unit& unit, Float64 deviceRate)
{
    const AudioStreamBasicDescription client = unit.input(0).format;
    const UInt32 frames = unit.sliceLimit;
    const UInt32 channelCount = client.mChannelsPerFrame;
    pulled_.assign(samplesOf(frames, channelCount), 0);
    toFloats_.prepare(client, pcm::interleavedFormat(client.mSampleRate, channelCount),
                      pcm::identityChannelMap(channelCount));
    rateConverter_.reset();
    converted_ = {};
    if (client.mSampleRate != deviceRate) {
        converted_.assign(samplesOf(blockFrames, channelCount), 0);
        rateConverter_.emplace();
        if (!rateConverter_->prepare(client.mSampleRate, deviceRate, channelCount,
                                     pcm::RateConverter::Quality::normal))
            return kAudioUnitErr_FormatNotSupported;
    }
    format_ = client;
    limit_ = frames;
    return noErr;
}

void ClientInput::reset()
{
    if (rateConverter_) rateConverter_->reset();
}

const Float32* ClientInput::next(const Request& request, UInt32& frames)
{
    if (!rateConverter_) {
        frames = std::min(frames, limit_);
        return pullFrames(request, request.time, frames);
    }
    frames = std::min(frames, blockFrames);
    Pulling pulling{*this, request, request.time};
    rateConverter_->convert(converted_.data(), frames, limit_, {Pulling::pull, &pulling});
    return converted_.data();
}

const Float32* ClientInput::pullFrames(const Request& request, const AudioTimeStamp& time, UInt32 frames)
{
    Unit& unit = request.unit;
    if (unit.isStopping) {
        std::fill_n(pulled_.begin(), std::size_t{frames} * channels(), 0.0f);
        return pulled_.data();
    }
    AudioTimeStamp client{};
    client.mSampleTime = sampleTime_;
    client.mHostTime = time.mHostTime;
    client.mRateScalar = 1;
    client.mFlags = kAudioTimeStampSampleTimeValid | kAudioTimeStampRateScalarValid |
                    (time.mFlags & kAudioTimeStampHostTimeValid);
    sampleTime_ += frames;

    AudioBufferList* list = nullptr;
    if (const OSStatus status = pull(unit, 0, request.flags, client, frames, list))
        unit.lastRenderError = status;
    AudioBufferList out = {
        1, {{channels(), static_cast<UInt32>(frames * channels() * sizeof(Float32)), pulled_.data()}}};
    toFloats_.run(*list, 0, frames, out, 0);
    return pulled_.data();
}

} // namespace kvxplatform::audiounit
