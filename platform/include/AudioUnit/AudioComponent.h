/* The newer names of the Component Manager's types. C. */
#ifndef AUDIOUNIT_AUDIOCOMPONENT_H
#define AUDIOUNIT_AUDIOCOMPONENT_H

#include <CoreAudio/CoreAudioTypes.h>
#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

typedef struct OpaqueAudioComponent* AudioComponent;
typedef struct ComponentInstanceRecord* AudioComponentInstance; /* the Component Manager's instance */

/* The identity of a component. In a search, and in AUGraphAddNode, a zero field matches any value. */
typedef struct AudioComponentDescription {
    OSType componentType;
    OSType componentSubType;
    OSType componentManufacturer;
    UInt32 componentFlags;
    UInt32 componentFlagsMask;
} AudioComponentDescription;

KVX_PLATFORM_SIZE(AudioComponentDescription, 20);

KVX_PLATFORM_END

#endif
