#include "platform/pcm/format_converter.h"

#include <algorithm>
#include <cstring>

namespace kvxplatform::pcm {
namespace {

// ---- machine words ----

constexpr std::uint8_t swapped(std::uint8_t word) { return word; }
constexpr std::uint16_t swapped(std::uint16_t word) { return __builtin_bswap16(word); }
constexpr std::uint32_t swapped(std::uint32_t word) { return __builtin_bswap32(word); }
constexpr std::uint64_t swapped(std::uint64_t word) { return __builtin_bswap64(word); }

template <class Word, bool isSwapped>
void copyWords(const std::uint8_t* from, std::size_t fromStride, std::uint8_t* to, std::size_t toStride,
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
void copyThreeBytes(const std::uint8_t* from, std::size_t fromStride, std::uint8_t* to, std::size_t toStride,
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
auto copyOf(UInt32 bytes)
{
    switch (bytes) {
    case 1:
        return copyWords<std::uint8_t, false>;
    case 2:
        return copyWords<std::uint16_t, isSwapped>;
    case 3:
        return copyThreeBytes<isSwapped>;
    case 4:
        return copyWords<std::uint32_t, isSwapped>;
    default:
        return copyWords<std::uint64_t, isSwapped>;
    }
}

/// Split interleaved pairs of 32-bit samples into two buffers, or join two buffers into pairs. The compiler
/// vectorises these loops.
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

// ---- sample layouts ----

/// Whether two sample layouts differ at most in the byte order.
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

} // namespace

void FormatConverter::prepare(const AudioStreamBasicDescription& source,
                              const AudioStreamBasicDescription& destination, const ChannelMap& map)
{
    from_ = source;
    to_ = destination;
    fromLayout_ = layoutOf(from_);
    toLayout_ = layoutOf(to_);
    map_.assign(to_.mChannelsPerFrame, silentChannel);
    std::copy_n(map.begin(), std::min(map.size(), map_.size()), map_.begin());
    for (SInt32& each : map_)
        if (each < 0 || static_cast<UInt32>(each) >= from_.mChannelsPerFrame) each = silentChannel;

    Float64 zero = 0;
    codingOf<Float64>(toLayout_)->write({silentSample_.data(), 0, &zero, 0, 1}, toLayout_);

    copyWords_ = nullptr;
    allChannels_ = AllChannels::none;
    if (!isSameKind(fromLayout_, toLayout_)) return;
    const bool isSwapped = fromLayout_.isBigEndian != toLayout_.isBigEndian;
    copyWords_ = isSwapped ? copyOf<true>(toLayout_.bytes) : copyOf<false>(toLayout_.bytes);
    if ((isSwapped && toLayout_.bytes > 1) || map_ != identityChannelMap(from_.mChannelsPerFrame)) return;
    const bool isPair = from_.mChannelsPerFrame == 2 && toLayout_.bytes == 4;
    if (isInterleaved(from_) == isInterleaved(to_))
        allChannels_ = AllChannels::copy;
    else if (isPair)
        allChannels_ = isInterleaved(from_) ? AllChannels::splitPair : AllChannels::joinPair;
}

UInt32 FormatConverter::framesIn(const AudioBufferList& in, UInt32 channel) const
{
    const AudioBuffer& buffer = in.mBuffers[isInterleaved(from_) ? 0 : channel];
    return buffer.mData ? buffer.mDataByteSize / from_.mBytesPerFrame : 0;
}

bool FormatConverter::runAllChannels(const AudioBufferList& in, UInt32 first, UInt32 frames,
                                     AudioBufferList& out, UInt32 firstOut) const
{
    if (allChannels_ == AllChannels::none) return false;
    for (UInt32 i = 0; i < buffersOf(from_); ++i) {
        const UInt32 has = framesIn(in, i);
        if (has < first || has - first < frames) return false;
    }
    switch (allChannels_) {
    case AllChannels::splitPair:
        splitPairs(sampleAt(from_, in, 0, first), sampleAt(to_, out, 0, firstOut),
                   sampleAt(to_, out, 1, firstOut), frames);
        break;
    case AllChannels::joinPair:
        joinPairs(sampleAt(from_, in, 0, first), sampleAt(from_, in, 1, first),
                  sampleAt(to_, out, 0, firstOut), frames);
        break;
    default:
        for (UInt32 i = 0; i < buffersOf(from_); ++i)
            std::memmove(sampleAt(to_, out, i, firstOut), sampleAt(from_, in, i, first),
                         std::size_t{frames} * from_.mBytesPerFrame);
    }
    return true;
}

void FormatConverter::run(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                          UInt32 firstOut) const
{
    if (runAllChannels(in, first, frames, out, firstOut)) return;
    for (UInt32 c = 0; c < to_.mChannelsPerFrame; ++c) {
        const SInt32 source = map_[c];
        std::uint8_t* const target = sampleAt(to_, out, c, firstOut);
        UInt32 written = 0;
        if (source != silentChannel) {
            const auto channel = static_cast<UInt32>(source);
            const UInt32 has = framesIn(in, channel);
            written = has > first ? std::min(has - first, frames) : 0;
            if (written) runChannel(sampleAt(from_, in, channel, first), target, written);
        }
        silence(target + std::size_t{written} * to_.mBytesPerFrame, frames - written);
    }
}

void FormatConverter::runChannel(const std::uint8_t* source, std::uint8_t* target, UInt32 frames) const
{
    const std::size_t fromStride = from_.mBytesPerFrame, toStride = to_.mBytesPerFrame;
    if (copyWords_) return copyWords_(source, fromStride, target, toStride, frames);

    // `read` does not modify the samples, and `write` does not modify the numbers, so the casts are safe. If
    // one side has native 32-bit floats, its samples serve as the numbers that the other side is converted
    // from or to.
    auto* const readable = const_cast<std::uint8_t*>(source);
    const bool isFromNative = isNative(fromLayout_, 4), isToNative = isNative(toLayout_, 4);
    if (isToNative && toStride % sizeof(Float32) == 0)
        return codingOf<Float32>(fromLayout_)
            ->read({readable, fromStride, reinterpret_cast<Float32*>(target), toStride / sizeof(Float32),
                    frames},
                   fromLayout_);
    if (isFromNative && fromStride % sizeof(Float32) == 0)
        return codingOf<Float32>(toLayout_)->write(
            {target, toStride, reinterpret_cast<Float32*>(readable), fromStride / sizeof(Float32), frames},
            toLayout_);

    constexpr UInt32 blockFrames = 256;
    Float64 numbers[blockFrames];
    const auto read = codingOf<Float64>(fromLayout_)->read;
    const auto write = codingOf<Float64>(toLayout_)->write;
    for (UInt32 done = 0; done < frames;) {
        const UInt32 now = std::min(blockFrames, frames - done);
        read({readable + done * fromStride, fromStride, numbers, 1, now}, fromLayout_);
        write({target + done * toStride, toStride, numbers, 1, now}, toLayout_);
        done += now;
    }
}

void FormatConverter::silence(std::uint8_t* target, UInt32 frames) const
{
    for (UInt32 i = 0; i < frames; ++i, target += to_.mBytesPerFrame)
        std::memcpy(target, silentSample_.data(), toLayout_.bytes);
}

} // namespace kvxplatform::pcm
