// Work items and the queues that hold them.
#pragma once

#include <dispatch/dispatch.h>

#include <deque>

/// The platform's type of a queue. It holds no work, only an identity: a position-dependent program has a
/// copy of the main queue's object, and the copy must name the same queue.
struct dispatch_queue_s {
    int rank; ///< of a global queue: 0 is served first
};

namespace kvxplatform::dispatch {

struct Work {
    dispatch_function_t function;
    void* context;
};

using Pending = std::deque<Work>; ///< first in, first out

/// Queue work for the main thread. Throws std::bad_alloc.
/// [any but audio]
void appendToMainQueue(const Work& work);

/// Queue work of a global queue. Without a thread the work runs before this returns. Throws std::bad_alloc.
/// [any but audio]
void appendToPool(const Work& work, int rank);

/// Run a work item. An exception that leaves it ends the process.
/// [any but audio]
void run(const Work& work) noexcept;

} // namespace kvxplatform::dispatch
