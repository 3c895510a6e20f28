#include "tests/endtoend/file_player_heap.h"

#include <atomic>
#include <cerrno>
#include <malloc.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HEAP_HOOKS_A_SANITIZER 1
#endif
#endif

#define IN_FRONT extern "C" __attribute__((visibility("default")))

namespace {

std::atomic<std::size_t> current{0}, highest{0};

void add(std::size_t bytes)
{
    const std::size_t sum = current.fetch_add(bytes) + bytes;
    for (std::size_t top = highest; sum > top && !highest.compare_exchange_weak(top, sum);) {
    }
}
void take(std::size_t bytes) { current.fetch_sub(bytes); }

} // namespace

namespace heap {
std::size_t now() { return current; }
std::size_t most() { return highest; }
void forgetMost() { highest = current.load(); }
} // namespace heap

#if defined(HEAP_HOOKS_A_SANITIZER)

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void*);

namespace {
const int installed =
    __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t size) { add(size); },
                                              [](const volatile void* memory) {
                                                  if (memory) take(__sanitizer_get_allocated_size(memory));
                                              });
} // namespace

#else

extern "C" void* __libc_malloc(std::size_t);
extern "C" void* __libc_calloc(std::size_t, std::size_t);
extern "C" void* __libc_realloc(void*, std::size_t);
extern "C" void* __libc_memalign(std::size_t, std::size_t);
extern "C" void __libc_free(void*);

namespace {

std::size_t sizeOf(void* memory) { return memory ? malloc_usable_size(memory) : 0; }

void* counted(void* memory)
{
    add(sizeOf(memory));
    return memory;
}

} // namespace

IN_FRONT void* malloc(std::size_t size) { return counted(__libc_malloc(size)); }
IN_FRONT void* calloc(std::size_t count, std::size_t size) { return counted(__libc_calloc(count, size)); }
IN_FRONT void* realloc(void* old, std::size_t size)
{
    const std::size_t before = sizeOf(old);
    void* const memory = __libc_realloc(old, size);
    if (memory || size == 0) take(before), add(sizeOf(memory));
    return memory;
}
IN_FRONT void* memalign(std::size_t to, std::size_t size) { return counted(__libc_memalign(to, size)); }
IN_FRONT void* aligned_alloc(std::size_t to, std::size_t size) { return memalign(to, size); }
IN_FRONT int posix_memalign(void** result, std::size_t to, std::size_t size)
{
    *result = memalign(to, size);
    return *result ? 0 : ENOMEM;
}
IN_FRONT void free(void* memory)
{
    take(sizeOf(memory));
    __libc_free(memory);
}

#endif
