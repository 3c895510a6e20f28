// Counts and refuses the allocations of a whole program with its shared libraries. The program exports its
// symbols, so that the hook's functions replace those of the C library. A sanitizer has its own allocator,
// which notifies the hook.
#pragma once

#include <cstddef>

namespace allocator_hook {

/// Count the heap calls and locks of this thread from now on, or stop.
void watchThisThread(bool isWatched);

/// The calls of all watched threads since the construction of the object.
class Count {
public:
    Count();
    int allocations() const;
    int heapCalls() const; ///< allocations and frees
    int locks() const;     ///< mutex locks; 0 under a sanitizer

private:
    int allocations_, frees_, locks_;
};

extern const bool countsLocks; ///< false under a sanitizer

std::size_t bytesInUse(); ///< size of all memory blocks of the program
std::size_t peakBytes();  ///< highest bytesInUse() since the last resetPeak()
void resetPeak();

/// Let the next `passing` calls of operator new on this thread succeed and `failing` calls after them fail.
/// The thread sanitizer does not support this function.
void failNew(int passing, int failing);

/// Let all further calls of operator new succeed.
/// Returns  the number of calls that failed since failNew().
int stopFailing();

} // namespace allocator_hook
