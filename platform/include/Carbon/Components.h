/*
 * The Component Manager: functions that find, open, close and call components, and register components of the
 * program. C; structs are 2-byte packed, as in all Carbon headers.
 *
 * Owner    the opener closes an instance; the program that registers a component unregisters it. At most
 *          4,096 instances and 4,096 registered components are live.
 * Errors   of every function. badComponentInstance: a NULL, closed or unknown instance; paramErr (-50): a
 *          required pointer is NULL. A function with an OSErr result returns the lower 16 bits of the status.
 * A call in progress on an instance that is closed finishes normally.
 * All functions: [any].
 */
#ifndef CARBON_COMPONENTS_H
#define CARBON_COMPONENTS_H

#include <Carbon/MixedMode.h>
#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN
#pragma pack(push, 2)

/* A component. The struct is never filled, because the pointer is a handle. */
typedef struct ComponentRecord {
    long data[1];
} ComponentRecord;
typedef ComponentRecord* Component;

/* An open instance of a component. The struct is never filled, because the pointer is a handle. */
typedef struct ComponentInstanceRecord {
    long data[1];
} ComponentInstanceRecord;
typedef ComponentInstanceRecord* ComponentInstance;

typedef SInt32 ComponentResult;

/* The identity of a component. In a search a zero field matches any value. */
typedef struct ComponentDescription {
    OSType componentType;
    OSType componentSubType;
    OSType componentManufacturer;
    UInt32 componentFlags;
    UInt32 componentFlagsMask; /* in a search: the flags to compare; else 0 */
} ComponentDescription;

/*
 * One call of a component, as the component's entry point receives it.
 * Shape    params has the arguments after the instance, in the order of their declaration, one machine word
 *          each; paramSize is their size in bytes. The entry point receives the instance's storage instead of
 *          the instance.
 * Owner    the struct is valid during the call only.
 */
typedef struct ComponentParameters {
    UInt8 flags;     /* 0 */
    UInt8 paramSize; /* size of params in bytes */
    SInt16 what;     /* selector of the call */
    long params[1];
} ComponentParameters;

#pragma pack(pop)

/*
 * A component's entry point. componentStorage is the instance's storage, NULL at first.
 * Returns  the result of the call. A non-zero result of kComponentOpenSelect refuses the opening; the result
 *          of kComponentCloseSelect is ignored.
 * Called on the caller's thread.
 * [any]
 */
typedef ComponentResult (*ComponentRoutineProcPtr)(ComponentParameters* cp, Handle componentStorage);
typedef ComponentRoutineProcPtr ComponentRoutineUPP; /* the function pointer itself */
typedef UniversalProcPtr ComponentFunctionUPP;

/*
 * Selectors that every component knows, with their arguments. The platform itself sends only the first two.
 */
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
    unresolvedComponentDLLErr = -3004 /* the component has no entry point */
};

/* Statuses of 32 bits; cut to an OSErr they are -32767 and -32766. */
#define badComponentInstance ((ComponentResult)0x80008001)
#define badComponentSelector ((ComponentResult)0x80008002)

/*
 * Find the first component after `previous` that matches a description; from the start if `previous` is NULL.
 * Built-in components come first, then the components that the program has registered, in the order of
 * registration.
 * Returns  NULL if no component follows, or if `previous` is not a component.
 */
KVX_PLATFORM_EXPORT Component FindNextComponent(Component previous, ComponentDescription* looking);

/*
 * Open an instance of a component.
 * Owner    the caller closes *out_instance.
 * Errors   after an error *out_instance is NULL. invalidComponentID: not a component.
 *          unresolvedComponentDLLErr: the component has no entry point. memFullErr (-108): no memory, or too
 *          many instances. The result with which the component refuses the opening; paramErr if the lower 16
 *          bits of that result are 0.
 */
KVX_PLATFORM_EXPORT OSErr OpenAComponent(Component component, ComponentInstance* out_instance);

/* Open an instance as OpenAComponent does, but return NULL for every error. */
KVX_PLATFORM_EXPORT ComponentInstance OpenComponent(Component component);

