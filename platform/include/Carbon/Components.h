/*
 * The Component Manager: finding, opening, closing and calling components, and a program's own. C; 2-byte
 * packed, as all of Carbon is.
 *
 * Owner    an open instance is its opener's, who closes it; a registered component is its registrar's.
 *
 * Thread   [any]. A call that is under way on an instance when it is closed ends in its own time.
 *
 * Errors   a NULL, closed or made-up instance is badComponentInstance.
 */
#ifndef CARBON_COMPONENTS_H
#define CARBON_COMPONENTS_H

#include <Carbon/MixedMode.h>
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

/*
 * One call of a component, as its entry point gets it.
 *
 * Shape    `params`: the arguments behind the instance, the first first, one word each; `paramSize` is their
 *          number of bytes. For the selectors of programs the instance is in nobody's words: the entry point
 *          gets its storage instead.
 */
typedef struct ComponentParameters {
    UInt8 flags;
    UInt8 paramSize;
    SInt16 what; /* the selector */
    long params[1];
} ComponentParameters;

#pragma pack(pop)

/* A component's entry point. `componentStorage` is what the instance was given. */
typedef ComponentResult (*ComponentRoutineProcPtr)(ComponentParameters* cp, Handle componentStorage);
typedef ComponentRoutineProcPtr ComponentRoutineUPP; /* the same thing on this machine */
typedef UniversalProcPtr ComponentFunctionUPP;

/* what every component is asked, and the arguments behind the storage */
enum {
    kComponentOpenSelect = -1,    /* ComponentInstance self */
    kComponentCloseSelect = -2,   /* ComponentInstance self */
    kComponentCanDoSelect = -3,   /* SInt16 selector */
    kComponentVersionSelect = -4, /* none */
    kComponentRegisterSelect = -5,
    kComponentTargetSelect = -6,
    kComponentUnregisterSelect = -7
};

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
    componentDontRegister = -3003,
    unresolvedComponentDLLErr = -3004 /* no entry point */
};

/* As 32-bit results; cut to the 16 bits of an OSErr they are -32767 and -32766. */
#define badComponentInstance ((ComponentResult)0x80008001)
#define badComponentSelector ((ComponentResult)0x80008002)

/* The first component behind `previous` (NULL: from the start) that `looking` describes; NULL when there is
 * none. */
KVX_PLATFORM_EXPORT Component FindNextComponent(Component previous, ComponentDescription* looking);

/* Open an instance of a component. NULL, with the reason in the status, on failure. */
KVX_PLATFORM_EXPORT OSErr OpenAComponent(Component component, ComponentInstance* out_instance);
KVX_PLATFORM_EXPORT ComponentInstance OpenComponent(Component component);

/* The same of the first component with this type and subtype; a subtype of 0 is any. */
KVX_PLATFORM_EXPORT OSErr OpenADefaultComponent(OSType type, OSType subType, ComponentInstance* out_instance);
KVX_PLATFORM_EXPORT ComponentInstance OpenDefaultComponent(OSType type, OSType subType);

/* Close an instance: when this returns, none of its callbacks runs any more. */
KVX_PLATFORM_EXPORT OSErr CloseComponent(ComponentInstance instance);

/* ---- a program's own components ---- */

/* The same function in another costume. */
static inline ComponentRoutineUPP NewComponentRoutineUPP(ComponentRoutineProcPtr userRoutine)
{
    return userRoutine;
}

/* Add a component to the list, for this program. The handles hold Pascal text and pictures, may be NULL, and
 * stay the caller's. NULL without a description or memory. A component without an entry point is found, and
 * cannot be opened. */
KVX_PLATFORM_EXPORT Component RegisterComponent(ComponentDescription* cd,
                                                ComponentRoutineUPP componentEntryPoint, SInt16 global,
                                                Handle componentName, Handle componentInfo,
                                                Handle componentIcon);

/* Take it out of the list. With instances open that is validInstancesExist, and it stays. */
KVX_PLATFORM_EXPORT OSErr UnregisterComponent(Component aComponent);

/* How many instances are open; 0 for what is no component. */
KVX_PLATFORM_EXPORT long CountComponentInstances(Component aComponent);

/* One word for all instances of a component. An instance stands for its component. */
KVX_PLATFORM_EXPORT void SetComponentRefcon(Component aComponent, long theRefcon);
KVX_PLATFORM_EXPORT long GetComponentRefcon(Component aComponent);

/* One word for each instance; the entry point is called with it. */
KVX_PLATFORM_EXPORT void SetComponentInstanceStorage(ComponentInstance aComponentInstance, Handle theStorage);
KVX_PLATFORM_EXPORT Handle GetComponentInstanceStorage(ComponentInstance aComponentInstance);

/* Take a call's words apart as `procInfo` says, and call `func` with the storage in front of them. */
KVX_PLATFORM_EXPORT ComponentResult CallComponentFunctionWithStorageProcInfo(Handle storage,
                                                                             ComponentParameters* params,
                                                                             ProcPtr func,
                                                                             ProcInfoType funcProcInfo);

/* Hand a call on to another instance, as it is. */
KVX_PLATFORM_EXPORT ComponentResult DelegateComponentCall(ComponentParameters* originalParams,
                                                          ComponentInstance ci);

KVX_PLATFORM_SIZE(ComponentDescription, 20);
KVX_PLATFORM_SIZE(ComponentParameters, 8);
KVX_PLATFORM_OFFSET(ComponentParameters, what, 2);
KVX_PLATFORM_OFFSET(ComponentParameters, params, 4);

KVX_PLATFORM_END

#endif
