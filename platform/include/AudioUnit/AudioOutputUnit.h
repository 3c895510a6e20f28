/*
 * What output units do beside. C.
 *
 * Thread   [any].
 * Errors   as in AUComponent.h; a unit that is no output unit is badComponentSelector.
 */
#ifndef AUDIOUNIT_AUDIOOUTPUTUNIT_H
#define AUDIOUNIT_AUDIOOUTPUTUNIT_H

#include <AudioUnit/AUComponent.h>

KVX_PLATFORM_BEGIN

/* Start an initialised unit's device; the device's refusal is passed on. Starting a running unit changes
 * nothing. */
KVX_PLATFORM_EXPORT OSStatus AudioOutputUnitStart(AudioUnit unit);

/*
 * Stop it: when this returns, no callback of the unit runs any more. Inside a callback it ends the unit with
 * that slice instead. Never call it holding a lock that a callback waits for.
 */
KVX_PLATFORM_EXPORT OSStatus AudioOutputUnitStop(AudioUnit unit);

KVX_PLATFORM_END

#endif
