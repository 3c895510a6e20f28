/* Waiting for a moment. C. Thread: [any]. */
#ifndef CARBON_MULTIPROCESSING_H
#define CARBON_MULTIPROCESSING_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* Block the calling thread until then; a moment in the past returns at once. paramErr for NULL. */
KVX_PLATFORM_EXPORT OSStatus MPDelayUntil(AbsoluteTime* expirationTime);

KVX_PLATFORM_END

#endif
