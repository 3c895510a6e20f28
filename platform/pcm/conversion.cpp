#include "platform/pcm/conversion.h"

#include <algorithm>
#include <limits>

namespace kvxplatform::pcm {
namespace {

constexpr UInt32 blockFrames = 512;

AudioBufferList listOf(std::vector<Float32>& block, UInt32 channels)
{
    return {1, {{channels, static_cast<UInt32>(block.size() * sizeof(Float32)), block.data()}}};
}

} // namespace

bool Conversion::prepare(const AudioStreamBasicDescription& source,
                         const AudioStreamBasicDescription& destination, const ChannelMap& map,
                         Quality quality)
{
    sourceRate_ = source.mSampleRate;
    destinationRate_ = destination.mSampleRate;
    rate_.reset();
    if (sourceRate_ == destinationRate_) {
        direct_.prepare(source, destination, map);
        return true;
    }
    const bool narrows = destination.mChannelsPerFrame < source.mChannelsPerFrame;
    channels_ = narrows ? destination.mChannelsPerFrame : source.mChannelsPerFrame;
    auto converter = std::make_unique<RateConverter>();
    if (!converter->prepare(sourceRate_, destinationRate_, channels_, quality)) return false;

    // The channel map is applied on the side with fewer channels.
    const ChannelMap identity = identityChannelMap(channels_);
    toFloats_.prepare(source, interleavedFormat(sourceRate_, channels_), narrows ? map : identity);
    fromFloats_.prepare(interleavedFormat(destinationRate_, channels_), destination,
                        narrows ? identity : map);
    inBlock_.assign(std::size_t{blockFrames} * channels_, 0);
    outBlock_.assign(std::size_t{blockFrames} * channels_, 0);
    lookAhead_ = RateConverter::lookAhead(sourceRate_, destinationRate_, quality);
    rate_ = std::move(converter);
    reset();
    return true;
}

void Conversion::reset()
{
    if (rate_) rate_->reset();
    unread_ = 0;
    framesIn_ = framesOut_ = 0;
}

UInt32 Conversion::framesFor(UInt32 frames) const
{
    if (!rate_) return std::max(frames, UInt32{1});
    constexpr double most = std::numeric_limits<SInt32>::max();
    const double position = (static_cast<double>(framesOut_) + frames) * sourceRate_ / destinationRate_;
    const double missing = position + lookAhead_ - static_cast<double>(framesIn_);
    return static_cast<UInt32>(std::clamp(missing, 1.0, most));
}

bool Conversion::readBlock(const AudioBufferList& in, UInt32 first, UInt32 frames)
{
    if (unread_ || !frames) return false;
    AudioBufferList block = listOf(inBlock_, channels_);
    toFloats_.run(in, first, frames, block, 0);
    unreadFrom_ = 0;
    unread_ = frames;
    return true;
}

UInt32 Conversion::writeBlock(AudioBufferList& out, UInt32 firstOut, UInt32 capacity)
{
    const Progress progress =
        rate_->process(unread_ ? inBlock_.data() + std::size_t{unreadFrom_} * channels_ : nullptr, unread_,
                       outBlock_.data(), std::min(capacity, blockFrames));
    unreadFrom_ += progress.used;
    unread_ -= progress.used;
    fromFloats_.run(listOf(outBlock_, channels_), 0, progress.made, out, firstOut);
    framesOut_ += progress.made;
    return progress.made;
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
    while (progress.made < capacity) {
        const UInt32 next = std::min(frames - progress.used, blockFrames);
        const bool hasRead = readBlock(in, first + progress.used, next);
        if (hasRead) {
            progress.used += next;
            framesIn_ += next;
        }
        const UInt32 unreadBefore = unread_;
        const UInt32 made = writeBlock(out, firstOut + progress.made, capacity - progress.made);
        progress.made += made;
        if (!made && !hasRead && unread_ == unreadBefore) break;
    }
    return progress;
}

UInt32 Conversion::drain(AudioBufferList& out, UInt32 firstOut, UInt32 capacity)
{
    if (!rate_) return 0;
    // A product of whole numbers, divided once, is exact below 2^53.
    const double total = static_cast<double>(framesIn_) * destinationRate_ / sourceRate_;
    auto length = static_cast<std::uint64_t>(total);
    if (static_cast<double>(length) < total) ++length;
    const auto left = static_cast<UInt32>(std::min<std::uint64_t>(length - framesOut_, capacity));
    for (UInt32 done = 0; done < left;) {
        if (!unread_) {
            std::fill(inBlock_.begin(), inBlock_.end(), 0.0f);
            unreadFrom_ = 0;
            unread_ = blockFrames;
        }
        done += writeBlock(out, firstOut + done, left - done);
    }
    return left;
}

} // namespace kvxplatform::pcm
