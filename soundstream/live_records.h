// Records that other threads find by their address.
//
// An audio unit keeps the address of a stream state, and a client that of its instance, longer than the record
// lives. So an address is looked up before it is used, and a found record counts its users: the last one frees it.
#pragma once

#include "plugin/mutex_lock.h"
#include "plugin/shared_word.h"

#include <cstdlib>
#include <memory>

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace soundstream {

/// Count one more user. [any]
template <class Record>
void use(Record& record)
{
    __atomic_add_fetch(&record.users, 1, __ATOMIC_RELAXED);
}

/// Count one user less; the last one destroys the record. Null is ignored. [any]
template <class Record>
void leave(Record* record)
{
    if (record && __atomic_sub_fetch(&record->users, 1, __ATOMIC_ACQ_REL) == 0) destroy(record);
}

struct Leave {
    template <class Record>
    void operator()(Record* record) const
    {
        leave(record);
    }
};

/// A record in use for as long as this lives; or null.
template <class Record>
using Used = std::unique_ptr<Record, Leave>;

/// Let other threads run while this one waits: yield at first, then sleep for a small part of a slice. [any]
inline void yieldOrSleep(int waited)
{
    constexpr int yields = 100;
    constexpr useconds_t sleepMicroseconds = 200;
    if (waited < yields)
        sched_yield();
    else
        usleep(sleepMicroseconds);
}

/// The live records of one kind. They are linked through their field `next`: nothing is allocated.
template <class Record>
class LiveRecords {
public:
    /// Create a live record with one user, zero-filled; null without memory.
    /// [any]
    Record* create()
    {
        Record* const record = allocate();
        if (record) add(*record);
        return record;
    }

    /// The same, not yet live.
    /// [any]
    static Record* allocate()
    {
        auto* const record = static_cast<Record*>(std::calloc(1, sizeof(Record)));
        if (record) record->users = 1;
        return record;
    }

    /// Let lookups find `record`.
    /// [any]
    void add(Record& record)
    {
        const MutexLock lock(&mutex_);
        record.next = first_;
        storeInOrder(first_, &record);
    }

    /// New lookups no longer find `record`, and lookups in progress have ended.
    /// Returns  false if another thread has removed it.
    /// [any]
    bool remove(Record& record)
    {
        if (!unlink(record)) return false;
        // Removing unlinks the record, then reads the count of lookups; a lookup raises the count, then reads the
        // links. Under sequential consistency one of the two sees the other.
        for (int waited = 0; loadInOrder(lookups_) != 0; ++waited) yieldOrSleep(waited);
        return true;
    }

    /// The live record at `address`, or null. Takes no lock.
    /// [any]
    Used<Record> find(const void* address)
    {
        __atomic_add_fetch(&lookups_, 1, __ATOMIC_SEQ_CST);
        Record* record = loadInOrder(first_);
        while (record && record != address) record = loadInOrder(record->next);
        if (record) use(*record);
        __atomic_sub_fetch(&lookups_, 1, __ATOMIC_SEQ_CST);
        return Used<Record>(record);
    }

private:
    bool unlink(const Record& record)
    {
        const MutexLock lock(&mutex_);
        for (Record** link = &first_; *link; link = &(*link)->next)
            if (*link == &record) {
                storeInOrder(*link, record.next);
                return true;
            }
        return false;
    }

    Record* first_ = nullptr;
    int lookups_ = 0;                                   ///< in progress: a few instructions each
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER; ///< between threads that add and remove
};

} // namespace soundstream
