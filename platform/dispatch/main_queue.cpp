// The main thread's work. It waits until the main thread's owner asks for it.
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
    Waiting waiting; // under lock
};

// Lives for ever: threads may still queue work while the process ends.
MainQueue& mainQueue()
{
    static MainQueue& queue = *new MainQueue;
    return queue;
}

/// How many pieces of work wait, after waiting up to `timeoutSeconds` for the first.
std::size_t waitForWork(MainQueue& queue, double timeoutSeconds)
{
    constexpr double longest = 1e6; // longer than anybody waits, and any clock can add it
    std::unique_lock<std::mutex> hold(queue.lock);
    if (timeoutSeconds > 0) // not for what is not a number
        queue.hasWork.wait_for(hold, std::chrono::duration<double>(std::min(timeoutSeconds, longest)),
                               [&] { return !queue.waiting.empty(); });
    return queue.waiting.size();
}

bool takeFirst(MainQueue& queue, Work& work)
{
    const std::lock_guard<std::mutex> hold(queue.lock);
    if (queue.waiting.empty()) return false;
    work = queue.waiting.front();
    queue.waiting.pop_front();
    return true;
}

} // namespace

void appendToMainQueue(const Work& work)
{
    MainQueue& queue = mainQueue();
    const std::lock_guard<std::mutex> hold(queue.lock);
    queue.waiting.push_back(work);
    queue.hasWork.notify_one();
}

} // namespace kvxplatform::dispatch

uint32_t KVXPlatformDrainMainQueue(double timeoutSeconds)
{
    using namespace kvxplatform::dispatch;
    if (!pthread_main_np()) return 0;
    MainQueue& queue = mainQueue();

    // What is queued meanwhile waits for the next time, so that work which queues itself again does not stay
    // here.
    const std::size_t count = waitForWork(queue, timeoutSeconds);
    uint32_t ran = 0;
    for (Work work = {}; ran < count && takeFirst(queue, work); ++ran) run(work);
    return ran;
}
