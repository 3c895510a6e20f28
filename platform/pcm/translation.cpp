#include "platform/pcm/translation.h"

#include "platform/pcm/channel_fold.h"

#include <algorithm>
#include <cstring>

namespace kvxplatform::pcm {
namespace {

// ---- words ----

constexpr std::uint8_t swapped(std::uint8_t word) { return word; }
constexpr std::uint16_t swapped(std::uint16_t word) { return __builtin_bswap16(word); }
constexpr std::uint32_t swapped(std::uint32_t word) { return __builtin_bswap32(word); }
constexpr std::uint64_t swapped(std::uint64_t word) { return __builtin_bswap64(word); }

template <class Word, bool isSwapped>
void moveWords(const std::uint8_t* from, std::size_t fromStride, std::uint8_t* to, std::size_t toStride,
               UInt32 frames)
{
    for (UInt32 i = 0; i < frames; ++i) {
        Word word;
        std::memcpy(&word, from + i * fromStride, sizeof word);
        if (isSwapped) word = swapped(word);
        std::memcpy(to + i * toStride, &word, sizeof word);
    }
}

template <bool isSwapped>
void moveThrees(const std::uint8_t* from, std::size_t fromStride, std::uint8_t* to, std::size_t toStride,
                UInt32 frames)
{
    for (UInt32 i = 0; i < frames; ++i, from += fromStride, to += toStride) {
        const std::uint8_t first = from[isSwapped ? 2 : 0], last = from[isSwapped ? 0 : 2];
        to[1] = from[1];
        to[0] = first;
        to[2] = last;
    }
}

template <bool isSwapped>
auto moveOf(UInt32 bytes)
{
    switch (bytes) {
    case 1:
        return moveWords<std::uint8_t, false>;
    case 2:
        return moveWords<std::uint16_t, isSwapped>;
    case 3:
        return moveThrees<isSwapped>;
    case 4:
        return moveWords<std::uint32_t, isSwapped>;
    default:
        return moveWords<std::uint64_t, isSwapped>;
    }
}

/// One interleaved pair of 32-bit words to two buffers, and back: loops that become vector code.
void splitPairs(const std::uint8_t* from, std::uint8_t* left, std::uint8_t* right, UInt32 frames)
{
    for (std::size_t i = 0; i < frames; ++i) {
        std::uint32_t pair[2];
        std::memcpy(pair, from + i * 8, 8);
        std::memcpy(left + i * 4, &pair[0], 4);
        std::memcpy(right + i * 4, &pair[1], 4);
    }
}
void joinPairs(const std::uint8_t* left, const std::uint8_t* right, std::uint8_t* to, UInt32 frames)
{
    for (std::size_t i = 0; i < frames; ++i) {
        std::uint32_t pair[2];
        std::memcpy(&pair[0], left + i * 4, 4);
        std::memcpy(&pair[1], right + i * 4, 4);
        std::memcpy(to + i * 8, pair, 8);
    }
}

// ---- kinds ----

/// Whether samples differ in byte order at most.
bool isSameKind(const SampleLayout& a, const SampleLayout& b)
{
    if (a.isFloat != b.isFloat || a.bytes != b.bytes || a.bits != b.bits) return false;
    if (a.isFloat) return true;
    return a.isSigned == b.isSigned && (a.isHigh == b.isHigh || a.bits == a.bytes * 8);
}

bool isNative(const SampleLayout& layout, UInt32 bytes)
{
    return layout.isFloat && layout.bytes == bytes && !layout.isBigEndian;
}

bool isIdentity(const ChannelMap& routing, UInt32 channels)
{
    if (routing.size() != channels) return false;
    for (UInt32 i = 0; i < channels; ++i)
        if (routing[i] != static_cast<SInt32>(i)) return false;
    return true;
}

} // namespace

ChannelMap foldedChannelMap(UInt32 sourceChannels, UInt32 destinationChannels)
{
    ChannelMap routing(destinationChannels);
    for (UInt32 i = 0; i < destinationChannels; ++i) routing[i] = foldedFrom(i, sourceChannels);
    return routing;
}

void Translation::prepare(const AudioStreamBasicDescription& source,
                          const AudioStreamBasicDescription& destination, const ChannelMap& routing)
{
    from = source;
    to = destination;
    fromLayout = layoutOf(from);
    toLayout = layoutOf(to);
    sources.assign(to.mChannelsPerFrame, silentChannel);
    std::copy_n(routing.begin(), std::min(routing.size(), sources.size()), sources.begin());
    for (SInt32& each : sources)
        if (each < 0 || static_cast<UInt32>(each) >= from.mChannelsPerFrame) each = silentChannel;

    Float64 nothing = 0;
    codingOf<Float64>(toLayout)->write({silentSample.data(), 0, &nothing, 0, 1}, toLayout);

    move = nullptr;
    whole = Whole::none;
    if (!isSameKind(fromLayout, toLayout)) return;
    const bool isSwapped = fromLayout.isBigEndian != toLayout.isBigEndian;
    move = isSwapped ? moveOf<true>(toLayout.bytes) : moveOf<false>(toLayout.bytes);
    if ((isSwapped && toLayout.bytes > 1) || !isIdentity(sources, from.mChannelsPerFrame)) return;
    const bool isPair = from.mChannelsPerFrame == 2 && toLayout.bytes == 4;
    if (isInterleaved(from) == isInterleaved(to))
        whole = Whole::copy;
    else if (isPair)
        whole = isInterleaved(from) ? Whole::splitPair : Whole::joinPair;
}

UInt32 Translation::covered(const AudioBufferList& in, UInt32 channel) const
{
    const AudioBuffer& buffer = in.mBuffers[isInterleaved(from) ? 0 : channel];
    return buffer.mData ? buffer.mDataByteSize / from.mBytesPerFrame : 0;
}

bool Translation::runWhole(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                           UInt32 firstOut) const
{
    if (whole == Whole::none) return false;
    for (UInt32 i = 0; i < buffersOf(from); ++i) {
        const UInt32 has = covered(in, i);
        if (has < first || has - first < frames) return false;
    }
    switch (whole) {
    case Whole::splitPair:
        splitPairs(sampleAt(from, in, 0, first), sampleAt(to, out, 0, firstOut),
                   sampleAt(to, out, 1, firstOut), frames);
        break;
    case Whole::joinPair:
        joinPairs(sampleAt(from, in, 0, first), sampleAt(from, in, 1, first), sampleAt(to, out, 0, firstOut),
                  frames);
        break;
    default:
        for (UInt32 i = 0; i < buffersOf(from); ++i)
            std::memmove(sampleAt(to, out, i, firstOut), sampleAt(from, in, i, first),
                         std::size_t{frames} * from.mBytesPerFrame);
    }
    return true;
}

void Translation::run(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                      UInt32 firstOut) const
{
    if (runWhole(in, first, frames, out, firstOut)) return;
    for (UInt32 c = 0; c < to.mChannelsPerFrame; ++c) {
        const SInt32 source = sources[c];
        std::uint8_t* const target = sampleAt(to, out, c, firstOut);
        UInt32 given = 0;
        if (source != silentChannel) {
            const auto channel = static_cast<UInt32>(source);
            const UInt32 has = covered(in, channel);
            given = has > first ? std::min(has - first, frames) : 0;
            if (given) runChannel(sampleAt(from, in, channel, first), target, given);
        }
        silence(target + std::size_t{given} * to.mBytesPerFrame, frames - given);
    }
}

void Translation::runChannel(const std::uint8_t* source, std::uint8_t* target, UInt32 frames) const
{
    const std::size_t fromStride = from.mBytesPerFrame, toStride = to.mBytesPerFrame;
    if (move) return move(source, fromStride, target, toStride, frames);

    // Reading does not write to the source; where one side is native 32-bit float, the other's coding meets
    // it.
    auto* const readable = const_cast<std::uint8_t*>(source);
    const bool isFromNative = isNative(fromLayout, 4), isToNative = isNative(toLayout, 4);
    if (isToNative && toStride % sizeof(Float32) == 0)
        return codingOf<Float32>(fromLayout)
            ->read({readable, fromStride, reinterpret_cast<Float32*>(target), toStride / sizeof(Float32),
                    frames},
                   fromLayout);
    if (isFromNative && fromStride % sizeof(Float32) == 0)
        return codingOf<Float32>(toLayout)->write(
            {target, toStride, reinterpret_cast<Float32*>(readable), fromStride / sizeof(Float32), frames},
            toLayout);

    constexpr UInt32 blockFrames = 256;
    Float64 numbers[blockFrames];
    const auto read = codingOf<Float64>(fromLayout)->read;
    const auto write = codingOf<Float64>(toLayout)->write;
    for (UInt32 done = 0; done < frames;) {
        const UInt32 now = std::min(blockFrames, frames - done);
        read({readable + done * fromStride, fromStride, numbers, 1, now}, fromLayout);
        write({target + done * toStride, toStride, numbers, 1, now}, toLayout);
        done += now;
    }
}

void Translation::silence(std::uint8_t* target, UInt32 frames) const
{
    for (UInt32 i = 0; i < frames; ++i, target += to.mBytesPerFrame)
        std::memcpy(target, silentSample.data(), toLayout.bytes);
}

} // namespace kvxplatform::pcm
