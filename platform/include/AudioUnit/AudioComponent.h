/*
 * Components by their newer names: the same components and instances as the Component Manager's. C.
 *
 * Thread   [any].
 */
#ifndef AUDIOUNIT_AUDIOCOMPONENT_H
#define AUDIOUNIT_AUDIOCOMPONENT_H

#include <CoreAudio/CoreAudioTypes.h>

#pragma GCC visibility push(default)
#ifdef __cplusplus
extern "C" {
#endif

typedef struct OpaqueAudioComponent* AudioComponent;
typedef struct ComponentInstanceRecord* AudioComponentInstance; /* the Component Manager's instance */

/* What a component is; in a search, zero fields match anything. Flags and mask are 0. */
typedef struct AudioComponentDescription {
    OSType componentType;
    OSType componentSubType;
    OSType componentManufacturer;
    UInt32 componentFlags;
    UInt32 componentFlagsMask;
} AudioComponentDescription;

/* The first component behind `previous` (NULL: from the start) that `looking` describes; NULL when there is
 * none. */
extern AudioComponent AudioComponentFindNext(AudioComponent previous,
                                             const AudioComponentDescription* looking);

/* How many components `looking` describes. */
extern UInt32 AudioComponentCount(const AudioComponentDescription* looking);

/* Open an instance; the caller disposes it. NULL, with the reason in the status, on failure. */
extern OSStatus AudioComponentInstanceNew(AudioComponent component, AudioComponentInstance* out_instance);
extern OSStatus AudioComponentInstanceDispose(AudioComponentInstance instance);

#ifdef __cplusplus
}
static_assert(sizeof(AudioComponentDescription) == 20, "the platform's record");
#endif
#pragma GCC visibility pop

#endif
