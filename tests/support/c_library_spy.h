// A spy on the calls of the C library: memory and locks. The linker redirects the calls of a program's own
// objects to the spy; calls inside shared libraries are not recorded. Recording allocates nothing. On a
// thread without begin(), every call goes straight to the C library.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace c_library_spy {

/// Start to record the current thread's calls of calloc, free (except of null), pthread_mutex_lock and
/// pthread_mutex_unlock.
void begin();

/// Stop recording and return the recorded calls: "calloc 8", "free", "lock", "lock refused", "unlock".
std::vector<std::string> end();

/// Return the mutex that the recorded thread locked last, or null if it locked none since begin().
const void* lastLock();

/// Make the next `count` calls of calloc return null, on any thread.
void refuseCalloc(int count);

/// Let `passing` calls of calloc succeed, then make the next `count` calls return null, on any thread.
void refuseCallocAfter(int passing, int count = 1);

/// Make one future `new (std::nothrow)` of a single object return null. The next one has the number 1.
void refuseNothrowNew(int number);

/// Make the next `count` pthread_mutex_lock calls fail on the recorded thread. A failed call does not lock
/// the mutex.
void refuseLock(int count);

/// Return the number of blocks from calloc that are not freed, since the start of the program.
long liveBlocks();

/// During the lifetime of such an object, every allocation on the current thread fails (null or
/// std::bad_alloc) and counts as an alarm. Freeing is allowed.
class NoAllocation {
public:
    NoAllocation();
    ~NoAllocation();
    NoAllocation(const NoAllocation&) = delete;
    NoAllocation& operator=(const NoAllocation&) = delete;
};

/// Return the number of alarms on all threads.
int alarms();

} // namespace c_library_spy
