#include "platform/pcm/conversion.h"

#include <algorithm>

namespace kvxplatform::pcm {
namespace {

AudioBufferList listOf(const FixedRateConverter::Span& span, UInt32 channels)
{
    return {1, {{channels, static_cast<UInt32>(span.frames * channels * sizeof(Float32)), span.samples}}};
}

} // namespace

bool Conversion::prepare(const AudioStreamBasicDescription& source,
                         const AudioStreamBasicDescription& destination, const ChannelMap& map,
                         Quality quality)
{
    const Float64 from = source.mSampleRate, to = destination.mSampleRate;
    rate_.reset();
    if (from == to) {
        direct_.prepare(source, destination, map);
        return true;
    }
    const bool narrows = destination.mChannelsPerFrame < source.mChannelsPerFrame;
    channels_ = narrows ? destination.mChannelsPerFrame : source.mChannelsPerFrame;
    FixedRateConverter converter;
    if (!converter.prepare(from, to, channels_, quality)) return false;

    // The channel map is applied on the side with fewer channels.
    const ChannelMap identity = identityChannelMap(channels_);
    toFloats_.prepare(source, interleavedFormat(from, channels_), narrows ? map : identity);
    fromFloats_.prepare(interleavedFormat(to, channels_), destination, narrows ? identity : map);
    rate_ = std::move(converter);
    return true;
}

void Conversion::reset()
{
    if (rate_) rate_->reset();
}

/// Move frames of `in` to the rate converter. Returns the number of frames moved.
UInt32 Conversion::readInput(const AudioBufferList& in, UInt32 first, UInt32 frames)
{
    const FixedRateConverter::Span free = rate_->freeInput();
    const UInt32 count = std::min(frames, free.frames);
    if (count == 0) return 0;
    AudioBufferList block = listOf(free, channels_);
    toFloats_.run(in, first, count, block, 0);
    rate_->addInput(count);
    return count;
}

/// Move frames of the rate converter to `out`. Returns the number of frames moved.
UInt32 Conversion::writeOutput(AudioBufferList& out, UInt32 firstOut, UInt32 capacity)
{
    const FixedRateConverter::Span ready = rate_->output();
    const UInt32 count = std::min(ready.frames, capacity);
    if (count == 0) return 0;
    fromFloats_.run(listOf(ready, channels_), 0, count, out, firstOut);
    rate_->removeOutput(count);
    return count;
}

Progress Conversion::convert(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                             UInt32 firstOut, UInt32 capacity)
{
    if (!rate_) {
        const UInt32 both = std::min(frames, capacity);
        direct_.run(in, first, both, out, firstOut);
        return {both, both};
    }
    Progress progress{0, 0};
    for (;;) {
        const UInt32 made = writeOutput(out, firstOut + progress.made, capacity - progress.made);
        const UInt32 used = readInput(in, first + progress.used, frames - progress.used);
        progress.made += made;
        progress.used += used;
        if (!made && !used) return progress;
    }
}

UInt32 Conversion::drain(AudioBufferList& out, UInt32 firstOut, UInt32 capacity)
{
    if (!rate_) return 0;
    const auto left = static_cast<UInt32>(std::min<std::uint64_t>(rate_->framesLeft(), capacity));
    for (UInt32 done = 0; done < left;) {
        const UInt32 made = writeOutput(out, firstOut + done, left - done);
        if (!made) rate_->addSilence();
        done += made;
    }
    return left;
}

} // namespace kvxplatform::pcm
