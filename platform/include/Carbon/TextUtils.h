/* Pascal text: a length byte, and at most 255 more. C. Thread: [any]. */
#ifndef CARBON_TEXTUTILS_H
#define CARBON_TEXTUTILS_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* A handle with a copy of the text and its length byte; the caller disposes it. NULL for NULL or no memory.
 */
KVX_PLATFORM_EXPORT StringHandle NewString(ConstStr255Param theString);

/* Cut at 255 bytes. Source and destination may be the same. */
KVX_PLATFORM_EXPORT void CopyCStringToPascal(const char* src, Str255 dst);

/* The destination has room for the text and its NUL. They may be the same. */
KVX_PLATFORM_EXPORT void CopyPascalStringToC(ConstStr255Param src, char* dst);

KVX_PLATFORM_END

#endif
