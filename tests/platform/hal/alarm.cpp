#include "tests/platform/hal/alarm.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ALARM_HOOKS_A_SANITIZER 1
#endif
#endif

namespace {

std::atomic<int> ringCount{0};
std::atomic<int> round{1};     // threads that were armed in an earlier one are not armed any more
__thread int armedInRound = 0; // plain data: reading it must not allocate

void note()
{
    if (armedInRound && armedInRound == round.load(std::memory_order_relaxed))
        ringCount.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

#if defined(ALARM_HOOKS_A_SANITIZER)

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));
namespace {
void noteAllocation(const volatile void*, std::size_t) { note(); }
void noteFree(const volatile void*) { note(); }
const int installed = __sanitizer_install_malloc_and_free_hooks(noteAllocation, noteFree);
} // namespace

#else

#define IN_FRONT extern "C" __attribute__((visibility("default")))

extern "C" void* __libc_malloc(std::size_t);
extern "C" void* __libc_calloc(std::size_t, std::size_t);
extern "C" void* __libc_realloc(void*, std::size_t);
extern "C" void* __libc_memalign(std::size_t, std::size_t);
extern "C" void __libc_free(void*);

IN_FRONT void* malloc(std::size_t size) { return note(), __libc_malloc(size); }
IN_FRONT void* calloc(std::size_t count, std::size_t size) { return note(), __libc_calloc(count, size); }
IN_FRONT void* realloc(void* old, std::size_t size) { return note(), __libc_realloc(old, size); }
IN_FRONT void* memalign(std::size_t alignment, std::size_t size)
{
    return note(), __libc_memalign(alignment, size);
}
IN_FRONT void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
IN_FRONT int posix_memalign(void** result, std::size_t alignment, std::size_t size)
{
    *result = memalign(alignment, size);
    return *result ? 0 : ENOMEM;
}
IN_FRONT void free(void* block)
{
    if (block) note(); // freeing is the allocator's business, too
    __libc_free(block);
}

#endif

namespace watch {

void armThisThread() { armedInRound = round; }

void disarm() { ++round; }

void reset()
{
    disarm();
    ringCount = 0;
}

int rings() { return ringCount; }

} // namespace watch
