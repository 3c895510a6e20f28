// Reference-counted records that other threads find by address.
//
// An audio unit keeps the address of a StreamState, and a client keeps the address of its instance's
// QTSoundStreamGlobals, even after that record is freed. Therefore a thread looks an address up before it
// uses the record. Each record counts its users, and the last user frees the record.
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

/// Add one user to the record's user count.
template <class Record>
void use(Record& record)
{
    __atomic_add_fetch(&record.users, 1, __ATOMIC_RELAXED);
}

/// Subtract one user from the record's user count; the last user frees the record. A null pointer is ignored.
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

/// A pointer to a record that counts as one of the record's users, or null. Its destructor calls leave().
template <class Record>
using Used = std::unique_ptr<Record, Leave>;

/// Let other threads run during a wait: yield in the first calls, later sleep for a small part of a slice.
/// `waited` is the number of earlier calls in this wait.
inline void yieldOrSleep(int waited)
{
    constexpr int yields = 100;
    constexpr timespec sleep = {0, 200000}; // in nanoseconds
    if (waited < yields)
        sched_yield();
    else
        nanosleep(&sleep, nullptr);
}

/// The live records of one type. They are linked through their `next` fields, so the list allocates no
/// memory.
template <class Record>
class LiveRecords {
public:
    /// Allocate a zero-filled record with one user, call `initialise` on it, and then make it visible to
    /// lookups.
    /// Returns  null if there is no memory.
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

    /// Make `record` invisible to new lookups, and wait for the lookups in progress.
    /// Returns  false if another thread has already removed the record.
    bool remove(Record& record)
    {
        if (!unlink(record)) return false;
        // remove() unlinks the record, then reads the lookup count; find() raises the lookup count, then
        // reads the links. Under sequential consistency at least one of the two threads sees what the other
        // has written.
        for (int waited = 0; loadInOrder(lookups_) != 0; ++waited) yieldOrSleep(waited);
        return true;
    }

    /// Find the live record at `address` and count one more user; null if no live record has this address.
    /// Locks no mutex.
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
    int lookups_ = 0; ///< number of lookups in progress; each takes a few instructions
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER; ///< mutex, held while a record is linked or unlinked
};

} // namespace soundstream
