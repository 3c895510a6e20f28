/*
 * Components by their newer names: the same components and instances as the Component Manager's. C.
 *
 * Thread   [any].
 */
#ifndef AUDIOUNIT_AUDIOCOMPONENT_H
#define AUDIOUNIT_AUDIOCOMPONENT_H

#include <CoreAudio/CoreAudioTypes.h>
#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

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
KVX_PLATFORM_EXPORT AudioComponent AudioComponentFindNext(AudioComponent previous,
                                                          const AudioComponentDescription* looking);

/* How many components `looking` describes. */
KVX_PLATFORM_EXPORT UInt32 AudioComponentCount(const AudioComponentDescription* looking);

/* Open an instance; the caller disposes it. NULL, with the reason in the status, on failure. */
KVX_PLATFORM_EXPORT OSStatus AudioComponentInstanceNew(AudioComponent component,
                                                       AudioComponentInstance* out_instance);
KVX_PLATFORM_EXPORT OSStatus AudioComponentInstanceDispose(AudioComponentInstance instance);

KVX_PLATFORM_SIZE(AudioComponentDescription, 20);

KVX_PLATFORM_END

#endif
