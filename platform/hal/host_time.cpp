// The public functions of the host clock. The clock counts nanoseconds, so conversion to and from nanoseconds
// returns the 64-bit value unchanged.
#include "platform/support/host_clock.h"

#include <CoreAudio/HostTime.h>

using namespace kvxplatform;

UInt64 AudioGetCurrentHostTime(void) { return hostclock::now(); }

Float64 AudioGetHostClockFrequency(void) { return static_cast<Float64>(hostclock::nanosecondsPerSecond); }

UInt32 AudioGetHostClockMinimumTimeDelta(void) { return 1; }

UInt64 AudioConvertHostTimeToNanos(UInt64 hostTime) { return hostTime; }

UInt64 AudioConvertNanosToHostTime(UInt64 nanoseconds) { return nanoseconds; }
