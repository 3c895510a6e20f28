// The live-object counts of the platform.
#pragma once

#include <KVXPlatform/KVXPlatform.h>

#include <cstdint>
#include <string_view>

namespace support {

/// Return the number of platform objects of `kind`, such as "IOProc", that no caller has released.
/// [any]
inline std::uint32_t liveObjects(std::string_view kind)
{
    KVXLiveCount rows[32];
    const std::uint32_t kinds = KVXPlatformGetLiveCounts(rows, 32);
    for (std::uint32_t i = 0; i < kinds && i < 32; ++i)
        if (rows[i].kind == kind) return rows[i].count;
    return 0;
}

} // namespace support
