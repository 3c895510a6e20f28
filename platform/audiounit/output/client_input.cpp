#include "platform/audiounit/output/client_input.h"

#include "platform/audiounit/source.h"

#include <algorithm>

namespace kvxplatform::audiounit {
namespace {

// A rate conversion returns at most this many frames for any slice limit, so that its buffer stays small.
constexpr UInt32 blockFrames = 1024;

} // namespace

OSStatus ClientInput::prepare(Unit& unit, Float64 deviceRate)
{
    const AudioStreamBasicDescription from = unit.input(0).format;
    const AudioStreamBasicDescription to = pcm::interleavedFormat(deviceRate, from.mChannelsPerFrame);
    const UInt32 mostReturned = from.mSampleRate == deviceRate ? UInt32{unit.sliceLimit} : blockFrames;
    converted_.prepare(to, mostReturned);
    if (const OSStatus status = replace(unit, from, to)) return status;
    from_ = from;
    to_ = to;
    mostPulled_ = unit.sliceLimit;
    mostReturned_ = mostReturned;
    return noErr;
}

OSStatus ClientInput::replace(Unit& unit, const AudioStreamBasicDescription& from,
                              const AudioStreamBasicDescription& to)
{
    auto next = std::make_unique<pcm::PulledConversion>();
    if (!next->conversion.prepare(from, to, pcm::identityChannelMap(from.mChannelsPerFrame),
                                  pcm::Conversion::Quality::high))
        return kAudioUnitErr_FormatNotSupported;
    conversion_.publish(std::move(next), unit.scope);
    return noErr;
}

OSStatus ClientInput::renew(Unit& unit) { return lead() > 0 ? replace(unit, from_, to_) : OSStatus{noErr}; }

void ClientInput::reset() { conversion_.get()->reset(); }

Float64 ClientInput::lead() const
{
    const pcm::PulledConversion* const current = conversion_.get();
    return current ? current->conversion.lead() / from_.mSampleRate : 0;
}

const Float32* ClientInput::next(const Request& request, UInt32& frames)
{
    frames = std::min(frames, mostReturned_);
    pcm::PulledConversion& current = *conversion_.get();
    UInt32 made = 0;
    pcm::convertPulled(current.conversion, current.input, converted_.list(frames), frames, made,
                       [&](UInt32 missing) {
                           pullMore(request, current.input, made, std::min(missing, mostPulled_));
                           return OSStatus{noErr};
                       });
    return reinterpret_cast<const Float32*>(converted_.memory(0));
}

/// Pull the next `frames` frames into `input`; `made` output frames precede their output in the present call.
void ClientInput::pullMore(const Request& request, pcm::PulledInput& input, UInt32 made, UInt32 frames)
{
    Unit& unit = request.unit;
    const AudioTimeStamp time = later(request.time, made, to_.mSampleRate, unit.hostTicksPerSecond);
    AudioTimeStamp client{};
    client.mSampleTime = sampleTime_;
    client.mHostTime = time.mHostTime;
    client.mRateScalar = 1;
    client.mFlags = kAudioTimeStampSampleTimeValid | kAudioTimeStampRateScalarValid |
                    (time.mFlags & kAudioTimeStampHostTimeValid);
    // Once the client has stopped the unit, the source is not called again.
    if (!unit.isStopping) sampleTime_ += frames;
    if (const OSStatus status = pull(unit, 0, request.flags, client, frames, input.list))
        unit.lastRenderError = status;
    input.first = 0;
    input.count = frames;
}

} // namespace kvxplatform::audiounit
