#include "platform/audiounit/linear_pcm.h"

#include "platform/audiounit/stream_format.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 fractionBits = 0x1F80; // of a fixed-point format

/// Where a sample's bits are in the bytes that hold it.
struct Layout {
    UInt32 bytes; // of one sample
    UInt32 bits;
    bool isFloat, isBigEndian, isSigned, isHigh;
};

Layout layoutOf(const AudioStreamBasicDescription& format)
{
    const UInt32 flags = format.mFormatFlags;
    const UInt32 channels = channelsPerBuffer(format);
    Layout layout{};
    layout.bytes = channels ? format.mBytesPerFrame / channels : 0;
    layout.bits = format.mBitsPerChannel;
    layout.isFloat = flags & kAudioFormatFlagIsFloat;
    layout.isBigEndian = flags & kAudioFormatFlagIsBigEndian;
    layout.isSigned = flags & kAudioFormatFlagIsSignedInteger;
    layout.isHigh = flags & kAudioFormatFlagIsAlignedHigh;
    return layout;
}

/// The bytes of a sample as a number, and back.
template <unsigned bytes, bool isBigEndian>
std::uint64_t load(const std::uint8_t* at)
{
    std::uint64_t value = 0;
    for (unsigned i = 0; i < bytes; ++i)
        value |= std::uint64_t{at[i]} << 8 * (isBigEndian ? bytes - 1 - i : i);
    return value;
}
template <unsigned bytes, bool isBigEndian>
void store(std::uint8_t* at, std::uint64_t value)
{
    for (unsigned i = 0; i < bytes; ++i)
        at[i] = static_cast<std::uint8_t>(value >> 8 * (isBigEndian ? bytes - 1 - i : i));
}

template <class To, class From>
To bitsAs(From from)
{
    static_assert(sizeof(To) == sizeof(From));
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
}

/// A whole number of at most 32 bits nearest to `value`, which is in its range: adding this constant pushes
/// the fraction out of a double's mantissa, rounded as the processor rounds.
std::int32_t nearest(double value)
{
    return static_cast<std::int32_t>(bitsAs<std::uint64_t>(value + 6755399441055744.0));
}

