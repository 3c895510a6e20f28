// Records that other threads find by their address.
//
// An audio unit keeps the address of a stream state, and a client that of its instance, longer than the
// record lives. So an address is looked up before it is used. A found record counts its users: the last one
// frees it.
//
// All functions: [any].
#pragma once

#include "plugin/mutex_lock.h"
#include "plugin/shared_word.h"

#include <cstdlib>
#include <memory>

#include <pthread.h>
#include <sched.h>
#include <time.h>

namespace soundstream {

/// Count one more user.
template <class Record>
void use(Record& record)
{
    __atomic_add_fetch(&record.users, 1, __ATOMIC_RELAXED);
}

/// Count one user less; the last user destroys the record. Null is ignored.
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

/// A record in use, or null; its destructor leaves the record.
template <class Record>
using Used = std::unique_ptr<Record, Leave>;

/// Let other threads run while this one waits: yield at first, later sleep for a small part of a slice.
inline void yieldOrSleep(int waited)
{
    constexpr int yields = 100;
    constexpr timespec sleep = {0, 200000}; // in nanoseconds
    if (waited < yields)
        sched_yield();
    else
        nanosleep(&sleep, nullptr);
}

/// The live records of one kind, linked through their field `next`: no memory but the records' own.
template <class Record>
class LiveRecords {
public:
    /// Allocate a zero-filled record with one user, initialise it, and then let lookups find it.
    /// Returns  null without memory.
    template <class Initialise>
    Record* create(Initialise initialise)
    {
        auto* const record = static_cast<Record*>(std::calloc(1, sizeof(Record)));
        if (!record) return nullptr;
        record->users = 1;
        initialise(*record);
        const MutexLock lock(&mutex_);
        record->next = first_;
        storeInOrder(first_, record);
        return record;
    }

    /// Let no new lookup find `record`, and wait for the lookups in progress.
    /// Returns  false if another thread has removed the record.
    bool remove(Record& record)
    {
        if (!unlink(record)) return false;
        // Removing unlinks the record, then reads the lookup count; a lookup raises the count, then reads the
        // links. Under sequential consistency one of the two sees the other.
        for (int waited = 0; loadInOrder(lookups_) != 0; ++waited) yieldOrSleep(waited);
        return true;
    }

    /// The live record at `address`, in use; null if there is none. Takes no lock.
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
    int lookups_ = 0;                                   ///< in progress; a few instructions each
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER; ///< held while a record is linked or unlinked
};

} // namespace soundstream
