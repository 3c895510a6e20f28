// Counts the allocations of a whole program with its shared libraries, and makes operator new fail on one
// thread. The program exports its symbols, so that the hook's functions replace those of the C and C++
// libraries. A sanitizer has a separate allocator, which notifies the hook.
#pragma once

#include <cstddef>

namespace allocator_hook {

/// Start or stop watching the current thread: counting its allocations, frees and mutex locks.
void watchThisThread(bool isWatched);

/// The number of calls that the watched threads have made since the construction of the Count object.
class Count {
public:
    Count();
    int allocations() const;
    int heapCalls() const; ///< number of allocations and frees
    int locks() const;     ///< number of mutex locks; 0 under a sanitizer

private:
    int allocations_, frees_, locks_;
};

extern const bool countsLocks; ///< whether Count::locks() counts; false under a sanitizer

std::size_t bytesInUse(); ///< size of all allocated memory blocks of the program
std::size_t peakBytes();  ///< highest bytesInUse() since the last resetPeak()
void resetPeak();

/// On the current thread, let the next `passing` calls of operator new succeed and the `failing` calls after
/// them fail. Calls of malloc do not fail. The function has no effect under the thread sanitizer.
void failNew(int passing, int failing);

/// Let all further calls of operator new on the current thread succeed.
/// Returns  the number of calls of operator new that failed on this thread since failNew().
int stopFailing();

} // namespace allocator_hook
