// The public names of the host clock. It counts nanoseconds, so conversion is identity over all 64 bits.
#include "platform/support/host_clock.h"

#include <CoreAudio/HostTime.h>

using namespace kvxplatform;

UInt64 AudioGetCurrentHostTime(void) { return hostclock::now(); }

Float64 AudioGetHostClockFrequency(void) { return static_cast<Float64>(hostclock::nanosecondsPerSecond); }

UInt32 AudioGetHostClockMinimumTimeDelta(void) { return 1; }

UInt64 AudioConvertHostTimeToNanos(UInt64 hostTime) { return hostTime; }

UInt64 AudioConvertNanosToHostTime(UInt64 nanoseconds) { return nanoseconds; }
