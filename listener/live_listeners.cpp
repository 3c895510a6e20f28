#include "listener/live_listeners.h"

#include "plugin/shared_word.h"

#include <cstdlib>

namespace listener {

namespace {

struct Entry {
    REALobjectStruct* object;
    Serial serial;
    Entry* next;
};

// Hash table of the live listeners, with an object's address as the key.
constexpr std::size_t bucketCount = 256;
Entry* buckets[bucketCount]; // [main]

alignas(8) Serial latest = 0; // serial number of the latest construction, written by [main], read by [any]

/// Address of the pointer to the entry of `object`, or of the null pointer at the end of the bucket for
/// `object`.
Entry** linkTo(REALobjectStruct* object)
{
    Entry** link = &buckets[reinterpret_cast<Word>(object) / 16 % bucketCount];
    while (*link && (*link)->object != object) link = &(*link)->next;
    return link;
}

} // namespace

Serial latestSerial() { return loadAcquired(latest); }

void addLiveListener(REALobjectStruct* object)
{
    Entry** link = linkTo(object);
    if (*link) return;
    storeReleased(latest, latest + 1);
    *link = static_cast<Entry*>(std::calloc(1, sizeof(Entry)));
    if (!*link) return;
    (*link)->object = object;
    (*link)->serial = latest;
}

void removeLiveListener(REALobjectStruct* object)
{
    Entry** link = linkTo(object);
    Entry* const entry = *link;
    if (!entry) return;
    *link = entry->next;
    std::free(entry);
}

bool belongsTo(REALobjectStruct* object, Serial recordedSerial)
{
    const Entry* const entry = *linkTo(object);
    return entry && entry->serial <= recordedSerial;
}

} // namespace listener
