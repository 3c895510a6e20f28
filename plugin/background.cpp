#include "plugin/background.h"

#include "plugin/exception_border.h"
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

/// State of one call of RunThreadedBlocks. The worker sets `done`, and reads `mutex`, `data` and `work`,
/// which are set before the worker starts. The waiting thread reads `done`.
struct RunThreadState {
    pthread_t thread;       ///< worker thread; unused if the work runs on the system's dispatch queue
    pthread_mutex_t* mutex; ///< mutex that guards `done`; null if creating the mutex failed
    std::uint8_t running;   ///< flag that is 1 after a worker was requested; never read
    std::uint8_t done;      ///< flag that is 1 after `work` has returned
    std::uint8_t isQueued;  ///< flag that is 1 if the work runs on the system's dispatch queue; never read
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

// In addition to the mutex, `done` itself is atomic because the mutex is missing if its creation failed.
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

// yieldToHost, waitOneStep and idle swallow exceptions because the worker still uses the stack frame of the
// waiting thread, which an exception would unwind.

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

/// Run the work on the calling thread because the system cannot start a worker.
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
    pthread_detach(state.thread); // join alone does not free the thread on some systems
    state.thread = pthread_t();
    state.running = 0;
}

/// Start `block` on the system's dispatch queue. Returns false if a dispatch function throws.
bool startOnQueue(dispatch_block_t block)
{
    return catchAll([block] {
        dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), block);
        return true;
    });
}

void runOnQueue(const RunThreadState& request)
{
    // A __block variable moves to the heap when dispatch_async copies the block.
    __block RunThreadState state = request;
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
