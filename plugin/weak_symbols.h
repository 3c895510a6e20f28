// Platform functions that older systems lack: null there. Include this instead of the header that declares
// them, so that no file makes a strong reference.
#pragma once

#include <dispatch/dispatch.h>

#pragma weak dispatch_async

#ifdef KVX_MAC_EARLY_SDK
// The first SDKs of 10.6 declare the global queues nowhere, though the system has them.
extern "C" dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags);
#endif

// Never called: where it is there, so is the newer time-pitch unit, since both came with one release. The
// oldest headers do not know it, so it is declared here.
extern "C" const struct CGPath* CGPathCreateCopyByTransformingPath(const struct CGPath*,
                                                                   const struct CGAffineTransform*);
#pragma weak CGPathCreateCopyByTransformingPath
