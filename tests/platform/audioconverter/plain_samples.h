// Samples read and written the plain way, one at a time, as a reference: no code of the platform's.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <cstdint>
#include <string>

namespace test {

/// A kind of sample.
struct Kind {
    UInt32 bits, flags, bytes;
    const char* name;
};

extern const Kind kinds[];
extern const std::size_t kindCount;

AudioStreamBasicDescription formatOf(const Kind& kind, Float64 rate, UInt32 channels, bool isApart);

/// A sample's bytes as a number, the first byte being the lowest.
std::uint64_t rawAt(const Kind& kind, const unsigned char* bytes);
void putRaw(const Kind& kind, std::uint64_t raw, unsigned char* bytes);

/// What a sample says; full scale is 1.
double valueOf(const Kind& kind, std::uint64_t raw);

/// A sample of one kind as one of another.
std::uint64_t converted(const Kind& from, std::uint64_t raw, const Kind& to);

/// The same, but for the bits of what is not a number, which arithmetic may change.
bool isSame(const Kind& kind, std::uint64_t a, std::uint64_t b);

} // namespace test
