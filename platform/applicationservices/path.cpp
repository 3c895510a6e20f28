// A weak reference to this name lets a program detect an older system. The platform has no paths to copy.
#include <ApplicationServices/ApplicationServices.h>

CGPathRef CGPathCreateCopyByTransformingPath(CGPathRef, const struct CGAffineTransform*) { return nullptr; }
