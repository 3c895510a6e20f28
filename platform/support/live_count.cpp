#include "platform/support/live_count.h"

#include <KVXPlatform/KVXPlatform.h>

#include <algorithm>
#include <cstring>

namespace kvxplatform {

namespace {
// First node of the linked list of counters, which is complete once the library is loaded.
const LiveCount* first = nullptr;
} // namespace

LiveCount::LiveCount(const char* kind) : kind_(kind), next_(first) { first = this; }

} // namespace kvxplatform

uint32_t KVXPlatformGetLiveCounts(KVXLiveCount* rows, uint32_t capacity)
{
    uint32_t kinds = 0;
    for (const kvxplatform::LiveCount* each = kvxplatform::first; each; each = each->next()) {
        const uint32_t count = each->count();
        if (!count) continue;
        if (rows && kinds < capacity) rows[kinds] = {each->kind(), count};
        ++kinds;
    }
    // The rows are sorted by name, because the order of the linked list depends on the order of linking.
    if (rows)
        std::sort(rows, rows + std::min(kinds, capacity), [](const KVXLiveCount& a, const KVXLiveCount& b) {
            return std::strcmp(a.kind, b.kind) < 0;
        });
    return kinds;
}
