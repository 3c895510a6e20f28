#include "tests/plugin/background_spy.h"

#include "tests/support/sanitizers.h"

#include <Carbon/Carbon.h>
#include <dispatch/dispatch.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>

namespace background_spy {

namespace {

Script script;
spy::CallLog here, there; // calls of the thread under test, and of other threads
std::size_t yields, upTimes, waits;
std::atomic<bool> mayEnd{false}, hasEnded{false};
constexpr UInt32 now = 7;

/// Thread whose calls are recorded: `here` is the thread under test, `there` is a worker thread. Calls are
/// ignored while the system or a sanitizer starts a thread.
enum class Side { ignored, here, there };
thread_local Side side = Side::ignored;

class As {
public:
    explicit As(Side other) : before_(side) { side = other; }
    ~As() { side = before_; }
    As(const As&) = delete;
    As& operator=(const As&) = delete;

private:
    Side before_;
};

/// Record a call. Returns whether the call must fail.
bool refused(const char* text, Refusal kind = Refusal::none)
{
    if (side == Side::ignored) return false;
    const bool isRefused = kind != Refusal::none && kind == script.refusal;
    note(std::string(text) + (isRefused ? " refused" : ""));
    return isRefused;
}

void wait(const std::atomic<bool>& flag)
{
    while (!flag) sched_yield();
}

void started()
{
    if (script.endsAtOnce) wait(hasEnded);
}

struct Worker {
    void* (*function)(void*);
    void* argument;
};

void* run(void* memory)
{
    const Worker worker = *static_cast<Worker*>(memory);
    delete static_cast<Worker*>(memory);
    void* result;
    {
        const As worked(Side::there);
        result = worker.function(worker.argument);
    }
    hasEnded = true;
    return result;
}

} // namespace

void begin(const Script& newScript)
{
    script = newScript;
    here.forget();
    there.forget();
    yields = upTimes = waits = 0;
    mayEnd = hasEnded = false;
    side = Side::here;
}

Seen end()
{
    side = Side::ignored;
    return {here.calls(), there.calls()};
}

void note(const std::string& text) { (side == Side::here ? here : there).add(text); }

void waitUntilItMayEnd() { wait(mayEnd); }

static void yield()
{
    note("yield");
    if (++yields == script.throwingYield) throw 1;
}

void* hostWithYield(const char* service)
{
    return std::strcmp(service, "REALYieldToRB") == 0 ? reinterpret_cast<void*>(&yield) : nullptr;
}

void* hostWithoutServices(const char*) { return nullptr; }

} // namespace background_spy

using namespace background_spy;

// ---- functions of the C library, replaced by the linker ----

extern "C" {

void* __real_calloc(std::size_t, std::size_t);
void __real_free(void*);
int __real_pthread_mutex_init(pthread_mutex_t*, const pthread_mutexattr_t*);
int __real_pthread_mutex_destroy(pthread_mutex_t*);
int __real_pthread_mutex_lock(pthread_mutex_t*);
int __real_pthread_mutex_unlock(pthread_mutex_t*);
int __real_pthread_attr_init(pthread_attr_t*);
int __real_pthread_attr_setstacksize(pthread_attr_t*, std::size_t);
int __real_pthread_attr_destroy(pthread_attr_t*);
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __real_pthread_join(pthread_t, void**);
int __real_pthread_detach(pthread_t);

void* __wrap_calloc(std::size_t count, std::size_t size)
{
    const char* const what = count * size == sizeof(pthread_mutex_t) ? "calloc of a mutex" : "calloc";
    return refused(what, Refusal::calloc) ? nullptr : __real_calloc(count, size);
}

void __wrap_free(void* memory)
{
    refused("free");
    __real_free(memory);
}

int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes)
{
    if (refused(attributes ? "mutex init with attributes" : "mutex init", Refusal::mutexInit)) return ENOMEM;
    return __real_pthread_mutex_init(mutex, attributes);
}

int __wrap_pthread_mutex_destroy(pthread_mutex_t* mutex)
{
    refused("mutex destroy");
    return __real_pthread_mutex_destroy(mutex);
}

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex)
{
    refused("lock");
    return __real_pthread_mutex_lock(mutex);
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex)
{
    refused("unlock");
    return __real_pthread_mutex_unlock(mutex);
}

int __wrap_pthread_attr_init(pthread_attr_t* attributes)
{
    return refused("attr init", Refusal::attrInit) ? ENOMEM : __real_pthread_attr_init(attributes);
}

int __wrap_pthread_attr_setstacksize(pthread_attr_t* attributes, std::size_t bytes)
{
    refused(("stack " + std::to_string(bytes)).c_str());
    return __real_pthread_attr_setstacksize(attributes, bytes);
}

int __wrap_pthread_attr_destroy(pthread_attr_t* attributes)
{
    refused("attr destroy");
    return __real_pthread_attr_destroy(attributes);
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                          void* argument)
{
    if (side == Side::ignored) return __real_pthread_create(thread, attributes, function, argument);
    if (refused(attributes ? "create" : "create without attributes", Refusal::create)) return EAGAIN;
    const As ignored(Side::ignored);
    const int status = __real_pthread_create(thread, attributes, run, new Worker{function, argument});
    started();
    return status;
}

int __wrap_pthread_join(pthread_t thread, void** result)
{
    refused("join");
    const As ignored(Side::ignored);
    return __real_pthread_join(thread, result);
}

int __wrap_pthread_detach(pthread_t thread)
{
    refused("detach");
    // The thread sanitizer ends the program if a joined thread is detached.
    return support::hasThreadSanitizer ? 0 : __real_pthread_detach(thread);
}

} // extern "C"

// ---- functions of the platform ----

#pragma GCC visibility push(default)
extern "C" {

AbsoluteTime UpTime()
{
    refused(("UpTime = " + std::to_string(now)).c_str());
    if (++upTimes == script.throwingUpTime) throw 1;
    return {now, 0};
}

AbsoluteTime AddDurationToAbsolute(Duration duration, AbsoluteTime time)
{
    refused((std::to_string(duration) + " after " + std::to_string(time.lo)).c_str());
    return {time.lo + static_cast<UInt32>(duration) * 1000000, time.hi};
}

OSStatus MPDelayUntil(AbsoluteTime* time)
{
    refused(("until " + std::to_string(time->lo)).c_str());
    if (++waits == script.waits) {
        mayEnd = true;
        wait(hasEnded);
    }
    if (waits == script.throwingWait) throw 1;
    return noErr;
}

dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags)
{
    refused(("queue " + std::to_string(priority) + " " + std::to_string(flags)).c_str());
    const auto real =
        reinterpret_cast<decltype(&dispatch_get_global_queue)>(dlsym(RTLD_NEXT, "dispatch_get_global_queue"));
    return real(priority, flags);
}

void dispatch_async(dispatch_queue_t queue, dispatch_block_t block)
{
    if (refused("async", Refusal::async)) throw 1;
    using Function = void (*)(dispatch_queue_t, dispatch_block_t);
    const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "dispatch_async"));
    const As ignored(Side::ignored);
    real(queue, ^{
      {
          const As worked(Side::there);
          block();
      }
      hasEnded = true;
    });
    started();
}

} // extern "C"
#pragma GCC visibility pop
