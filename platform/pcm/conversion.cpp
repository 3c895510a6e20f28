#include "platform/pcm/conversion.h"

#include <algorithm>
#include <limits>

namespace kvxplatform::pcm {
namespace {

constexpr UInt32 blockFrames = 512;

AudioBufferList listOf(std::vector<Float32>& block, UInt32 firstFrame, UInt32 channels)
{
    const std::size_t first = std::size_t{firstFrame} * channels;
    return {
        1, {{channels, static_cast<UInt32>((block.size() - first) * sizeof(Float32)), block.data() + first}}};
}

} // namespace

bool Conversion::prepare(const AudioStreamBasicDescription& source,
                         const AudioStreamBasicDescription& destination, const ChannelMap& routing,
                         Quality quality)
{
    from = source.mSampleRate;
    to = destination.mSampleRate;
    rate.reset();
    if (from == to) {
        whole.prepare(source, destination, routing);
        return true;
    }
    const bool narrows = destination.mChannelsPerFrame < source.mChannelsPerFrame;
    channels = narrows ? destination.mChannelsPerFrame : source.mChannelsPerFrame;
    auto converter = std::make_unique<RateConverter>();
    if (!converter->prepare(from, to, channels, quality)) return false;

    // Channels change places on the side where they are fewer.
    ChannelMap straight(channels);
    for (UInt32 i = 0; i < channels; ++i) straight[i] = static_cast<SInt32>(i);
    before.prepare(source, interleavedFormat(from, channels), narrows ? routing : straight);
    after.prepare(interleavedFormat(to, channels), destination, narrows ? straight : routing);
    taken.assign(std::size_t{blockFrames} * channels, 0);
    given.assign(std::size_t{blockFrames} * channels, 0);
    ahead = RateConverter::lookAhead(from, to, quality);
    rate = std::move(converter);
    reset();
    return true;
}

void Conversion::reset()
{
    if (rate) rate->reset();
    waiting = 0;
    framesIn = framesOut = 0;
}

UInt32 Conversion::framesFor(UInt32 frames) const
{
    if (!rate) return std::max(frames, UInt32{1});
    constexpr double most = std::numeric_limits<SInt32>::max();
    const double position = (static_cast<double>(framesOut) + frames) * from / to;
    const double missing = position + ahead - static_cast<double>(framesIn);
    return static_cast<UInt32>(std::clamp(missing, 1.0, most));
}

bool Conversion::takeIn(const AudioBufferList& in, UInt32 first, UInt32 frames)
{
    if (waiting || !frames) return false;
    AudioBufferList block = listOf(taken, 0, channels);
    before.run(in, first, frames, block, 0);
    waitingFrom = 0;
    waiting = frames;
    return true;
}

UInt32 Conversion::giveOut(AudioBufferList& out, UInt32 firstOut, UInt32 room)
{
    const auto piece = rate->process(waiting ? taken.data() + std::size_t{waitingFrom} * channels : nullptr,
                                     waiting, given.data(), std::min(room, blockFrames));
    waitingFrom += piece.used;
    waiting -= piece.used;
    after.run(listOf(given, 0, channels), 0, piece.made, out, firstOut);
    framesOut += piece.made;
    return piece.made;
}

Conversion::Piece Conversion::convert(const AudioBufferList& in, UInt32 first, UInt32 frames,
                                      AudioBufferList& out, UInt32 firstOut, UInt32 room)
{
    if (!rate) {
        const UInt32 both = std::min(frames, room);
        whole.run(in, first, both, out, firstOut);
        return {both, both};
    }
    Piece piece{0, 0};
    while (piece.made < room) {
        const UInt32 next = std::min(frames - piece.used, blockFrames);
        const bool hasTaken = takeIn(in, first + piece.used, next);
        if (hasTaken) {
            piece.used += next;
            framesIn += next;
        }
        const UInt32 waitedFor = waiting;
        const UInt32 made = giveOut(out, firstOut + piece.made, room - piece.made);
        piece.made += made;
        if (!made && !hasTaken && waiting == waitedFor) break;
    }
    return piece;
}

UInt32 Conversion::drain(AudioBufferList& out, UInt32 firstOut, UInt32 room)
{
    if (!rate) return 0;
    // A product of whole numbers, divided once: exact as long as it stays below 2^53.
    const double total = static_cast<double>(framesIn) * to / from;
    auto length = static_cast<std::uint64_t>(total);
    if (static_cast<double>(length) < total) ++length;
    const auto left = static_cast<UInt32>(std::min<std::uint64_t>(length - framesOut, room));
    for (UInt32 done = 0; done < left;) {
        if (!waiting) {
            std::fill(taken.begin(), taken.end(), 0.0f);
            waitingFrom = 0;
            waiting = blockFrames;
        }
        done += giveOut(out, firstOut + done, left - done);
    }
    return left;
}

} // namespace kvxplatform::pcm
