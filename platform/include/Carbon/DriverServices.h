/*
 * Time in units of the host clock, which are nanoseconds here. C.
 *
 * Results that would reach beyond 64 bits stay at the last moment there is, which never comes. Thread: [any].
 */
#ifndef CARBON_DRIVERSERVICES_H
#define CARBON_DRIVERSERVICES_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* A Duration: milliseconds above 0, microseconds below. */
enum {
    durationMicrosecond = -1,
    durationMillisecond = 1,
    durationSecond = 1000,
    durationMinute = 60000,
    durationHour = 3600000,
    durationDay = 86400000,
    durationNoWait = 0,
    durationForever = 0x7FFFFFFF
};

/* Now: the same clock as AudioGetCurrentHostTime. */
KVX_PLATFORM_EXPORT AbsoluteTime UpTime(void);

/* durationForever is the last moment there is. */
KVX_PLATFORM_EXPORT AbsoluteTime AddDurationToAbsolute(Duration duration, AbsoluteTime absoluteTime);

KVX_PLATFORM_END

#endif
