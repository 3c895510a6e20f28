// The global queues' work, on threads that are started when no other is free and then stay. Without any
// thread the work runs on the caller's.
#include "platform/dispatch/queue.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

namespace kvxplatform::dispatch {
namespace {

// Above the number of processors, since work may sit and wait; a bound all the same, since each thread costs
// a stack.
constexpr int mostThreads = 16;

struct Pool {
    std::mutex lock;
    std::condition_variable hasWork;
    std::array<Waiting, 3> waiting; // under lock, as all below; by rank
    int threads = 0;
    int idle = 0; // threads that wait for work
};

// Lives for ever: its threads wait in it while the process ends.
Pool& pool()
{
    static Pool& it = *new Pool;
    return it;
}

Waiting* firstWaiting(Pool& from)
{
    const auto found = std::find_if(from.waiting.begin(), from.waiting.end(),
                                    [](const Waiting& queue) { return !queue.empty(); });
    return found == from.waiting.end() ? nullptr : &*found;
}

void serve(Pool& from)
{
    std::unique_lock<std::mutex> hold(from.lock);
    for (;;) {
        Waiting* queue = firstWaiting(from);
        if (!queue) {
            ++from.idle;
            from.hasWork.wait(hold);
            --from.idle;
            continue;
        }
        const Work work = queue->front();
        queue->pop_front();
        hold.unlock();
        run(work);
        hold.lock();
    }
}

std::size_t workWaiting(const Pool& in)
{
    std::size_t count = 0;
    for (const Waiting& queue : in.waiting) count += queue.size();
    return count;
}

/// A refused start is no error while other threads serve the queues; the next call tries again.
void tryToStartThread(Pool& in)
{
    try {
        std::thread([&in] { serve(in); }).detach();
        ++in.threads;
    } catch (const std::exception&) {
    }
}

} // namespace

void appendToPool(const Work& work, int rank)
{
    Pool& to = pool();
    Waiting& queue = to.waiting[static_cast<std::size_t>(rank)];
    {
        const std::lock_guard<std::mutex> hold(to.lock);
        queue.push_back(work);
        if (to.threads < mostThreads && workWaiting(to) > static_cast<std::size_t>(to.idle))
            tryToStartThread(to);
        if (to.threads > 0) {
            to.hasWork.notify_one();
            return;
        }
        queue.pop_back(); // no thread will ever serve it
    }
    run(work);
}

} // namespace kvxplatform::dispatch
