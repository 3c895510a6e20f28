// Work items, each a function with a context, and the queues that hold the items.
#pragma once

#include <dispatch/dispatch.h>

#include <deque>

/// A queue; the platform's header determines the name of this type. The object holds no items, because the
/// linker may copy the main queue's object into a program, and the copy must stand for the same queue.
struct dispatch_queue_s {
    int rank; ///< priority rank of a global queue; rank 0 is served first
};

namespace kvxplatform::dispatch {

struct Work {
    dispatch_function_t function;
    void* context;
};

using Pending = std::deque<Work>; ///< waiting items in first-in, first-out order

/// Add an item to the main queue, which the main thread drains. Throws std::bad_alloc.
/// [any but audio]
void appendToMainQueue(const Work& work);

/// Add an item to the global queue of a priority rank. If the pool can start no thread and has none, the item
/// runs before the function returns. Throws std::bad_alloc.
/// [any but audio]
void appendToPool(const Work& work, int rank);

/// Run a work item. An exception that leaves the item's function ends the process.
/// [any but audio]
void run(const Work& work) noexcept;

} // namespace kvxplatform::dispatch
