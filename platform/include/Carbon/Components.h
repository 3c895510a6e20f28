/*
 * The Component Manager: finding, opening and closing components. C; 2-byte packed, as all of Carbon is.
 *
 * Owner    an open instance is its opener's, who closes it.
 * Thread   [any]. A component is closed by one thread while no other begins a call on it; a call already
 * under way ends first. Errors   a NULL, closed or made-up instance is badComponentInstance.
 */
#ifndef CARBON_COMPONENTS_H
#define CARBON_COMPONENTS_H

#include <CoreAudio/CoreAudioTypes.h>

#pragma GCC visibility push(default)
#ifdef __cplusplus
extern "C" {
#endif
#pragma pack(push, 2)

typedef struct ComponentRecord {
    long data[1];
} ComponentRecord;
typedef ComponentRecord* Component;

typedef struct ComponentInstanceRecord {
    long data[1];
} ComponentInstanceRecord;
typedef ComponentInstanceRecord* ComponentInstance;

typedef SInt32 ComponentResult;

/* What a component is; in a search, zero fields match anything. */
typedef struct ComponentDescription {
    OSType componentType;
    OSType componentSubType;
    OSType componentManufacturer;
    UInt32 componentFlags;
    UInt32 componentFlagsMask; /* in a search: the flags to compare; 0 when registering */
} ComponentDescription;

#pragma pack(pop)

enum {
    kAnyComponentType = 0,
    kAnyComponentSubType = 0,
    kAnyComponentManufacturer = 0,
    kAnyComponentFlagsMask = 0,
    kAppleManufacturer = 'appl'
};

enum {
    invalidComponentID = -3000,
    validInstancesExist = -3001,
    componentNotCaptured = -3002,
    componentDontRegister = -3003
};

/* As 32-bit results; cut to the 16 bits of an OSErr they are -32767 and -32766. */
#define badComponentInstance ((ComponentResult)0x80008001)
#define badComponentSelector ((ComponentResult)0x80008002)

/* The first component behind `previous` (NULL: from the start) that `looking` describes; NULL when there is
 * none. */
extern Component FindNextComponent(Component previous, ComponentDescription* looking);

/* How many components `looking` describes. */
extern long CountComponents(ComponentDescription* looking);

/* Open an instance of a component. NULL, with the reason in the status, on failure. */
extern OSErr OpenAComponent(Component component, ComponentInstance* out_instance);
extern ComponentInstance OpenComponent(Component component);

/* The same of the first component with this type and subtype; a subtype of 0 is any. */
extern OSErr OpenADefaultComponent(OSType type, OSType subType, ComponentInstance* out_instance);
extern ComponentInstance OpenDefaultComponent(OSType type, OSType subType);

/* Close an instance: when this returns, none of its callbacks runs any more. */
extern OSErr CloseComponent(ComponentInstance instance);

#ifdef __cplusplus
}
static_assert(sizeof(ComponentDescription) == 20, "the platform's record");
#endif
#pragma GCC visibility pop

#endif
