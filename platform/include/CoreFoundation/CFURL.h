/*
 * URLs of local files. C.
 *
 * A URL is an absolute path that need not exist. Paths are UTF-8; other bytes are kept unchanged. An
 * allocator argument and isDirectory are ignored.
 *
 * Owner    the caller of a Create function owns the result and releases it.
 * Errors   a Create function returns NULL and a Get function false if an argument is NULL or there is no
 *          memory.
 * All functions: [any].
 */
#ifndef COREFOUNDATION_CFURL_H
#define COREFOUNDATION_CFURL_H

#include <CoreFoundation/CFString.h>

KVX_PLATFORM_BEGIN

typedef const struct __CFURL* CFURLRef;

struct FSRef;

/*
 * Make the URL of a file reference.
 * Returns  NULL also for a reference that no function of this process filled.
 */
KVX_PLATFORM_EXPORT CFURLRef CFURLCreateFromFSRef(CFAllocatorRef alloc, const struct FSRef* ref);

/*
 * Make a file reference to an existing item.
 * Returns  false, with nothing written, if the item does not exist.
 */
KVX_PLATFORM_EXPORT Boolean CFURLGetFSRef(CFURLRef url, struct FSRef* ref);

/*
 * Append a component to the path of a URL. The component is plain text, without escapes.
 * Returns  NULL also if the component is empty, contains a slash or a zero character, or is not valid
 *          UTF-16.
 */
KVX_PLATFORM_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef alloc, CFURLRef url,
                                                                   CFStringRef pathComponent,
                                                                   Boolean isDirectory);

/*
 * Make a URL from the bytes of a path, without a terminator. A relative path starts at the current
 * folder.
 * Returns  NULL also if bufferLength is below 1, or the bytes contain a zero.
 */
KVX_PLATFORM_EXPORT CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef alloc,
                                                                     const UInt8* buffer,
                                                                     CFIndex bufferLength,
                                                                     Boolean isDirectory);

/*
 * Write the absolute path and a zero byte. resolveAgainstBase is ignored.
 * Units    maxLength in bytes, with the zero byte.
 * Returns  false, with nothing written, if the path does not fit.
 */
KVX_PLATFORM_EXPORT Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase,
                                                             UInt8* buffer, CFIndex maxLength);

KVX_PLATFORM_END

#endif
