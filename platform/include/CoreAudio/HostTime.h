/* The host clock: the base of AudioTimeStamp.mHostTime. It counts nanoseconds here. C. Thread: [any], [audio]
 * too.
 */
#ifndef COREAUDIO_HOSTTIME_H
#define COREAUDIO_HOSTTIME_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* Now, in ticks. Never goes back. */
KVX_PLATFORM_EXPORT UInt64 AudioGetCurrentHostTime(void);

/* Ticks per second. */
KVX_PLATFORM_EXPORT Float64 AudioGetHostClockFrequency(void);

/* The smallest step in ticks between two readings that differ. */
KVX_PLATFORM_EXPORT UInt32 AudioGetHostClockMinimumTimeDelta(void);

/* Exact over all 64 bits. */
KVX_PLATFORM_EXPORT UInt64 AudioConvertHostTimeToNanos(UInt64 hostTime);
KVX_PLATFORM_EXPORT UInt64 AudioConvertNanosToHostTime(UInt64 nanoseconds);

KVX_PLATFORM_END

#endif
