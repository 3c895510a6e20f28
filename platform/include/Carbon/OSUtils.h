/* Time in ticks, the sixtieths of a second since start-up. C. Thread: [any]. */
#ifndef CARBON_OSUTILS_H
#define CARBON_OSUTILS_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* Wait numTicks or a little more. finalTicks, which may be NULL, gets the tick count afterwards. Where
 * devices are turned by hand only, it turns them by that time on the calling thread and does not wait; so
 * never call it in a device's cycle. */
KVX_PLATFORM_EXPORT void Delay(unsigned long numTicks, unsigned long* finalTicks);

KVX_PLATFORM_EXPORT UInt32 TickCount(void);

KVX_PLATFORM_END

#endif
