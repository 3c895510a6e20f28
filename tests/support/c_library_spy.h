// Watches what linked code asks of the C library: memory and locks. It works on a program that is linked with
// c_library_spy.cpp and the options in c_library_spy.cmake, which turn every reference of the linked objects
// to these functions into one to the spy; shared libraries are not watched.
//
// While nothing is watched, or on other threads, every call just goes through. Nothing here allocates.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace watched {

/// Begin to note calls of calloc, free (not of null), pthread_mutex_lock and pthread_mutex_unlock on this
/// thread.
void begin();

/// End it, and return what was noted since: "calloc 8", "free", "lock", "lock refused", "unlock".
std::vector<std::string> end();

/// The mutex that the watched thread locked last; null if none since begin().
const void* lastLock();

/// The next `count` calls of calloc return null, on any thread.
void refuseCalloc(int count);

/// The same, behind `passing` calls that go through.
void refuseCallocAfter(int passing, int count = 1);

/// The `number`th `new (std::nothrow)` of one object from now on, counted from 1, returns null.
void refuseNothrowNew(int number);

/// The next `count` locks on this thread fail, without being taken, while it is watched.
void refuseLock(int count);

/// Blocks that calloc gave since the program began and free has not taken back.
long liveBlocks();

/// While one of these lives, every allocation on this thread is refused (null, or std::bad_alloc) and rings
/// the alarm. Freeing is allowed.
class NoAllocation {
public:
    NoAllocation();
    ~NoAllocation();
    NoAllocation(const NoAllocation&) = delete;
    NoAllocation& operator=(const NoAllocation&) = delete;
};

/// How often the alarm rang, on any thread.
int alarms();

} // namespace watched
