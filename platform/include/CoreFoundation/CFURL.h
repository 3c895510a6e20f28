/*
 * Where a file is. C.
 *
 * A URL here always names a file of this machine, by a path that need not exist. Paths are UTF-8; one that is
 * not is taken as it stands. NULL for an argument gives NULL or false.
 *
 * Owner    what a Create function gives is the caller's, who releases it.
 * Thread   [any].
 */
#ifndef COREFOUNDATION_CFURL_H
#define COREFOUNDATION_CFURL_H

#include <CoreFoundation/CFString.h>

KVX_PLATFORM_BEGIN

typedef const struct __CFURL* CFURLRef;

struct FSRef;

/* The file a reference means. NULL for a reference that none of our functions filled, or no memory. */
KVX_PLATFORM_EXPORT CFURLRef CFURLCreateFromFSRef(CFAllocatorRef alloc, const struct FSRef* ref);

/* A reference to an item that exists; false, and nothing written, otherwise. */
KVX_PLATFORM_EXPORT Boolean CFURLGetFSRef(CFURLRef url, struct FSRef* ref);

/* One more component behind a path. It is plain text, not escaped; a slash in it is refused, and so are an
 * empty component and one with a NUL: NULL. */
KVX_PLATFORM_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef alloc, CFURLRef url,
                                                                   CFStringRef pathComponent,
                                                                   Boolean isDirectory);

/* From a path's bytes, which need no NUL; one that is not absolute starts at the current folder. NULL for no
 * bytes or a NUL among them. Whether it is a folder is not looked at. */
KVX_PLATFORM_EXPORT CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef alloc,
                                                                     const UInt8* buffer,
                                                                     CFIndex bufferLength,
                                                                     Boolean isDirectory);

/* The absolute path and its NUL; false, and nothing written, if it does not fit in maxLength bytes. */
KVX_PLATFORM_EXPORT Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase,
                                                             UInt8* buffer, CFIndex maxLength);

KVX_PLATFORM_END

#endif
