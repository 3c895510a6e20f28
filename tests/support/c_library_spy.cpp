#include "tests/support/c_library_spy.h"

#include "tests/support/call_log.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <pthread.h>

namespace c_library_spy {

namespace {

thread_local bool isWatching = false;
thread_local int forbidden = 0;
spy::CallLog calls; // recorded calls of the thread that called begin()
const void* lockedLast = nullptr;
std::atomic<int> callocsToPass{0}, callocsToRefuse{0}, newToRefuse{0}, locksToRefuse{0}, rung{0};
std::array<std::atomic<void*>, 4096> blocks; // blocks from calloc that are not freed

/// Replace the entry `before` in the table of blocks by `now`. Returns false if the table has no such entry.
bool replaceBlock(void* before, void* now)
{
    for (auto& block : blocks) {
        void* expected = before;
        if (block.load(std::memory_order_relaxed) == before && block.compare_exchange_strong(expected, now))
            return true;
    }
    return false;
}

void record(std::string_view call)
{
    if (isWatching) calls.add(call);
}

/// Return whether the current thread must not allocate; if so, count an alarm.
bool ring()
{
    if (!forbidden) return false;
    ++rung;
    return true;
}

bool takeOne(std::atomic<int>& budget)
{
    int left = budget.load();
    while (left > 0)
        if (budget.compare_exchange_weak(left, left - 1)) return true;
    return false;
}

} // namespace

void begin()
{
    calls.forget();
    lockedLast = nullptr;
    isWatching = true;
}

std::vector<std::string> end()
{
    isWatching = false;
    return calls.calls();
}

const void* lastLock() { return lockedLast; }
void refuseCalloc(int count) { refuseCallocAfter(0, count); }
void refuseCallocAfter(int passing, int count)
{
    callocsToPass = passing;
    callocsToRefuse = count;
}
void refuseNothrowNew(int number) { newToRefuse = number; }
void refuseLock(int count) { locksToRefuse = count; }
long liveBlocks()
{
    return std::count_if(blocks.begin(), blocks.end(),
                         [](const auto& block) { return block.load() != nullptr; });
}

NoAllocation::NoAllocation() { ++forbidden; }
NoAllocation::~NoAllocation() { --forbidden; }
int alarms() { return rung; }

} // namespace c_library_spy

using namespace c_library_spy;

// The linker turns a reference to NAME into __wrap_NAME; __real_NAME is the function of the C library.
extern "C" {

void* __real_malloc(std::size_t);
void* __real_calloc(std::size_t, std::size_t);
void* __real_realloc(void*, std::size_t);
void __real_free(void*);
int __real_pthread_mutex_lock(pthread_mutex_t*);
int __real_pthread_mutex_unlock(pthread_mutex_t*);

void* __wrap_malloc(std::size_t size) { return ring() ? nullptr : __real_malloc(size); }

void* __wrap_realloc(void* memory, std::size_t size)
{
    return ring() ? nullptr : __real_realloc(memory, size);
}

void* __wrap_calloc(std::size_t count, std::size_t size)
{
    spy::Line line;
    line << "calloc " << count * size;
    record(line.text());
    if (ring() || (!takeOne(callocsToPass) && takeOne(callocsToRefuse))) return nullptr;
    void* memory = __real_calloc(count, size);
    if (memory && !replaceBlock(nullptr, memory)) std::abort(); // no free entry in the table of blocks
    return memory;
}

void __wrap_free(void* memory)
{
    if (memory) {
        record("free");
        replaceBlock(memory, nullptr);
    }
    __real_free(memory);
}

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex)
{
    if (isWatching && takeOne(locksToRefuse)) {
        record("lock refused");
        return EINVAL;
    }
    const int status = __real_pthread_mutex_lock(mutex);
    record("lock");
    if (isWatching) lockedLast = mutex;
    return status;
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex)
{
    record("unlock");
    return __real_pthread_mutex_unlock(mutex);
}

// operator new and new[], mangled. `j` is size_t in 32-bit builds, `m` is size_t in 64-bit builds.
#ifdef __LP64__
#define WRAPPED_NEW(kind) __wrap__Zn##kind##m
#define REAL_NEW(kind) __real__Zn##kind##m
#define WRAPPED_NOTHROW_NEW __wrap__ZnwmRKSt9nothrow_t
#define REAL_NOTHROW_NEW __real__ZnwmRKSt9nothrow_t
#else
#define WRAPPED_NEW(kind) __wrap__Zn##kind##j
#define REAL_NEW(kind) __real__Zn##kind##j
#define WRAPPED_NOTHROW_NEW __wrap__ZnwjRKSt9nothrow_t
#define REAL_NOTHROW_NEW __real__ZnwjRKSt9nothrow_t
#endif

void* REAL_NEW(w)(std::size_t);
void* REAL_NOTHROW_NEW(std::size_t, const std::nothrow_t&);
void* REAL_NEW(a)(std::size_t);

void* WRAPPED_NOTHROW_NEW(std::size_t size, const std::nothrow_t& tag)
{
    if (ring() || (takeOne(newToRefuse) && newToRefuse == 0)) return nullptr;
    return REAL_NOTHROW_NEW(size, tag);
}

void* WRAPPED_NEW(w)(std::size_t size)
{
    if (ring()) throw std::bad_alloc();
    return REAL_NEW(w)(size);
}

void* WRAPPED_NEW(a)(std::size_t size)
{
    if (ring()) throw std::bad_alloc();
    return REAL_NEW(a)(size);
}
}
