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
constexpr Duration waitMilliseconds = 1;

/// One call of RunThreadedBlocks. The worker and the waiting thread share `done`; all other fields are
/// written before the worker starts.
struct RunThreadState {
    pthread_t thread;       ///< on systems without a queue
    pthread_mutex_t* mutex; ///< guards `done`; null without memory
    std::uint8_t running;   ///< a worker exists; not read
    std::uint8_t done;      ///< the work has finished
    std::uint8_t isQueued;  ///< the work is on the system's queue; not read
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

// The three steps of the waiting thread swallow exceptions: the worker still uses this thread's stack frame.

void yieldToHost()
{
    catchAll([] { REALYieldToRB(); });
}

void waitOneStep()
{
    catchAll([] {
        AbsoluteTime until = AddDurationToAbsolute(waitMilliseconds, UpTime());
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

/// For a system that cannot start a worker.
void workOnThisThread(RunThreadState& state)
{
    deleteMutex(state);
    if (state.work) state.work(state.data);
}

void runOnThread(const RunThreadState& request)
{
    RunThreadState state = request;
    state.mutex = newMutex();
    if (!startThread(state)) {
        workOnThisThread(state);
        return;
    }
    state.running = 1;
    waitForWorker(state);
    pthread_join(state.thread, nullptr);
    pthread_detach(state.thread); // on some systems the join alone does not free the thread
    state.thread = pthread_t();
    state.running = 0;
}

/// Start `block` on the system's queue. Returns false if the queue throws.
bool startOnQueue(dispatch_block_t block)
{
    return catchAll([block] {
        dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), block);
        return true;
    });
}

void runOnQueue(const RunThreadState& request)
{
    __block RunThreadState state = request; // moves to the heap when the queue copies the block
    state.mutex = newMutex();
    state.running = 1;
    state.isQueued = 1;
    const bool isStarted = startOnQueue(^{
      doWork(state);
    });
    if (isStarted)
        waitForWorker(state);
    else
        workOnThisThread(state);
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
