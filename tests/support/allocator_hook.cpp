#include "tests/support/allocator_hook.h"

#include "tests/support/sanitizers.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <malloc.h>
#include <new>
#include <pthread.h>

#define REPLACEMENT extern "C" __attribute__((visibility("default")))

namespace {

// Plain data for each thread (__thread), because access to a thread_local object could allocate.
__thread bool isThreadWatched = false;
__thread int newCallsToPass = 0, newCallsToFail = 0, failedNewCalls = 0;

std::atomic<int> allocationCount{0}, freeCount{0}, lockCount{0};
std::atomic<std::size_t> currentBytes{0}, highestBytes{0};

void countAllocation(std::size_t bytes)
{
    if (isThreadWatched) ++allocationCount;
    const std::size_t sum = currentBytes.fetch_add(bytes) + bytes;
    for (std::size_t top = highestBytes; sum > top && !highestBytes.compare_exchange_weak(top, sum);) {
    }
}

void countFree(std::size_t bytes)
{
    if (isThreadWatched) ++freeCount;
    currentBytes.fetch_sub(bytes);
}

} // namespace

namespace allocator_hook {

void watchThisThread(bool isWatched) { isThreadWatched = isWatched; }

Count::Count() : allocations_{allocationCount}, frees_{freeCount}, locks_{lockCount} {}
int Count::allocations() const { return allocationCount - allocations_; }
int Count::heapCalls() const { return allocations() + freeCount - frees_; }
int Count::locks() const { return lockCount - locks_; }

std::size_t bytesInUse() { return currentBytes; }
std::size_t peakBytes() { return highestBytes; }
void resetPeak() { highestBytes = currentBytes.load(); }

void failNew(int passing, int failing)
{
    newCallsToPass = passing;
    newCallsToFail = failing;
    failedNewCalls = 0;
}

int stopFailing()
{
    newCallsToFail = 0;
    return failedNewCalls;
}

} // namespace allocator_hook

#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void*);

namespace {

const int installed = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t size) { countAllocation(size); },
    [](const volatile void* memory) {
        if (memory) countFree(__sanitizer_get_allocated_size(memory));
    });

} // namespace

const bool allocator_hook::countsLocks = false;

#else

const bool allocator_hook::countsLocks = true;

extern "C" void* __libc_malloc(std::size_t);
extern "C" void* __libc_calloc(std::size_t, std::size_t);
extern "C" void* __libc_realloc(void*, std::size_t);
extern "C" void* __libc_memalign(std::size_t, std::size_t);
extern "C" void __libc_free(void*);

namespace {

void* counted(void* memory)
{
    countAllocation(malloc_usable_size(memory));
    return memory;
}

} // namespace

REPLACEMENT void* malloc(std::size_t size) { return counted(__libc_malloc(size)); }
REPLACEMENT void* calloc(std::size_t count, std::size_t size) { return counted(__libc_calloc(count, size)); }
REPLACEMENT void* realloc(void* old, std::size_t size)
{
    const std::size_t before = malloc_usable_size(old);
    void* const memory = __libc_realloc(old, size);
    if (memory || size == 0) currentBytes.fetch_sub(before);
    return counted(memory);
}
REPLACEMENT void* memalign(std::size_t alignment, std::size_t size)
{
    return counted(__libc_memalign(alignment, size));
}
REPLACEMENT void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
REPLACEMENT int posix_memalign(void** result, std::size_t alignment, std::size_t size)
{
    *result = memalign(alignment, size);
    return *result ? 0 : ENOMEM;
}
REPLACEMENT void free(void* memory)
{
    if (memory) countFree(malloc_usable_size(memory));
    __libc_free(memory);
}

REPLACEMENT int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    using Lock = int (*)(pthread_mutex_t*);
    static Lock real = nullptr; // set by the first lock of the program, before any thread is watched
    if (!real) real = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    if (isThreadWatched) ++lockCount;
    return real(mutex);
}

#endif

#if !__has_feature(thread_sanitizer) // the thread sanitizer allows no other operator new

namespace {

bool mayAllocate()
{
    if (!newCallsToFail) return true;
    if (newCallsToPass) return --newCallsToPass, true;
    return --newCallsToFail, ++failedNewCalls, false;
}

} // namespace

void* operator new(std::size_t size)
{
    void* const memory = mayAllocate() ? std::malloc(size ? size : 1) : nullptr;
    if (!memory) throw std::bad_alloc();
    return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return mayAllocate() ? std::malloc(size ? size : 1) : nullptr;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

#endif
