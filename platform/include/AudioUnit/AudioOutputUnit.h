/*
 * Starting and stopping output units. C.
 *
 * Errors   those listed in the head comment of AUComponent.h. badComponentSelector: the component is not an
 *          output unit.
 * All functions: [any].
 */
#ifndef AUDIOUNIT_AUDIOOUTPUTUNIT_H
#define AUDIOUNIT_AUDIOOUTPUTUNIT_H

#include <AudioUnit/AUComponent.h>

KVX_PLATFORM_BEGIN

/*
 * Start the device of an initialised unit. No effect on a running unit. The generic output unit has no device
 * and only reports that it runs.
 * Errors   kAudioUnitErr_Uninitialized: not initialised. FormatNotSupported: the client format cannot be
 *          converted to the device's. CannotDoInCurrentContext: the call was made inside a slice in which the
 *          unit was stopped. Any error of the device.
 */
KVX_PLATFORM_EXPORT OSStatus AudioOutputUnitStart(AudioUnit unit);

/*
 * Stop the unit. When the call returns, no callback of the unit runs. After a call inside a callback, the
 * present slice is the last one. Do not stop the unit while holding a lock that one of its callbacks takes.
 * No effect on a stopped unit.
 * Errors   only those listed in the head comment of AUComponent.h.
 */
KVX_PLATFORM_EXPORT OSStatus AudioOutputUnitStop(AudioUnit unit);

KVX_PLATFORM_END

#endif
