/*
 * References to files and folders. C; 2-byte packed, as all of Carbon is.
 *
 * A reference is a value: copy it, keep it, throw it away. It means a path, and stays good when the item has
 * gone.
 *
 * Thread   [any].
 */
#ifndef CARBON_FILES_H
#define CARBON_FILES_H

#include <CoreFoundation/CoreFoundation.h>
#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN
#pragma pack(push, 2)

typedef struct FSRef {
    UInt8 hidden[80];
} FSRef;

/* A file's name: `length` UTF-16 units. */
typedef struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
} HFSUniStr255;

#pragma pack(pop)

/* A reference to the item at a UTF-8 path. `isDirectory` may be NULL.
 * Errors  fnfErr: there is none; dirNFErr: nor the folder it would be in; paramErr for a missing argument. */
KVX_PLATFORM_EXPORT OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);

/* The absolute path of a reference, UTF-8, with its NUL, which the size counts.
 * Errors  errFSBadFSRef: none of ours; errFSNameTooLong: the buffer is too small; paramErr. */
KVX_PLATFORM_EXPORT OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize);

/* The name as text; the caller releases it. NULL for NULL, more than 255 units, or no memory. */
KVX_PLATFORM_EXPORT CFStringRef FSCreateStringFromHFSUniStr(CFAllocatorRef alloc, const HFSUniStr255* uniStr);

KVX_PLATFORM_SIZE(FSRef, 80);
KVX_PLATFORM_SIZE(HFSUniStr255, 512);
KVX_PLATFORM_OFFSET(HFSUniStr255, unicode, 2);

KVX_PLATFORM_END

#endif
