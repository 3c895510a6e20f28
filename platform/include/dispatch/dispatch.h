/*
 * Queues of work for other threads, and for the main thread. C and C++.
 *
 * Thread   [any]. A NULL queue, block or function ends the process.
 */
#ifndef DISPATCH_DISPATCH_H
#define DISPATCH_DISPATCH_H

#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

typedef struct dispatch_queue_s* dispatch_queue_t;
typedef void (*dispatch_function_t)(void* context);

#define DISPATCH_QUEUE_PRIORITY_HIGH 2
#define DISPATCH_QUEUE_PRIORITY_DEFAULT 0
#define DISPATCH_QUEUE_PRIORITY_LOW (-2)

/* Work of the main thread, in the order it came; it runs when the main thread's owner drains the queue. */
KVX_PLATFORM_EXPORT extern struct dispatch_queue_s _dispatch_main_q;
#define dispatch_get_main_queue() (&_dispatch_main_q)

/* Work of any thread, begun in no promised order, higher priorities first. NULL for another priority or for
 * flags other than 0. Never released. */
KVX_PLATFORM_EXPORT dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags);

/* Queue a function and return at once. */
KVX_PLATFORM_EXPORT void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);

#ifdef __BLOCKS__
#define DISPATCH_BLOCK ^/* apart, or clang-format takes this header for another language's */
typedef void(DISPATCH_BLOCK dispatch_block_t)(void);

/* Queue a copy of the block, released when it has run, and return at once. */
KVX_PLATFORM_EXPORT void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
#endif

KVX_PLATFORM_END

#endif
