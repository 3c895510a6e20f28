/*
 * URLs of local files. C.
 *
 * A URL is an absolute path that need not exist. Paths are UTF-8; bytes that are not UTF-8 are kept
 * unchanged. An allocator argument and isDirectory are ignored.
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
 * Returns  NULL also for a file reference that no function of this process has filled.
 */
KVX_PLATFORM_EXPORT CFURLRef CFURLCreateFromFSRef(CFAllocatorRef alloc, const struct FSRef* ref);

/*
 * Make a file reference to an existing item.
 * Returns  false, with nothing written, if the item does not exist.
 */
KVX_PLATFORM_EXPORT Boolean CFURLGetFSRef(CFURLRef url, struct FSRef* ref);

/*
 * Make a URL by appending a component to the path of another URL. The component is plain text, without
 * escapes.
 * Returns  NULL also if the component is empty, contains a slash or a zero character, or is not valid UTF-16.
 */
KVX_PLATFORM_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef alloc, CFURLRef url,
                                                                   CFStringRef pathComponent,
                                                                   Boolean isDirectory);

/*
 * Make a URL from the bytes of a path, without a terminator. A relative path starts at the current folder.
 * Returns  NULL also if bufferLength is below 1, or the bytes contain a zero byte.
 */
KVX_PLATFORM_EXPORT CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef alloc,
                                                                     const UInt8* buffer,
                                                                     CFIndex bufferLength,
                                                                     Boolean isDirectory);

/*
 * Write the absolute path of a URL, and a zero byte, to a buffer. resolveAgainstBase is ignored.
 * Units    maxLength is in bytes and includes the zero byte.
 * Returns  false, with nothing written, if the path does not fit.
 */
KVX_PLATFORM_EXPORT Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase,
                                                             UInt8* buffer, CFIndex maxLength);

KVX_PLATFORM_END

#endif
