// Conversion of times and positions to integers, for the whole library.
// All functions: [any].
#pragma once

#include <cstdint>

/// Truncate toward zero to 64 bits. NaN and values out of range give INT64_MIN, the result of the processor's
/// conversion instruction.
inline std::int64_t truncateTo64(double value)
{
    constexpr double limit = 9223372036854775808.0;
    return value >= -limit && value < limit ? static_cast<std::int64_t>(value) : INT64_MIN;
}

/// Number of the frame at position `frames`: the low 32 bits of the truncated value, so a negative or very
/// large position wraps.
inline std::uint32_t frameAt(double frames) { return static_cast<std::uint32_t>(truncateTo64(frames)); }
