/*
 * Handles: blocks of memory behind a pointer of their own. C.
 *
 * Owner    a handle is its maker's, who disposes it, once. Blocks move in SetHandleSize only.
 * Thread   [any], one call at a time on a handle.
 * Errors   MemError tells, of the calling thread: noErr, memFullErr for a size that cannot be had or is
 *          negative, nilHandleErr for NULL, memWZErr for a handle that is none.
 */
#ifndef CARBON_MACMEMORY_H
#define CARBON_MACMEMORY_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* A block of that many bytes, which may be 0; NULL on failure. Clear: zeroed. */
KVX_PLATFORM_EXPORT Handle NewHandle(Size byteCount);
KVX_PLATFORM_EXPORT Handle NewHandleClear(Size byteCount);

/* NULL is let pass. */
KVX_PLATFORM_EXPORT void DisposeHandle(Handle h);

/* The size in bytes that was asked for last; 0 for what is no handle. */
KVX_PLATFORM_EXPORT Size GetHandleSize(Handle h);
KVX_PLATFORM_EXPORT void SetHandleSize(Handle h, Size newSize); /* what fits of the contents stays */

/* Nothing to do: blocks stay where they are. */
KVX_PLATFORM_EXPORT void HLock(Handle h);
KVX_PLATFORM_EXPORT void HUnlock(Handle h);

/* What came of the calling thread's last call above; asking clears it. */
KVX_PLATFORM_EXPORT OSErr MemError(void);

KVX_PLATFORM_END

#endif
