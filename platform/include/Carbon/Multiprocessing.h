/* A function that waits for a time of the host clock. C. */
#ifndef CARBON_MULTIPROCESSING_H
#define CARBON_MULTIPROCESSING_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/*
 * Block the calling thread until a time of the host clock. The call returns at once if the time is past.
 * Owner    expirationTime stays the caller's.
 * Errors   paramErr (-50): expirationTime is NULL.
 * Do not call it in an I/O cycle.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus MPDelayUntil(AbsoluteTime* expirationTime);

KVX_PLATFORM_END

#endif
