/*
 * Pascal text: a length byte and up to 255 bytes. C.
 *
 * All functions: [any].
 */
#ifndef CARBON_TEXTUTILS_H
#define CARBON_TEXTUTILS_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/*
 * Copy a Pascal text into a new handle.
 * Owner    the caller disposes the handle.
 * Returns  NULL if theString is NULL or there is no memory.
 */
KVX_PLATFORM_EXPORT StringHandle NewString(ConstStr255Param theString);

/* Convert C text to Pascal text, cut at 255 bytes. src and dst may overlap. */
KVX_PLATFORM_EXPORT void CopyCStringToPascal(const char* src, Str255 dst);

/*
 * Convert Pascal text to C text. dst has space for 256 bytes, or for the length of the text plus 1. src and
 * dst may overlap.
 */
KVX_PLATFORM_EXPORT void CopyPascalStringToC(ConstStr255Param src, char* dst);

KVX_PLATFORM_END

#endif
