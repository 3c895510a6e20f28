// Bytes that mean the same in every encoding asked for.
#pragma once

#include <cstdint>

/// Whether no byte has its top bit set; true for none. Reads no further than the first that has.
inline bool isASCII(const void* bytes, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i)
        if (static_cast<const unsigned char*>(bytes)[i] >= 0x80) return false;
    return true;
}
