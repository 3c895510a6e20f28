// Work that waits, and the queues it waits in.
#pragma once

#include <dispatch/dispatch.h>

#include <deque>

/// The platform's name for a queue: only an identity, so that a program which keeps a copy of the main
/// queue's object (as position-dependent programs do) still means the same queue. The work stands in the main
/// queue or the pool.
struct dispatch_queue_s {
    int rank; ///< of global queues: 0 is served first
};

namespace kvxplatform::dispatch {

struct Work {
    dispatch_function_t function;
    void* context;
};

using Waiting = std::deque<Work>; ///< first in, first out

/// Queue work for the main thread. [any]
void appendToMainQueue(const Work& work);

/// Queue work of a global queue. Runs it before returning if no thread exists and none can be started. [any]
void appendToPool(const Work& work, int rank);

/// Call it. An exception that comes out of it has nowhere to go and ends the process.
void run(const Work& work) noexcept;

} // namespace kvxplatform::dispatch
