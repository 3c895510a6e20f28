/*
 * Paths of graphics, of which there are none here. C.
 *
 * The one function came to the system together with the newer time-pitch unit: programs look for its name to
 * find out whether that unit is there. Thread: [any].
 */
#ifndef APPLICATIONSERVICES_APPLICATIONSERVICES_H
#define APPLICATIONSERVICES_APPLICATIONSERVICES_H

#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

typedef const struct CGPath* CGPathRef;
struct CGAffineTransform;

/* NULL, as for every path that is none: nothing here makes one. */
KVX_PLATFORM_EXPORT CGPathRef CGPathCreateCopyByTransformingPath(CGPathRef path,
                                                                 const struct CGAffineTransform* transform);

KVX_PLATFORM_END

#endif
