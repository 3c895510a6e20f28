// The thread pool of the global queues. A new thread starts when the waiting items outnumber the idle threads
// and the pool is not full. The threads never end.
#include "platform/dispatch/queue.h"
#include "platform/support/border.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace kvxplatform::dispatch {
namespace {

// The maximum number of threads exceeds the usual number of processors, because queued functions may block.
// The number is limited because each thread needs a stack.
constexpr int maxThreads = 16;

struct Pool {
    std::mutex lock;
    std::condition_variable hasWork;
    // `lock` guards the following members.
    std::array<Pending, 3> pending; ///< waiting items, indexed by priority rank
    int threads = 0;
    int idle = 0; ///< number of threads that wait for an item
};

// The pool is never destroyed, because the pool's threads still use it while the process exits.
Pool& pool()
{
    static Pool& shared = *new Pool;
    return shared;
}

Pending* firstPending(Pool& from)
{
    const auto found = std::find_if(from.pending.begin(), from.pending.end(),
                                    [](const Pending& queue) { return !queue.empty(); });
    return found == from.pending.end() ? nullptr : &*found;
}

void serve(Pool& from)
{
    std::unique_lock<std::mutex> hold(from.lock);
    for (;;) {
        Pending* queue = firstPending(from);
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

std::size_t countPending(const Pool& in)
{
    std::size_t count = 0;
    for (const Pending& queue : in.pending) count += queue.size();
    return count;
}

/// Start a thread. A failure is ignored, because the next call tries again.
void tryToStartThread(Pool& in)
{
    withinBorder(false, [&in] {
        std::thread([&in] { serve(in); }).detach();
        ++in.threads;
        return true;
    });
}

} // namespace

void appendToPool(const Work& work, int rank)
{
    Pool& to = pool();
    Pending& queue = to.pending[static_cast<std::size_t>(rank)];
    {
        const std::lock_guard<std::mutex> hold(to.lock);
        queue.push_back(work);
        if (to.threads < maxThreads && countPending(to) > static_cast<std::size_t>(to.idle))
            tryToStartThread(to);
        if (to.threads > 0) {
            to.hasWork.notify_one();
            return;
        }
        queue.pop_back(); // the pool has no thread that would run the item
    }
    run(work);
}

} // namespace kvxplatform::dispatch
