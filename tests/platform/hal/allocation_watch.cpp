#include "tests/platform/hal/allocation_watch.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define WATCH_HOOKS_A_SANITIZER 1
#endif
#endif

namespace {

std::atomic<int> allocationCount{0};
std::atomic<int> round{1}; // current round; a thread that joined in an earlier round is no longer watched
// Round in which this thread joined; plain data, because reading it must not allocate.
__thread int watchedInRound = 0;

void note()
{
    if (watchedInRound && watchedInRound == round.load(std::memory_order_relaxed))
        allocationCount.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

#if defined(WATCH_HOOKS_A_SANITIZER)

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));
namespace {
void noteAllocation(const volatile void*, std::size_t) { note(); }
void noteFree(const volatile void*) { note(); }
const int installed = __sanitizer_install_malloc_and_free_hooks(noteAllocation, noteFree);
} // namespace

#else

#define INTERPOSED extern "C" __attribute__((visibility("default")))

extern "C" void* __libc_malloc(std::size_t);
extern "C" void* __libc_calloc(std::size_t, std::size_t);
extern "C" void* __libc_realloc(void*, std::size_t);
extern "C" void* __libc_memalign(std::size_t, std::size_t);
extern "C" void __libc_free(void*);

INTERPOSED void* malloc(std::size_t size) { return note(), __libc_malloc(size); }
INTERPOSED void* calloc(std::size_t count, std::size_t size) { return note(), __libc_calloc(count, size); }
INTERPOSED void* realloc(void* old, std::size_t size) { return note(), __libc_realloc(old, size); }
INTERPOSED void* memalign(std::size_t alignment, std::size_t size)
{
    return note(), __libc_memalign(alignment, size);
}
INTERPOSED void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
INTERPOSED int posix_memalign(void** result, std::size_t alignment, std::size_t size)
{
    *result = memalign(alignment, size);
    return *result ? 0 : ENOMEM;
}
INTERPOSED void free(void* block)
{
    if (block) note(); // a free is counted too, because it may lock
    __libc_free(block);
}

#endif

namespace watch {

void watchThisThread() { watchedInRound = round; }

void stop() { ++round; }

void reset()
{
    stop();
    allocationCount = 0;
}

int allocations() { return allocationCount; }

} // namespace watch
