#include "tests/support/audio_thread_alarm.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <dlfcn.h>
#include <pthread.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HOOKS_A_SANITIZER 1
#endif
#endif

#define IN_FRONT extern "C" __attribute__((visibility("default")))

namespace {

__thread bool isForbidden = false; // plain data: reading it allocates nothing
std::atomic<int> allocationCount{0}, lockCount{0};

void noteMemory()
{
    if (isForbidden) ++allocationCount;
}

} // namespace

namespace alarm_ {
void forbid(bool isOn) { isForbidden = isOn; }
int allocations() { return allocationCount; }
int locks() { return lockCount; }
} // namespace alarm_

#if defined(HOOKS_A_SANITIZER)

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));
namespace {
const int installed = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t) { noteMemory(); }, [](const volatile void*) { noteMemory(); });
} // namespace

bool alarm_::watchesLocks() { return false; }

#else

bool alarm_::watchesLocks() { return true; }

extern "C" void* __libc_malloc(std::size_t);
extern "C" void* __libc_calloc(std::size_t, std::size_t);
extern "C" void* __libc_realloc(void*, std::size_t);
extern "C" void* __libc_memalign(std::size_t, std::size_t);
extern "C" void __libc_free(void*);

IN_FRONT void* malloc(std::size_t size) { return noteMemory(), __libc_malloc(size); }
IN_FRONT void* calloc(std::size_t count, std::size_t size)
{
    return noteMemory(), __libc_calloc(count, size);
}
IN_FRONT void* realloc(void* old, std::size_t size) { return noteMemory(), __libc_realloc(old, size); }
IN_FRONT void* memalign(std::size_t to, std::size_t size) { return noteMemory(), __libc_memalign(to, size); }
IN_FRONT void* aligned_alloc(std::size_t to, std::size_t size) { return memalign(to, size); }
IN_FRONT int posix_memalign(void** result, std::size_t to, std::size_t size)
{
    *result = memalign(to, size);
    return *result ? 0 : ENOMEM;
}
IN_FRONT void free(void* memory)
{
    if (memory) noteMemory();
    __libc_free(memory);
}

IN_FRONT int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    using Lock = int (*)(pthread_mutex_t*);
    static Lock real = nullptr; // found while no thread is forbidden
    if (!real) real = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    if (isForbidden) ++lockCount;
    return real(mutex);
}

#endif
