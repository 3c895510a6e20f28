#include "soundstream/stream_state.h"

#include <cstdlib>

#include <pthread.h>

namespace soundstream {

namespace {

// Guards the list, between clients and the host program. The render thread never asks for it.
pthread_mutex_t listLock = PTHREAD_MUTEX_INITIALIZER;
RefconRecord* registered = nullptr;

class Locked {
public:
    Locked() { pthread_mutex_lock(&listLock); }
    ~Locked() { pthread_mutex_unlock(&listLock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

template <class Record>
Record* newRecord()
{
    auto* const record = static_cast<Record*>(std::calloc(1, sizeof(Record)));
    if (record) record->holders = 1;
    return record;
}

/// A new record that has found its place; null without one.
template <class Record, class Find>
Record* withPlace(Record* record, Find find)
{
    if (!record || find(*record)) return record;
    std::free(record);
    return nullptr;
}

template <class Record>
bool isLastHolder(Record* record)
{
    return record && __atomic_sub_fetch(&record->holders, 1, __ATOMIC_ACQ_REL) == 0;
}

} // namespace

StreamState* newStreamState()
{
    return withPlace(newRecord<StreamState>(), [](StreamState& state) {
        state.entrance = openEntrance(state);
        return state.entrance != nullptr;
    });
}

QTSoundStreamGlobals* newGlobals()
{
    return withPlace(newRecord<QTSoundStreamGlobals>(), [](QTSoundStreamGlobals& globals) {
        globals.place = openPlace(globals);
        return globals.place != nullptr;
    });
}

RefconRecord* newRefconRecord(StreamState& state)
{
    RefconRecord* const record = newRecord<RefconRecord>();
    if (!record) return nullptr;
    hold(state);
    record->state = &state;
    const Locked locked;
    record->next = registered;
    registered = record;
    return record;
}

void drop(StreamState* state)
{
    if (!isLastHolder(state)) return;
    Entrance& entrance = *state->entrance;
    closeEntrance(entrance);
    afterRender(entrance, state->end, std::free, state);
}

void drop(RefconRecord* record)
{
    if (!isLastHolder(record)) return;
    drop(record->state);
    std::free(record);
}

void drop(QTSoundStreamGlobals* globals)
{
    if (!isLastHolder(globals)) return;
    drop(globals->refcon);
    std::free(globals);
}

RefconRecord* findRefconRecord(long refcon)
{
    const Locked locked;
    for (RefconRecord* record = registered; record; record = record->next)
        if (reinterpret_cast<long>(record) == refcon) {
            hold(*record);
            return record;
        }
    return nullptr;
}

void retire(RefconRecord* record)
{
    if (!record) return;
    {
        const Locked locked;
        for (RefconRecord** link = &registered; *link; link = &(*link)->next)
            if (*link == record) {
                *link = record->next;
                break;
            }
    }
    const auto dropIt = [](void* retired) { drop(static_cast<RefconRecord*>(retired)); };
    afterRender(*record->state->entrance, record->end, dropIt, record);
}

} // namespace soundstream
