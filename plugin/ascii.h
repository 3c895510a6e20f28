// A check for ASCII text: such text has the same bytes in every 8-bit encoding that the library uses, so it
// needs no conversion.
// All functions: [any].
#pragma once

#include <cstdint>

/// Whether all bytes are ASCII (top bit clear); true if `count` is 0. Reads no byte after the first byte that
/// is not ASCII.
inline bool isASCII(const void* bytes, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i)
        if (static_cast<const unsigned char*>(bytes)[i] >= 0x80) return false;
    return true;
}
