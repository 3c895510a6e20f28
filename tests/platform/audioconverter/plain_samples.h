// A reference for sample conversion, which converts one sample at a time and uses no code of the platform.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <cstdint>
#include <string>

namespace test {

/// A sample format.
struct Kind {
    UInt32 bits, flags, bytes;
    const char* name;
};

extern const Kind kinds[];
extern const std::size_t kindCount;

AudioStreamBasicDescription formatOf(const Kind& kind, Float64 rate, UInt32 channels, bool isApart);

/// Get the bytes of a sample as a number, in the byte order of the format.
std::uint64_t rawAt(const Kind& kind, const unsigned char* bytes);
void putRaw(const Kind& kind, std::uint64_t raw, unsigned char* bytes);

/// Get the value of a sample, in which full scale is 1.
double valueOf(const Kind& kind, std::uint64_t raw);

/// Convert a sample to another format.
std::uint64_t converted(const Kind& from, std::uint64_t raw, const Kind& to);

/// Whether two samples are equal. All NaNs are equal, because arithmetic may change the bits of a NaN.
bool isSame(const Kind& kind, std::uint64_t a, std::uint64_t b);

} // namespace test
