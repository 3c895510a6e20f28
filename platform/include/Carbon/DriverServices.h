/*
 * Times of the host clock, and durations. C.
 *
 * Units    an AbsoluteTime is in ticks of the host clock, one nanosecond each. A Duration is in
 *          milliseconds if positive, in microseconds if negative.
 * All functions: [any].
 */
#ifndef CARBON_DRIVERSERVICES_H
#define CARBON_DRIVERSERVICES_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* durations */
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

/* Get the present time of the host clock, as AudioGetCurrentHostTime does. */
KVX_PLATFORM_EXPORT AbsoluteTime UpTime(void);

/*
 * Add a duration to a time. If the duration is durationForever, or the sum exceeds 64 bits, the result is the
 * last possible time, which is never reached.
 */
KVX_PLATFORM_EXPORT AbsoluteTime AddDurationToAbsolute(Duration duration, AbsoluteTime absoluteTime);

KVX_PLATFORM_END

#endif