/// An integer sample's place: how far its bits stand from the top of 32, its offset if it is unsigned.
struct Integer {
    explicit Integer(const Layout& layout)
        : bits(layout.bits), shift(layout.isHigh ? 32 - 8 * layout.bytes : 32 - layout.bits),
          mask(~std::uint32_t{0} << (32 - layout.bits)), offset(layout.isSigned ? 0 : 0x8000'0000),
          scale(static_cast<double>(std::int64_t{1} << (layout.bits - 1)))
    {
    }

    Float32 read(std::uint32_t raw) const
    {
        const auto top = static_cast<std::int32_t>(((raw << shift) & mask) ^ offset);
        return static_cast<Float32>(top * (1.0 / 2147483648.0));
    }
    std::uint32_t write(Float32 sample) const
    {
        double scaled = static_cast<double>(sample) * scale;
        scaled = scaled == scaled ? std::clamp(scaled, -scale, scale - 1) : 0;
        const auto top = static_cast<std::uint32_t>(nearest(scaled)) << (32 - bits);
        // A signed number that stands low fills the bits above it with its sign.
        return offset ? (top ^ offset) >> shift
                      : static_cast<std::uint32_t>(static_cast<std::int32_t>(top) >> shift);
    }

    UInt32 bits, shift;
    std::uint32_t mask, offset;
    double scale;
};

/// One channel: samples `stride` bytes apart, and floats `step` apart.
struct Channel {
    std::uint8_t* bytes;
    std::size_t stride;
    Float32* samples;
    std::size_t step;
    UInt32 frames;
};

template <unsigned bytes, bool isBigEndian>
void readIntegers(const Channel& channel, const Layout& layout)
{
    const Integer integer(layout);
    for (UInt32 i = 0; i < channel.frames; ++i)
        channel.samples[i * channel.step] = integer.read(
            static_cast<std::uint32_t>(load<bytes, isBigEndian>(channel.bytes + i * channel.stride)));
}
template <unsigned bytes, bool isBigEndian>
void writeIntegers(const Channel& channel, const Layout& layout)
{
    const Integer integer(layout);
    for (UInt32 i = 0; i < channel.frames; ++i)
        store<bytes, isBigEndian>(channel.bytes + i * channel.stride,
                                  integer.write(channel.samples[i * channel.step]));
}

template <class Real, class Bits, bool isBigEndian>
void readReals(const Channel& channel, const Layout&)
{
    for (UInt32 i = 0; i < channel.frames; ++i)
        channel.samples[i * channel.step] = static_cast<Float32>(bitsAs<Real>(
            static_cast<Bits>(load<sizeof(Bits), isBigEndian>(channel.bytes + i * channel.stride))));
}
template <class Real, class Bits, bool isBigEndian>
void writeReals(const Channel& channel, const Layout&)
{
    for (UInt32 i = 0; i < channel.frames; ++i)
        store<sizeof(Bits), isBigEndian>(channel.bytes + i * channel.stride,
                                         bitsAs<Bits>(static_cast<Real>(channel.samples[i * channel.step])));
}

using Run = void (*)(const Channel&, const Layout&);

/// How to read and write each kind of sample.
struct Coding {
    bool isFloat;
    UInt32 bytes;
    bool isBigEndian;
    Run read, write;
};

// clang-format off
constexpr Coding codings[] = {
    {false, 1, false, readIntegers<1, false>, writeIntegers<1, false>},
    {false, 1, true,  readIntegers<1, true>,  writeIntegers<1, true>},
    {false, 2, false, readIntegers<2, false>, writeIntegers<2, false>},
    {false, 2, true,  readIntegers<2, true>,  writeIntegers<2, true>},
    {false, 3, false, readIntegers<3, false>, writeIntegers<3, false>},
    {false, 3, true,  readIntegers<3, true>,  writeIntegers<3, true>},
    {false, 4, false, readIntegers<4, false>, writeIntegers<4, false>},
    {false, 4, true,  readIntegers<4, true>,  writeIntegers<4, true>},
    {true,  4, false, readReals<Float32, std::uint32_t, false>, writeReals<Float32, std::uint32_t, false>},
    {true,  4, true,  readReals<Float32, std::uint32_t, true>,  writeReals<Float32, std::uint32_t, true>},
    {true,  8, false, readReals<Float64, std::uint64_t, false>, writeReals<Float64, std::uint64_t, false>},
    {true,  8, true,  readReals<Float64, std::uint64_t, true>,  writeReals<Float64, std::uint64_t, true>},
};
// clang-format on

const Coding* codingOf(const Layout& layout)
{
    const auto* found = std::find_if(std::begin(codings), std::end(codings), [&](const Coding& coding) {
        return coding.isFloat == layout.isFloat && coding.bytes == layout.bytes &&
               coding.isBigEndian == layout.isBigEndian;
    });
    return found == std::end(codings) ? nullptr : found;
}

/// `run` over every channel of frames [first, first + frames).
void eachChannel(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 first,
                 UInt32 frames, Float32* samples, const Layout& layout, Run run)
{
    const UInt32 channels = format.mChannelsPerFrame;
    const bool interleaved = isInterleaved(format);
    for (UInt32 c = 0; c < channels; ++c) {
        auto* bytes = static_cast<std::uint8_t*>(list.mBuffers[interleaved ? 0 : c].mData);
        bytes += std::size_t{first} * format.mBytesPerFrame + (interleaved ? c * layout.bytes : 0);
        run({bytes, format.mBytesPerFrame, samples + c, channels, frames}, layout);
    }
}

} // namespace

bool isLinearPCM(const AudioStreamBasicDescription& format)
{
    if (format.mFormatID != kAudioFormatLinearPCM || !hasRateAndChannels(format)) return false;
    if (format.mFramesPerPacket != 1 || format.mBytesPerPacket != format.mBytesPerFrame) return false;
    const Layout layout = layoutOf(format);
    if (layout.bytes * channelsPerBuffer(format) != format.mBytesPerFrame || !codingOf(layout)) return false;
    if (layout.isFloat) return layout.bits == layout.bytes * 8;
    const bool isPacked = format.mFormatFlags & kAudioFormatFlagIsPacked;
    return !(format.mFormatFlags & fractionBits) && layout.bits >= 8 && layout.bits <= layout.bytes * 8 &&
           (!isPacked || layout.bits == layout.bytes * 8);
}

void decode(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 frames,
            Float32* out)
{
    const Layout layout = layoutOf(format);
    eachChannel(format, list, 0, frames, out, layout, codingOf(layout)->read);
}

void encode(const AudioStreamBasicDescription& format, const Float32* in, UInt32 frames,
            AudioBufferList& list, UInt32 first)
{
    const Layout layout = layoutOf(format);
    // Writing reads the floats only.
    eachChannel(format, list, first, frames, const_cast<Float32*>(in), layout, codingOf(layout)->write);
}

} // namespace kvxplatform::audiounit
