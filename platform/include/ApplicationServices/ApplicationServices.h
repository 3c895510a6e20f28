/*
 * One function of the graphics library. C.
 *
 * The function appeared in the system together with the newer time-pitch unit, so programs test for the
 * function's name to learn whether that unit exists.
 */
#ifndef APPLICATIONSERVICES_APPLICATIONSERVICES_H
#define APPLICATIONSERVICES_APPLICATIONSERVICES_H

#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

typedef const struct CGPath* CGPathRef;
struct CGAffineTransform;

/*
 * Do nothing.
 * Returns  NULL.
 * [any]
 */
KVX_PLATFORM_EXPORT CGPathRef CGPathCreateCopyByTransformingPath(CGPathRef path,
                                                                 const struct CGAffineTransform* transform);

KVX_PLATFORM_END

#endif
