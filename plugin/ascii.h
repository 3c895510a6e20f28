// ASCII text has the same bytes in every byte encoding used here, so it needs no conversion.
// All functions: [any].
#pragma once

#include <cstdint>

/// Whether no byte has its top bit set; true for no bytes. Stops reading at the first such byte.
inline bool isASCII(const void* bytes, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i)
        if (static_cast<const unsigned char*>(bytes)[i] >= 0x80) return false;
    return true;
}
