/*
 * Queues of functions and dispatch blocks, for a pool of worker threads and for the main thread. C and C++.
 *
 * Owner    queues are never released.
 * Errors   a NULL queue, block or function ends the process, with one line on stderr. An exception that
 *          leaves a function or block ends the process.
 * All functions: [any].
 */
#ifndef DISPATCH_DISPATCH_H
#define DISPATCH_DISPATCH_H

#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

/* A queue. */
typedef struct dispatch_queue_s* dispatch_queue_t;
typedef void (*dispatch_function_t)(void* context);

#define DISPATCH_QUEUE_PRIORITY_HIGH 2
#define DISPATCH_QUEUE_PRIORITY_DEFAULT 0
#define DISPATCH_QUEUE_PRIORITY_LOW (-2)

/*
 * The main thread's queue, first in, first out. Its functions and blocks run when the host calls
 * KVXPlatformDrainMainQueue.
 */
KVX_PLATFORM_EXPORT extern struct dispatch_queue_s _dispatch_main_q;
#define dispatch_get_main_queue() (&_dispatch_main_q)

/*
 * Get the worker threads' queue of a priority. Functions and blocks of a higher priority start first; within
 * a priority, first in, first out. At most 16 worker threads run at the same time.
 * Returns  NULL for a priority other than the three above, or for flags other than 0.
 */
KVX_PLATFORM_EXPORT dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags);

/*
 * Queue a call of a function and return at once. If there is no memory, the call waits until there is some.
 * If no worker thread can be started, the function runs on the calling thread.
 * Owner    context stays the caller's.
 */
KVX_PLATFORM_EXPORT void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);

#ifdef __BLOCKS__
#define DISPATCH_BLOCK ^/* a macro, or clang-format takes this header for another language */
typedef void(DISPATCH_BLOCK dispatch_block_t)(void);

/*
 * Queue a dispatch block and return at once, as dispatch_async_f does.
 * Owner    the block is copied; the copy is released after it has run.
 */
KVX_PLATFORM_EXPORT void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
#endif

KVX_PLATFORM_END

#endif
