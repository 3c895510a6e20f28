// Weak declarations of platform functions that older systems or their headers lack. If the system lacks a
// function, the function's address is null. Include this file instead of the header that declares the
// functions.
#pragma once

#include <dispatch/dispatch.h>

#pragma weak dispatch_async

#ifdef KVX_MAC_EARLY_SDK
// The oldest systems have this function, but the headers of their SDKs do not declare it.
extern "C" dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags);
#endif

// Never called: the library only compares the address with null to detect the newer time-pitch unit, which
// came with the same release as this function. The oldest headers do not declare the function.
extern "C" const struct CGPath* CGPathCreateCopyByTransformingPath(const struct CGPath*,
                                                                   const struct CGAffineTransform*);
#pragma weak CGPathCreateCopyByTransformingPath