/*
 * Open an instance of the first component with a type and subtype; 0 matches any type or subtype.
 * Owner    the caller closes *out_instance.
 * Errors   those of OpenAComponent.
 */
KVX_PLATFORM_EXPORT OSErr OpenADefaultComponent(OSType type, OSType subType, ComponentInstance* out_instance);

/* Open an instance as OpenADefaultComponent does, but return NULL for every error. */
KVX_PLATFORM_EXPORT ComponentInstance OpenDefaultComponent(OSType type, OSType subType);

/*
 * Close an instance. When the call returns, no callback of the instance runs, except a callback that made the
 * call.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSErr CloseComponent(ComponentInstance instance);

/* ---- components that the program registers ---- */

/* Get the ComponentRoutineUPP of a routine, which is the function pointer itself. */
static inline ComponentRoutineUPP NewComponentRoutineUPP(ComponentRoutineProcPtr userRoutine)
{
    return userRoutine;
}

/*
 * Register a component in this process. The name, the info and the icon may be NULL and are not used;
 * `global` is ignored.
 * Shape    a component without an entry point can be found, but not opened.
 * Owner    the description is copied; the handles stay the caller's. The caller unregisters the component.
 * Returns  NULL if cd is NULL, there is no memory, or 4,096 components are registered.
 */
KVX_PLATFORM_EXPORT Component RegisterComponent(ComponentDescription* cd,
                                                ComponentRoutineUPP componentEntryPoint, SInt16 global,
                                                Handle componentName, Handle componentInfo,
                                                Handle componentIcon);

/*
 * Unregister a component.
 * Errors   validInstancesExist: an instance is open; the component stays. invalidComponentID: not a
 *          registered component.
 */
KVX_PLATFORM_EXPORT OSErr UnregisterComponent(Component aComponent);

/* Count the open instances of a component. Returns 0 for an unknown component. */
KVX_PLATFORM_EXPORT long CountComponentInstances(Component aComponent);

/*
 * Set the refcon of a registered component, which all its instances share. An instance may be passed for its
 * component. No effect on other components.
 */
KVX_PLATFORM_EXPORT void SetComponentRefcon(Component aComponent, long theRefcon);

/* Get the refcon of a registered component; 0 for other components. */
KVX_PLATFORM_EXPORT long GetComponentRefcon(Component aComponent);

/*
 * Set the storage of an instance, which the component's entry point receives. No effect on instances of
 * built-in components.
 * Owner    the storage belongs to the component.
 */
KVX_PLATFORM_EXPORT void SetComponentInstanceStorage(ComponentInstance aComponentInstance, Handle theStorage);

/* Get the storage of an instance; NULL for instances of built-in components. */
KVX_PLATFORM_EXPORT Handle GetComponentInstanceStorage(ComponentInstance aComponentInstance);

/*
 * Call a function with the instance's storage and the arguments of a component call.
 * Shape    funcProcInfo describes the function (MixedMode.h); its first parameter is the storage. A missing
 *          argument is passed as 0; surplus arguments are ignored.
 * Returns  the function's result.
 * Errors   paramErr: also for a NULL function, or for more than 13 parameters.
 */
KVX_PLATFORM_EXPORT ComponentResult CallComponentFunctionWithStorageProcInfo(Handle storage,
                                                                             ComponentParameters* params,
                                                                             ProcPtr func,
                                                                             ProcInfoType funcProcInfo);

/*
 * Pass a component call on to another instance, unchanged.
 * Returns  the result of that instance.
 * Errors   badComponentSelector: the component does not know the selector.
 */
KVX_PLATFORM_EXPORT ComponentResult DelegateComponentCall(ComponentParameters* originalParams,
                                                          ComponentInstance ci);

KVX_PLATFORM_SIZE(ComponentDescription, 20);
KVX_PLATFORM_SIZE(ComponentParameters, 8);
KVX_PLATFORM_OFFSET(ComponentParameters, what, 2);
KVX_PLATFORM_OFFSET(ComponentParameters, params, 4);

KVX_PLATFORM_END

#endif
