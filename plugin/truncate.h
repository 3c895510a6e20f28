// The one truncation of times and positions.
#pragma once

#include <cstdint>

/// Toward zero, to 64 bits; not-a-number and values out of range give INT64_MIN, as the processor does.
inline std::int64_t truncateTo64(double value)
{
    constexpr double limit = 9223372036854775808.0;
    return value >= -limit && value < limit ? static_cast<std::int64_t>(value) : INT64_MIN;
}

/// A place as the number of a frame: the low 32 bits of what is left, so that a place in front of the first
/// frame, or far behind the last, wraps.
inline std::uint32_t frameAt(double frames) { return static_cast<std::uint32_t>(truncateTo64(frames)); }
