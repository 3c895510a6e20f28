// The main queue. Queued items run when the program drains the queue on the main thread.
#include "platform/dispatch/queue.h"

#include <KVXPlatform/KVXPlatform.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include <pthread.h>

namespace kvxplatform::dispatch {
namespace {

struct MainQueue {
    std::mutex lock;
    std::condition_variable hasWork;
    Pending pending; ///< items that wait to run; guarded by `lock`
};

// The queue is never destroyed, because threads may still add items while the process exits.
MainQueue& mainQueue()
{
    static MainQueue& queue = *new MainQueue;
    return queue;
}

/// Wait up to `timeoutSeconds` for an item, unless the queue already has one.
/// Returns  the number of pending items.
std::size_t waitForWork(MainQueue& queue, double timeoutSeconds)
{
    constexpr double longest = 1e6; // longest timeout in seconds, within the range of every clock
    std::unique_lock<std::mutex> hold(queue.lock);
    if (timeoutSeconds > 0) // the comparison is false for NaN
        queue.hasWork.wait_for(hold, std::chrono::duration<double>(std::min(timeoutSeconds, longest)),
                               [&] { return !queue.pending.empty(); });
    return queue.pending.size();
}

bool takeFirst(MainQueue& queue, Work& work)
{
    const std::lock_guard<std::mutex> hold(queue.lock);
    if (queue.pending.empty()) return false;
    work = queue.pending.front();
    queue.pending.pop_front();
    return true;
}

} // namespace

void appendToMainQueue(const Work& work)
{
    MainQueue& queue = mainQueue();
    const std::lock_guard<std::mutex> hold(queue.lock);
    queue.pending.push_back(work);
    queue.hasWork.notify_one();
}

} // namespace kvxplatform::dispatch

uint32_t KVXPlatformDrainMainQueue(double timeoutSeconds)
{
    using namespace kvxplatform::dispatch;
    if (!pthread_main_np()) return 0;
    MainQueue& queue = mainQueue();

    // Items queued during this call wait for the next call, because an item may queue itself repeatedly.
    const std::size_t count = waitForWork(queue, timeoutSeconds);
    uint32_t ran = 0;
    for (Work work = {}; ran < count && takeFirst(queue, work); ++ran) run(work);
    return ran;
}
