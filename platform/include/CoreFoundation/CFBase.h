/*
 * What all CoreFoundation objects share: numbers and reference counts. C.
 *
 * Owner    what a Create or Copy function gives is the caller's, who releases it.
 * Thread   [any] for reference counts.
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

typedef struct CFRange {
    CFIndex location;
    CFIndex length;
} CFRange;

enum { kCFNotFound = -1 };

/* The one allocator there is; functions take it and no other. */
#define kCFAllocatorDefault ((CFAllocatorRef)NULL)

/* All three end the process on NULL. */
KVX_PLATFORM_EXPORT CFTypeRef CFRetain(CFTypeRef cf); /* gives its argument back */
KVX_PLATFORM_EXPORT void CFRelease(CFTypeRef cf);
KVX_PLATFORM_EXPORT CFIndex CFGetRetainCount(CFTypeRef cf);

KVX_PLATFORM_SIZE(CFIndex, 4);
KVX_PLATFORM_SIZE(CFRange, 8);

KVX_PLATFORM_END

#endif
