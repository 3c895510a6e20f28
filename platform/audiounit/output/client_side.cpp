#include "platform/audiounit/output/client_side.h"

#include "platform/audiounit/render.h"
#include "platform/audiounit/source.h"

#include <algorithm>
#include <limits>
#include <new>
#include <numeric>

namespace kvxplatform::audiounit {
namespace {

// A rate conversion works in blocks of this many frames, so that a large slice limit costs no second large
// buffer.
constexpr UInt32 blockFrames = 1024;

std::size_t samplesOf(UInt32 frames, UInt32 channels)
{
    const std::uint64_t samples = std::uint64_t{frames} * channels;
    if (samples > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(Float32)) throw std::bad_alloc();
    return static_cast<std::size_t>(samples);
}

} // namespace

struct ClientSide::Pulling {
    ClientSide& side;
    const Request& request;
    AudioTimeStamp time;
    OSStatus status = noErr;

    static const Float32* pull(void* context, UInt32 frames)
    {
        auto& pulling = *static_cast<Pulling*>(context);
        OSStatus status = noErr;
        const Float32* samples = pulling.side.pullFrames(pulling.request, pulling.time, frames, status);
        pulling.time = later(pulling.time, frames, pulling.side.format.mSampleRate,
                             pulling.request.unit.hostTicksPerSecond);
        if (status) pulling.status = status;
        return samples;
    }
};

OSStatus ClientSide::prepare(Unit& unit, Float64 rate)
{
    const AudioStreamBasicDescription client = unit.input(0).format;
    const UInt32 frames = unit.sliceLimit;
    pulled.assign(samplesOf(frames, client.mChannelsPerFrame), 0);
    pcm::ChannelMap straight(client.mChannelsPerFrame);
    std::iota(straight.begin(), straight.end(), 0);
    translation.prepare(client, pcm::interleavedFormat(client.mSampleRate, client.mChannelsPerFrame),
                        straight);
    converter.reset();
    converted = {};
    if (client.mSampleRate != rate) {
        converted.assign(samplesOf(blockFrames, client.mChannelsPerFrame), 0);
        converter.emplace();
        if (!converter->prepare(client.mSampleRate, rate, client.mChannelsPerFrame,
                                pcm::RateConverter::Quality::normal))
            return kAudioUnitErr_FormatNotSupported;
    }
    format = client;
    limit = frames;
    return noErr;
}

void ClientSide::reset()
{
    if (converter) converter->reset();
}

const Float32* ClientSide::next(const Request& request, UInt32& frames, OSStatus& status)
{
    if (!converter) {
        frames = std::min(frames, limit);
        return pullFrames(request, request.time, frames, status);
    }
    frames = std::min(frames, blockFrames);
    Pulling pulling{*this, request, request.time};
    converter->convert(converted.data(), frames, limit, {Pulling::pull, &pulling});
    status = pulling.status;
    return converted.data();
}

const Float32* ClientSide::pullFrames(const Request& request, const AudioTimeStamp& time, UInt32 frames,
                                      OSStatus& status)
{
    Unit& unit = request.unit;
    status = noErr;
    if (unit.isStopping) {
        std::fill_n(pulled.begin(), std::size_t{frames} * channels(), 0.0f);
        return pulled.data();
    }
    AudioTimeStamp client{};
    client.mSampleTime = sampleTime;
    client.mHostTime = time.mHostTime;
    client.mRateScalar = 1;
    client.mFlags = kAudioTimeStampSampleTimeValid | kAudioTimeStampRateScalarValid |
                    (time.mFlags & kAudioTimeStampHostTimeValid);
    sampleTime += frames;

    AudioBufferList* list = nullptr;
    notify(unit, request.flags, kAudioUnitRenderAction_PreRender, client, 0, frames,
           &unit.input(0).buffers.lend(frames));
    status = pull(unit, 0, request.flags, client, frames, list);
    notify(unit, request.flags,
           status ? kAudioUnitRenderAction_PostRender | kAudioUnitRenderAction_PostRenderError
                  : kAudioUnitRenderAction_PostRender,
           client, 0, frames, list);
    if (status) unit.lastRenderError = status;
    AudioBufferList out = {
        1, {{channels(), static_cast<UInt32>(frames * channels() * sizeof(Float32)), pulled.data()}}};
    translation.run(*list, 0, frames, out, 0);
    return pulled.data();
}

} // namespace kvxplatform::audiounit
