// Floating-point numbers to whole ones: toward zero, and INT64_MIN for what does not fit, as the processor
// does.
#pragma once

#include <cstdint>

namespace host {

std::int64_t truncatedToInt64(double number);

/// Likewise; 2^63 and above keep their value up to 2^64.
std::uint64_t truncatedToUInt64(double number);

} // namespace host
