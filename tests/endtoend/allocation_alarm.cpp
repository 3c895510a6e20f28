#include "tests/endtoend/allocation_alarm.h"

#include <CoreAudio/CoreAudio.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <dlfcn.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ALARM_HOOKS_A_SANITIZER 1
#endif
#endif

#define IN_FRONT extern "C" __attribute__((visibility("default")))

namespace {

std::atomic<bool> isArmed{false};
std::atomic<int> ringCount{0};
std::atomic<int> callCount{0};
__thread bool isAudioThread = false; // plain data: reading it must not allocate

bool rings()
{
    if (!isAudioThread || !isArmed.load(std::memory_order_relaxed)) return false;
    ringCount.fetch_add(1, std::memory_order_relaxed);
    return true;
}

// ---- the guard around I/O procedures ----

struct Watched {
    std::atomic<AudioDeviceIOProc> procedure{nullptr};
};
Watched watched; // one procedure at a time is enough: all players share theirs

OSStatus guard(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* input,
               const AudioTimeStamp* inputTime, AudioBufferList* output, const AudioTimeStamp* outputTime,
               void* client)
{
    callCount.fetch_add(1, std::memory_order_relaxed);
    const bool was = isAudioThread;
    isAudioThread = true;
    const OSStatus status =
        watched.procedure.load()(device, now, input, inputTime, output, outputTime, client);
    isAudioThread = was;
    return status;
}

template <class Function>
Function* platformFunction(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

IN_FRONT OSStatus AudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc procedure, void* client)
{
    watched.procedure = procedure;
    return platformFunction<decltype(AudioDeviceAddIOProc)>("AudioDeviceAddIOProc")(device, guard, client);
}

IN_FRONT OSStatus AudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProc)
{
    return platformFunction<decltype(AudioDeviceRemoveIOProc)>("AudioDeviceRemoveIOProc")(device, guard);
}

IN_FRONT OSStatus AudioDeviceStart(AudioDeviceID device, AudioDeviceIOProc)
{
    return platformFunction<decltype(AudioDeviceStart)>("AudioDeviceStart")(device, guard);
}

IN_FRONT OSStatus AudioDeviceStop(AudioDeviceID device, AudioDeviceIOProc)
{
    return platformFunction<decltype(AudioDeviceStop)>("AudioDeviceStop")(device, guard);
}

#if defined(ALARM_HOOKS_A_SANITIZER)

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));
namespace {
void noteAllocation(const volatile void*, std::size_t) { (void)rings(); }
void noteFree(const volatile void*) {}
const int installed = __sanitizer_install_malloc_and_free_hooks(noteAllocation, noteFree);
} // namespace

#else

extern "C" void* __libc_malloc(std::size_t);
extern "C" void* __libc_calloc(std::size_t, std::size_t);
extern "C" void* __libc_realloc(void*, std::size_t);
extern "C" void* __libc_memalign(std::size_t, std::size_t);

IN_FRONT void* malloc(std::size_t size) { return rings() ? nullptr : __libc_malloc(size); }
IN_FRONT void* calloc(std::size_t count, std::size_t size)
{
    return rings() ? nullptr : __libc_calloc(count, size);
}
IN_FRONT void* realloc(void* old, std::size_t size) { return rings() ? nullptr : __libc_realloc(old, size); }
IN_FRONT void* memalign(std::size_t alignment, std::size_t size)
{
    return rings() ? nullptr : __libc_memalign(alignment, size);
}
IN_FRONT void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
IN_FRONT int posix_memalign(void** result, std::size_t alignment, std::size_t size)
{
    *result = memalign(alignment, size);
    return *result ? 0 : ENOMEM;
}

#endif

namespace allocation {

void arm()
{
    ringCount = 0;
    callCount = 0;
    isArmed = true;
}

void disarm() { isArmed = false; }

int rings() { return ringCount; }

int watchedCalls() { return callCount; }

} // namespace allocation
