#include <ApplicationServices/ApplicationServices.h>

CGPathRef CGPathCreateCopyByTransformingPath(CGPathRef, const struct CGAffineTransform*) { return nullptr; }
