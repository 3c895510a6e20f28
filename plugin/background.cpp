#include "plugin/background.h"

#include "plugin/catch_all.h"
#include "plugin/mutex_lock.h"
#include "plugin/services.h"
#include "plugin/shared_word.h"
#include "plugin/weak_symbols.h"

#include <Carbon/Carbon.h>

#include <cstdint>
#include <cstdlib>

#include <pthread.h>

namespace {

constexpr std::size_t workerStackBytes = 0x200000;
constexpr Duration waitStep = 1; // milliseconds

/// One call. Worker and waiting thread share `done`; the rest is set before the worker exists.
struct RunThreadState {
    pthread_t thread;       ///< without a queue only
    pthread_mutex_t* mutex; ///< guards `done`; null if there was no memory for it
    std::uint8_t running;   ///< a worker exists. Stated by the interface; not read
    std::uint8_t done;      ///< set by the worker as its last act
    std::uint8_t isQueued;  ///< the worker is a thread of the system's queue. Stated likewise; not read
    const void* data;
    void (*work)(const void*);
    void (*idle)(const void*);
};

pthread_mutex_t* newMutex()
{
    auto* const mutex = static_cast<pthread_mutex_t*>(std::calloc(1, sizeof(pthread_mutex_t)));
    if (mutex && pthread_mutex_init(mutex, nullptr) != 0) {
        std::free(mutex);
        return nullptr;
    }
    return mutex;
}

void deleteMutex(RunThreadState& state)
{
    if (!state.mutex) return;
    pthread_mutex_destroy(state.mutex);
    std::free(state.mutex);
    state.mutex = nullptr;
}

// `done` is atomic as well: without memory there is no mutex.
bool isDone(const RunThreadState& state)
{
    const MutexLock lock(state.mutex);
    return loadAcquired(state.done);
}

void doWork(RunThreadState& state)
{
    if (state.work) state.work(state.data);
    const MutexLock lock(state.mutex);
    storeReleased(state.done, std::uint8_t{1});
}

// The waiting thread swallows exceptions: the worker still uses its stack frame.

void yieldToHost()
{
    catchAll([] { REALYieldToRB(); });
}

void waitOneStep()
{
    catchAll([] {
        AbsoluteTime until = AddDurationToAbsolute(waitStep, UpTime());
        MPDelayUntil(&until);
    });
}

void idle(const RunThreadState& state)
{
    catchAll([&state] {
        if (state.idle) state.idle(state.data);
    });
}

void waitForWorker(RunThreadState& state)
{
    yieldToHost();
    while (!isDone(state)) {
        yieldToHost();
        waitOneStep();
        idle(state);
    }
    yieldToHost();
    idle(state);
    deleteMutex(state);
}

void* threadfunction(void* state)
{
    doWork(*static_cast<RunThreadState*>(state));
    return nullptr;
}

bool startThread(RunThreadState& state)
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    pthread_attr_setstacksize(&attributes, workerStackBytes);
    const int refusal = pthread_create(&state.thread, &attributes, threadfunction, &state);
    pthread_attr_destroy(&attributes);
    return refusal == 0;
}

/// There is no other thread.
void workRightHere(RunThreadState& state)
{
    deleteMutex(state);
    if (state.work) state.work(state.data);
}

void runOnThread(const RunThreadState& request)
{
    RunThreadState state = request;
    state.mutex = newMutex();
    if (!startThread(state)) {
        workRightHere(state);
        return;
    }
    state.running = 1;
    waitForWorker(state);
    pthread_join(state.thread, nullptr);
    pthread_detach(state.thread); // refused where the join is remembered, needed where it is not
    state.thread = pthread_t();
    state.running = 0;
}

/// Queue `block` on the system's global queue. Returns false if the queue throws.
bool queued(dispatch_block_t block)
{
    return catchAll([block] {
        dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), block);
        return true;
    });
}

void runOnQueue(const RunThreadState& request)
{
    __block RunThreadState state = request; // moves to the heap together with the block
    state.mutex = newMutex();
    state.running = 1;
    state.isQueued = 1;
    const bool isQueued = queued(^{
      doWork(state);
    });
    if (isQueued)
        waitForWorker(state);
    else
        workRightHere(state);
}

} // namespace

void RunThreadedBlocks(const void* data, void (*work)(const void*), void (*idle)(const void*))
{
    const RunThreadState request = {pthread_t(), nullptr, 0, 0, 0, data, work, idle};
    if (dispatch_async)
        runOnQueue(request);
    else
        runOnThread(request);
}
