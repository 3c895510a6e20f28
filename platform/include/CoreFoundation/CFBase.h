/*
 * The basic types of CoreFoundation, and the reference counts of its objects. C.
 *
 * Owner    the caller of a Create or Copy function owns the result and releases it.
 * Errors   of every function below: a NULL argument ends the process, with one line on stderr.
 * All functions: [any].
 */
#ifndef COREFOUNDATION_CFBASE_H
#define COREFOUNDATION_CFBASE_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

typedef signed long CFIndex;
typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;

typedef const void* CFTypeRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFString* CFMutableStringRef;
typedef const struct __CFAllocator* CFAllocatorRef;

/* A range of items: the first index and the count. */
typedef struct CFRange {
    CFIndex location;
    CFIndex length;
} CFRange;

enum { kCFNotFound = -1 };

/* The only allocator. All functions ignore their allocator argument. */
#define kCFAllocatorDefault ((CFAllocatorRef)NULL)

/*
 * Add a reference to an object. Every CFRetain needs a CFRelease.
 * Returns  cf.
 */
KVX_PLATFORM_EXPORT CFTypeRef CFRetain(CFTypeRef cf); /* gives its argument back */

/* Remove a reference to an object. Removing the last reference frees the object. */
KVX_PLATFORM_EXPORT void CFRelease(CFTypeRef cf);

/* Get the number of references to an object. */
KVX_PLATFORM_EXPORT CFIndex CFGetRetainCount(CFTypeRef cf);

KVX_PLATFORM_SIZE(CFIndex, 4);
KVX_PLATFORM_SIZE(CFRange, 8);

KVX_PLATFORM_END

#endif
