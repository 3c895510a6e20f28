#include "tests/listener/dispatch_spy.h"

#include <Block.h>

#include <deque>
#include <mutex>

namespace dispatch_spy {

namespace {

std::mutex mutex;
std::deque<dispatch_block_t> blocks;

dispatch_block_t takeFirst()
{
    const std::lock_guard guard(mutex);
    if (blocks.empty()) return nullptr;
    const dispatch_block_t first = blocks.front();
    blocks.pop_front();
    return first;
}

struct Release {
    dispatch_block_t block;
    ~Release() { Block_release(block); }
};

} // namespace

std::size_t waiting()
{
    const std::lock_guard guard(mutex);
    return blocks.size();
}

std::size_t run()
{
    std::size_t count = 0;
    while (const dispatch_block_t block = takeFirst()) {
        const Release release{block};
        ++count;
        block();
    }
    return count;
}

void reset()
{
    while (const dispatch_block_t block = takeFirst()) Block_release(block);
}

} // namespace dispatch_spy

#pragma GCC visibility push(default)
extern "C" void dispatch_async(dispatch_queue_t queue, dispatch_block_t block)
{
    using namespace dispatch_spy;
    spy::record(__func__);
    if (queue != dispatch_get_main_queue()) spy::fault("a block on a queue other than the main queue");
    const std::lock_guard guard(mutex);
    blocks.push_back(Block_copy(block));
}
#pragma GCC visibility pop
