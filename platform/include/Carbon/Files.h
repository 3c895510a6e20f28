/*
 * References to files and folders. C; structs are 2-byte packed, as in all Carbon headers.
 *
 * A reference is a value that may be copied and kept. The reference names a path, and stays valid when the
 * item at the path is removed.
 * All functions: [any].
 */
#ifndef CARBON_FILES_H
#define CARBON_FILES_H

#include <CoreFoundation/CoreFoundation.h>
#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN
#pragma pack(push, 2)

/* A file reference. Only the functions of the platform fill and read it. */
typedef struct FSRef {
    UInt8 hidden[80];
} FSRef;

/*
 * A file's name.
 * Units    length is in UTF-16 units, up to 255.
 */
typedef struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
} HFSUniStr255;

#pragma pack(pop)

/*
 * Make a reference to an existing item.
 * Shape    path is UTF-8 with a zero byte; a relative path starts at the current folder. isDirectory may be
 *          NULL.
 * Errors   after an error nothing is written. fnfErr (-43): no such item. dirNFErr (-120): no such folder.
 *          paramErr (-50): path or ref is NULL, or the path is empty. memFullErr (-108): no memory. For other
 *          failures, a system error that AudioFileOpenURL lists.
 */
KVX_PLATFORM_EXPORT OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);

/*
 * Get the absolute path of a file reference, as UTF-8 with a zero byte.
 * Units    pathBufferSize is in bytes and includes the zero byte.
 * Errors   after an error nothing is written. errFSBadFSRef: no function of this process filled the
 *          reference. errFSNameTooLong: the buffer is too small. paramErr (-50): a NULL argument. memFullErr
 *          (-108): no memory.
 */
KVX_PLATFORM_EXPORT OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize);

/*
 * Make a string from a file name. alloc is ignored.
 * Owner    the caller releases the string.
 * Returns  NULL if uniStr is NULL, its length exceeds 255, or there is no memory.
 */
KVX_PLATFORM_EXPORT CFStringRef FSCreateStringFromHFSUniStr(CFAllocatorRef alloc, const HFSUniStr255* uniStr);

KVX_PLATFORM_SIZE(FSRef, 80);
KVX_PLATFORM_SIZE(HFSUniStr255, 512);
KVX_PLATFORM_OFFSET(HFSUniStr255, unicode, 2);

KVX_PLATFORM_END

#endif
