// Platform functions that older systems or their headers lack. Include this file instead of the header that
// declares them: a missing function's address is null.
#pragma once

#include <dispatch/dispatch.h>

#pragma weak dispatch_async

#ifdef KVX_MAC_EARLY_SDK
// The oldest systems have the global queues, but the headers of their SDKs do not declare the function.
extern "C" dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags);
#endif

// Never called: only its address is compared with null. The function and the newer time-pitch unit came with
// the same release. The oldest headers do not declare it.
extern "C" const struct CGPath* CGPathCreateCopyByTransformingPath(const struct CGPath*,
                                                                   const struct CGAffineTransform*);
#pragma weak CGPathCreateCopyByTransformingPath
