/*
 * The host clock, whose readings are in AudioTimeStamp.mHostTime. C.
 *
 * Units    a tick is one nanosecond; the clock starts with the machine and never runs backwards.
 * No function allocates or locks.
 * All functions: [any].
 */
#ifndef COREAUDIO_HOSTTIME_H
#define COREAUDIO_HOSTTIME_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* Get the present time of the host clock, in ticks. */
KVX_PLATFORM_EXPORT UInt64 AudioGetCurrentHostTime(void);

/* Get the number of ticks per second. */
KVX_PLATFORM_EXPORT Float64 AudioGetHostClockFrequency(void);

/* Get the smallest difference between two readings of the clock, in ticks. */
KVX_PLATFORM_EXPORT UInt32 AudioGetHostClockMinimumTimeDelta(void);

/* Convert ticks to nanoseconds, exactly for all 64-bit values. */
KVX_PLATFORM_EXPORT UInt64 AudioConvertHostTimeToNanos(UInt64 hostTime);

/* Convert nanoseconds to ticks, exactly for all 64-bit values. */
KVX_PLATFORM_EXPORT UInt64 AudioConvertNanosToHostTime(UInt64 nanoseconds);

KVX_PLATFORM_END

#endif
