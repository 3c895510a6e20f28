/*
 * The Component Manager: finding, opening and closing components. C; 2-byte packed, as all of Carbon is.
 *
 * Owner    an open instance is its opener's, who closes it.
 *
 * Thread   [any]. A call that is under way on an instance when it is closed ends in its own time.
 *
 * Errors   a NULL, closed or made-up instance is badComponentInstance.
 */
#ifndef CARBON_COMPONENTS_H
#define CARBON_COMPONENTS_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN
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
KVX_PLATFORM_EXPORT Component FindNextComponent(Component previous, ComponentDescription* looking);

/* How many components `looking` describes. */
KVX_PLATFORM_EXPORT long CountComponents(ComponentDescription* looking);

/* Open an instance of a component. NULL, with the reason in the status, on failure. */
KVX_PLATFORM_EXPORT OSErr OpenAComponent(Component component, ComponentInstance* out_instance);
KVX_PLATFORM_EXPORT ComponentInstance OpenComponent(Component component);

/* The same of the first component with this type and subtype; a subtype of 0 is any. */
KVX_PLATFORM_EXPORT OSErr OpenADefaultComponent(OSType type, OSType subType, ComponentInstance* out_instance);
KVX_PLATFORM_EXPORT ComponentInstance OpenDefaultComponent(OSType type, OSType subType);

/* Close an instance: when this returns, none of its callbacks runs any more. */
KVX_PLATFORM_EXPORT OSErr CloseComponent(ComponentInstance instance);

KVX_PLATFORM_SIZE(ComponentDescription, 20);

KVX_PLATFORM_END

#endif
