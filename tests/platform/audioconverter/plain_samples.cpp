#include "tests/platform/audioconverter/plain_samples.h"

#include "tests/platform/audiounit/unit.h"

#include <cmath>
#include <cstring>
#include <iterator>

namespace test {

// clang-format off
const Kind kinds[] = {
    {8,  isSigned | isPacked,         1, "8 bits"},
    {8,  isPacked,                    1, "8 bits, no sign"},
    {16, isSigned | isPacked,         2, "16 bits"},
    {16, isSigned | isPacked | isBig, 2, "16 bits, big-endian"},
    {16, isPacked | isBig,            2, "16 bits, no sign, big-endian"},
    {24, isSigned | isPacked,         3, "24 bits"},
    {24, isSigned | isPacked | isBig, 3, "24 bits, big-endian"},
    {24, isPacked,                    3, "24 bits, no sign"},
    {24, isSigned,                    4, "24 bits low in 32"},
    {24, isSigned | isHigh,           4, "24 bits high in 32"},
    {24, isSigned | isHigh | isBig,   4, "24 bits high in 32, big-endian"},
    {20, isSigned | isHigh,           3, "20 bits high in 24"},
    {12, 0,                           2, "12 bits low in 16, no sign"},
    {32, isSigned | isPacked,         4, "32 bits"},
    {32, isSigned | isPacked | isBig, 4, "32 bits, big-endian"},
    {32, isPacked,                    4, "32 bits, no sign"},
    {32, isFloat | isPacked,          4, "float"},
    {32, isFloat | isPacked | isBig,  4, "float, big-endian"},
    {64, isFloat | isPacked,          8, "double"},
    {64, isFloat | isPacked | isBig,  8, "double, big-endian"},
};
// clang-format on
const std::size_t kindCount = std::size(kinds);

AudioStreamBasicDescription formatOf(const Kind& kind, Float64 rate, UInt32 channels, bool apart)
{
    return pcm(rate, channels, kind.bits, kind.flags | (apart ? isNonInterleaved : 0), kind.bytes);
}

std::uint64_t rawAt(const Kind& kind, const unsigned char* bytes)
{
    std::uint64_t raw = 0;
    for (UInt32 i = 0; i < kind.bytes; ++i)
        raw |= std::uint64_t{bytes[kind.flags & isBig ? kind.bytes - 1 - i : i]} << 8 * i;
    return raw;
}

void putRaw(const Kind& kind, std::uint64_t raw, unsigned char* bytes)
{
    for (UInt32 i = 0; i < kind.bytes; ++i)
        bytes[kind.flags & isBig ? kind.bytes - 1 - i : i] = static_cast<unsigned char>(raw >> 8 * i);
}

double valueOf(const Kind& kind, std::uint64_t raw)
{
    if (kind.flags & isFloat) {
        double wide;
        float narrow;
        const auto word = static_cast<std::uint32_t>(raw);
        std::memcpy(&wide, &raw, 8);
        std::memcpy(&narrow, &word, 4);
        return kind.bytes == 4 ? static_cast<double>(narrow) : wide;
    }
    if (kind.flags & isHigh) raw >>= kind.bytes * 8 - kind.bits;
    const std::int64_t span = std::int64_t{1} << kind.bits;
    std::int64_t whole = static_cast<std::int64_t>(raw) & (span - 1);
    if (!(kind.flags & isSigned))
        whole -= span / 2;
    else if (whole >= span / 2)
        whole -= span;
    return static_cast<double>(whole) / (static_cast<double>(span) / 2);
}

std::uint64_t converted(const Kind& from, std::uint64_t raw, const Kind& to)
{
    const UInt32 order = isBig;
    const bool fills = from.bits == from.bytes * 8; // no padding
    const UInt32 matters = ~(order | isPacked | (fills ? UInt32{isHigh} : 0));
    if (from.bits == to.bits && from.bytes == to.bytes && (from.flags & matters) == (to.flags & matters))
        return raw;

    const double value = valueOf(from, raw);
    std::uint64_t result = 0;
    if (to.flags & isFloat) {
        if (to.bytes == 8) {
            std::memcpy(&result, &value, 8);
            return result;
        }
        const auto narrow = static_cast<float>(value);
        std::uint32_t word;
        std::memcpy(&word, &narrow, 4);
        return word;
    }
    const double full = std::ldexp(1.0, static_cast<int>(to.bits) - 1);
    double whole = std::isnan(value) ? 0 : std::nearbyint(value * full);
    if (whole > full - 1) whole = full - 1;
    if (whole < -full) whole = -full;
    std::int64_t number = static_cast<std::int64_t>(whole);
    if (!(to.flags & isSigned)) number += static_cast<std::int64_t>(full);
    result = static_cast<std::uint64_t>(number);
    if (to.flags & isHigh) result <<= to.bytes * 8 - to.bits;
    return result & ((std::uint64_t{1} << to.bytes * 8) - 1);
}

bool isSame(const Kind& kind, std::uint64_t a, std::uint64_t b)
{
    return a == b || (std::isnan(valueOf(kind, a)) && std::isnan(valueOf(kind, b)));
}

} // namespace test
