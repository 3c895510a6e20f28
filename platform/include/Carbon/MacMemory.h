/*
 * Handles: movable memory blocks, reached through a pointer to a pointer. C.
 *
 * Units    sizes are in bytes, 0 or more.
 * Owner    the caller of NewHandle disposes the handle, once. Only SetHandleSize moves a memory block.
 * Errors   MemError returns the error of the calling thread's last call of these functions: noErr; memFullErr
 *          (-108): no memory, or a negative size; nilHandleErr (-109): NULL; memWZErr (-111): not a handle.
 * One call at a time per handle.
 * All functions: [any].
 */
#ifndef CARBON_MACMEMORY_H
#define CARBON_MACMEMORY_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/*
 * Allocate a zeroed memory block.
 * Returns  NULL on failure.
 */
KVX_PLATFORM_EXPORT Handle NewHandle(Size byteCount);

/* Allocate a zeroed memory block, as NewHandle does. */
KVX_PLATFORM_EXPORT Handle NewHandleClear(Size byteCount);

/* Free a handle and its memory block. NULL is allowed. */
KVX_PLATFORM_EXPORT void DisposeHandle(Handle h);

/* Get the size of a handle's memory block; 0 for an unknown handle. */
KVX_PLATFORM_EXPORT Size GetHandleSize(Handle h);

/*
 * Change the size of a handle's memory block. The contents are kept up to the smaller size; added bytes are
 * 0. On failure the memory block is unchanged.
 */
KVX_PLATFORM_EXPORT void SetHandleSize(Handle h, Size newSize);

/* Do nothing, because memory blocks never move by themselves. */
KVX_PLATFORM_EXPORT void HLock(Handle h);

/* Do nothing, because memory blocks never move by themselves. */
KVX_PLATFORM_EXPORT void HUnlock(Handle h);

/* Get the error of the calling thread's last call of these functions, and clear it. */
KVX_PLATFORM_EXPORT OSErr MemError(void);

KVX_PLATFORM_END

#endif
