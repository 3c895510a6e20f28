// Platform functions that older systems or their headers lack. Include this instead of the header that
// declares them: a weak reference is null where the function is missing.
#pragma once

#include <dispatch/dispatch.h>

#pragma weak dispatch_async

#ifdef KVX_MAC_EARLY_SDK
// The system has the global queues; the headers of its first SDKs lack the declaration.
extern "C" dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags);
#endif

// Never called: where it is there, so is the newer time-pitch unit, since both came with one release. The
// oldest headers do not know it, so it is declared here.
extern "C" const struct CGPath* CGPathCreateCopyByTransformingPath(const struct CGPath*,
                                                                   const struct CGAffineTransform*);
#pragma weak CGPathCreateCopyByTransformingPath
