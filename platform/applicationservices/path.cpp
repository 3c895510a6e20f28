// A program detects an older system by a weak reference to this function's name. The function returns null,
// because this platform has no graphics paths to copy.
#include <ApplicationServices/ApplicationServices.h>

CGPathRef CGPathCreateCopyByTransformingPath(CGPathRef, const struct CGAffineTransform*) { return nullptr; }
