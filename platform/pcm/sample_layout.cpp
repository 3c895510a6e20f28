#include "platform/pcm/sample_layout.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace kvxplatform::pcm {
namespace {

/// Read or write the bytes of a sample as an unsigned integer.
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

/// Read or write the number that belongs to frame `i` of a span, at any alignment.
template <class Real>
Real numberAt(const ChannelSpan<Real>& span, UInt32 i)
{
    Real number;
    std::memcpy(&number, span.numbers + i * span.numberStride, sizeof number);
    return number;
}
template <class Real>
void setNumber(const ChannelSpan<Real>& span, UInt32 i, Real number)
{
    std::memcpy(span.numbers + i * span.numberStride, &number, sizeof number);
}

/// Round a value in the range of 32 bits to an integer. Adding the constant shifts the fraction out of the
/// double's mantissa, so the processor's rounding mode applies.
std::int32_t nearest(double value)
{
    return static_cast<std::int32_t>(bitsAs<std::uint64_t>(value + 6755399441055744.0));
}

/// Conversion of integer samples to and from floats. The sample is shifted to the top bits of a 32-bit
/// number.
struct Integer {
    explicit Integer(const SampleLayout& layout)
        : bits(layout.bits), shift(layout.isHigh ? 32 - 8 * layout.bytes : 32 - layout.bits),
          mask(~std::uint32_t{0} << (32 - layout.bits)), offset(layout.isSigned ? 0 : 0x8000'0000),
          scale(static_cast<double>(std::int64_t{1} << (layout.bits - 1)))
    {
    }

    double read(std::uint32_t raw) const
    {
        const auto top = static_cast<std::int32_t>(((raw << shift) & mask) ^ offset);
        return top * (1.0 / 2147483648.0);
    }
    std::uint32_t write(double sample) const
    {
        double scaled = sample * scale;
        scaled = scaled == scaled ? std::clamp(scaled, -scale, scale - 1) : 0;
        const auto top = static_cast<std::uint32_t>(nearest(scaled)) << (32 - bits);
        // A signed sample in the low bits of its container is sign-extended.
        return offset ? (top ^ offset) >> shift
                      : static_cast<std::uint32_t>(static_cast<std::int32_t>(top) >> shift);
    }

    UInt32 bits, shift;
    std::uint32_t mask, offset;
    double scale;
};

template <class Real, unsigned bytes, bool isBigEndian>
void readIntegers(const ChannelSpan<Real>& span, const SampleLayout& layout)
{
    const Integer integer(layout);
    for (UInt32 i = 0; i < span.frames; ++i)
        setNumber(span, i,
                  static_cast<Real>(integer.read(static_cast<std::uint32_t>(
                      load<bytes, isBigEndian>(span.samples + i * span.sampleStride)))));
}
template <class Real, unsigned bytes, bool isBigEndian>
void writeIntegers(const ChannelSpan<Real>& span, const SampleLayout& layout)
{
    const Integer integer(layout);
    for (UInt32 i = 0; i < span.frames; ++i)
        store<bytes, isBigEndian>(span.samples + i * span.sampleStride,
                                  integer.write(static_cast<double>(numberAt(span, i))));
}

template <class Real, class Stored, class Bits, bool isBigEndian>
void readReals(const ChannelSpan<Real>& span, const SampleLayout&)
{
    for (UInt32 i = 0; i < span.frames; ++i)
        setNumber(span, i,
                  static_cast<Real>(bitsAs<Stored>(static_cast<Bits>(
                      load<sizeof(Bits), isBigEndian>(span.samples + i * span.sampleStride)))));
}
template <class Real, class Stored, class Bits, bool isBigEndian>
void writeReals(const ChannelSpan<Real>& span, const SampleLayout&)
{
    for (UInt32 i = 0; i < span.frames; ++i)
        store<sizeof(Bits), isBigEndian>(span.samples + i * span.sampleStride,
                                         bitsAs<Bits>(static_cast<Stored>(numberAt(span, i))));
}

/// A sample layout and the functions that read and write it.
template <class Real>
struct Row {
    bool isFloat;
    UInt32 bytes;
    bool isBigEndian;
    SampleCoding<Real> coding;
};

template <class Real, unsigned bytes, bool isBig>
constexpr Row<Real> integers()
{
    return {false, bytes, isBig, {readIntegers<Real, bytes, isBig>, writeIntegers<Real, bytes, isBig>}};
}
template <class Real, class Stored, class Bits, bool isBig>
constexpr Row<Real> reals()
{
    return {true,
            sizeof(Stored),
            isBig,
            {readReals<Real, Stored, Bits, isBig>, writeReals<Real, Stored, Bits, isBig>}};
}

// clang-format off
template <class Real>
constexpr Row<Real> rows[] = {
    integers<Real, 1, false>(), integers<Real, 1, true>(),
    integers<Real, 2, false>(), integers<Real, 2, true>(),
    integers<Real, 3, false>(), integers<Real, 3, true>(),
    integers<Real, 4, false>(), integers<Real, 4, true>(),
    reals<Real, Float32, std::uint32_t, false>(), reals<Real, Float32, std::uint32_t, true>(),
    reals<Real, Float64, std::uint64_t, false>(), reals<Real, Float64, std::uint64_t, true>(),
};
// clang-format on

} // namespace

SampleLayout layoutOf(const AudioStreamBasicDescription& format)
{
    const UInt32 flags = format.mFormatFlags;
    const UInt32 channels = channelsPerBuffer(format);
    SampleLayout layout{};
    layout.bytes = channels ? format.mBytesPerFrame / channels : 0;
    layout.bits = format.mBitsPerChannel;
    layout.isFloat = flags & kAudioFormatFlagIsFloat;
    layout.isBigEndian = flags & kAudioFormatFlagIsBigEndian;
    layout.isSigned = flags & kAudioFormatFlagIsSignedInteger;
    layout.isHigh = flags & kAudioFormatFlagIsAlignedHigh;
    return layout;
}

template <class Real>
const SampleCoding<Real>* codingOf(const SampleLayout& layout)
{
    const auto* found = std::find_if(std::begin(rows<Real>), std::end(rows<Real>), [&](const Row<Real>& row) {
        return row.isFloat == layout.isFloat && row.bytes == layout.bytes &&
               row.isBigEndian == layout.isBigEndian;
    });
    return found == std::end(rows<Real>) ? nullptr : &found->coding;
}
template const SampleCoding<Float32>* codingOf<Float32>(const SampleLayout&);
template const SampleCoding<Float64>* codingOf<Float64>(const SampleLayout&);

} // namespace kvxplatform::pcm
