// A spy for memory and lock functions of the C library. The linker redirects only the calls of a program's
// own objects to the spy. It records the calls of the thread that called begin(), and allocates nothing to do
// so; the other functions of this header apply to the threads that their comments name.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace c_library_spy {

/// Start recording the current thread's calls of calloc, free (except of null), pthread_mutex_lock and
/// pthread_mutex_unlock.
void begin();

/// Stop recording and return the recorded calls: "calloc 8", "free", "lock", "lock refused", "unlock".
std::vector<std::string> end();

/// Return the mutex that the recorded thread locked last, or null without a lock since begin().
const void* lastLock();

/// Make the next `count` calls of calloc return null, on any thread.
void refuseCalloc(int count);

/// Let `passing` calls of calloc succeed, then make the next `count` calls return null, on any thread.
void refuseCallocAfter(int passing, int count = 1);

/// Make `new (std::nothrow)` of a single object return null once, on any thread: call `number`, counted from
/// 1.
void refuseNothrowNew(int number);

/// Make the next `count` calls of pthread_mutex_lock on the recorded thread fail without locking the mutex.
void refuseLock(int count);

/// Return how many blocks that calloc returned are not freed. Counts the calls of all threads since the start
/// of the program.
long liveBlocks();

/// While a NoAllocation object exists, each allocation on the thread that made the object fails (null or
/// std::bad_alloc) and counts as an alarm. Freeing is allowed.
class NoAllocation {
public:
    NoAllocation();
    ~NoAllocation();
    NoAllocation(const NoAllocation&) = delete;
    NoAllocation& operator=(const NoAllocation&) = delete;
};

/// Return the number of allocations that NoAllocation has refused, on all threads.
int alarms();

} // namespace c_library_spy
