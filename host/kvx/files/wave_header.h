// The header of a WAV file.
// All functions: [any].
#pragma once

#include <cstdint>
#include <string>

namespace kvx {

/// The length of a WAV file that is not known yet. The header then states 0xFFFFFFFF, and programs read to
/// the end of the file or the stream.
constexpr std::uint64_t unknownLength = std::uint64_t{1} << 40;

/// Format the header of a file, up to the first sample.
/// Units  rate in Hz; `bits` of an integer sample, or 0 for 32-bit float; `frames` may be unknownLength.
std::string waveHeader(std::uint32_t rate, std::uint32_t channels, std::uint32_t bits, std::uint64_t frames);

} // namespace kvx
