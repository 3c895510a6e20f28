/*
 * Starting and stopping output units. C.
 *
 * Errors   as in AUComponent.h; badComponentSelector: not an output unit.
 * All functions: [any].
 */
#ifndef AUDIOUNIT_AUDIOOUTPUTUNIT_H
#define AUDIOUNIT_AUDIOOUTPUTUNIT_H

#include <AudioUnit/AUComponent.h>

KVX_PLATFORM_BEGIN

/*
 * Start the device of an initialised unit. No effect on a running unit. The generic output unit only
 * reports that it runs.
 * Errors   kAudioUnitErr_Uninitialized: not initialised. FormatNotSupported: the client format cannot be
 *          converted to the device's. CannotDoInCurrentContext: inside a slice of the unit in which it
 *          was stopped. Any status of the device.
 */
KVX_PLATFORM_EXPORT OSStatus AudioOutputUnitStart(AudioUnit unit);

/*
 * Stop the unit. When it returns, no callback of the unit runs; inside a callback, the present slice is
 * the last. Do not call it while holding a lock that a callback takes. No effect on a stopped unit.
 * Errors   as at the top.
 */
KVX_PLATFORM_EXPORT OSStatus AudioOutputUnitStop(AudioUnit unit);

KVX_PLATFORM_END

#endif
