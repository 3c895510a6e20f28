/*
 * Time in ticks. C.
 *
 * Units    a tick is 1/60 s; the count starts with the machine.
 * All functions: [any].
 */
#ifndef CARBON_OSUTILS_H
#define CARBON_OSUTILS_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/*
 * Wait for at least numTicks ticks. If all running devices are stepped, the call runs their I/O cycles for
 * that time on the calling thread instead of waiting. Do not call Delay in an I/O cycle.
 * Shape    *finalTicks is the tick count afterwards; finalTicks may be NULL.
 */
KVX_PLATFORM_EXPORT void Delay(unsigned long numTicks, unsigned long* finalTicks);

/* Get the tick count. */
KVX_PLATFORM_EXPORT UInt32 TickCount(void);

KVX_PLATFORM_END

#endif
