#include "listener/live_listeners.h"

#include <cstdlib>

namespace listener {

namespace {

struct Live {
    REALobjectStruct* object;
    Serial serial;
    Live* next;
};

// A hash table by address.
constexpr std::size_t bucketCount = 256;
Live* buckets[bucketCount]; // [main]

alignas(8) Serial latest = 0; // written by [main], read by [any]

/// The link that points to `object`'s entry, or the null link at the end of its bucket.
Live** linkTo(REALobjectStruct* object)
{
    Live** link = &buckets[reinterpret_cast<Word>(object) / 16 % bucketCount];
    while (*link && (*link)->object != object) link = &(*link)->next;
    return link;
}

} // namespace

Serial latestSerial() { return __atomic_load_n(&latest, __ATOMIC_ACQUIRE); }

void addLiveListener(REALobjectStruct* object)
{
    Live** link = linkTo(object);
    if (*link) return;
    __atomic_store_n(&latest, latest + 1, __ATOMIC_RELEASE);
    *link = static_cast<Live*>(std::calloc(1, sizeof(Live)));
    if (!*link) return;
    (*link)->object = object;
    (*link)->serial = latest;
}

void removeLiveListener(REALobjectStruct* object)
{
    Live** link = linkTo(object);
    Live* gone = *link;
    if (!gone) return;
    *link = gone->next;
    std::free(gone);
}

bool belongsTo(REALobjectStruct* object, Serial recordedSerial)
{
    const Live* live = *linkTo(object);
    return live && live->serial <= recordedSerial;
}

} // namespace listener
