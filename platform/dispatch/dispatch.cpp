// The C functions of dispatch queues. They find the queue and convert dispatch blocks to plain functions.
#include "platform/dispatch/queue.h"
#include "platform/support/border.h"
#include "platform/support/misuse.h"

#include <Block.h>

#include <chrono>
#include <iterator>
#include <thread>

using namespace kvxplatform;

dispatch_queue_s _dispatch_main_q = {0};

namespace {

constexpr long priorities[] = {DISPATCH_QUEUE_PRIORITY_HIGH, DISPATCH_QUEUE_PRIORITY_DEFAULT,
                               DISPATCH_QUEUE_PRIORITY_LOW};
dispatch_queue_s globalQueues[] = {{0}, {1}, {2}};

/// Repeat `attempt` until memory is available, because the platform's functions cannot report a failure.
template <class Attempt>
void retry(Attempt attempt)
{
    while (!attempt()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

void callAndRelease(void* context)
{
    const auto block = reinterpret_cast<dispatch_block_t>(context);
    block();
    Block_release(block);
}

} // namespace

namespace kvxplatform::dispatch {

void run(const Work& work) noexcept { work.function(work.context); }

} // namespace kvxplatform::dispatch

dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags)
{
    for (std::size_t i = 0; i < std::size(priorities); ++i)
        if (priorities[i] == priority && flags == 0) return &globalQueues[i];
    return nullptr;
}

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t function)
{
    if (!queue) endForMisuse("dispatch_async was given no queue");
    if (!function) endForMisuse("dispatch_async_f was given no function");
    retry([&] {
        return withinBorder(false, [&] {
            if (queue == dispatch_get_main_queue())
                dispatch::appendToMainQueue({function, context});
            else
                dispatch::appendToPool({function, context}, queue->rank);
            return true;
        });
    });
}

void dispatch_async(dispatch_queue_t queue, dispatch_block_t block)
{
    if (!block) endForMisuse("dispatch_async was given no block");
    dispatch_block_t copy = nullptr;
    retry([&] { return (copy = Block_copy(block)) != nullptr; });
    dispatch_async_f(queue, static_cast<void*>(copy), callAndRelease);
}
