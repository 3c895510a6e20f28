// References to CoreFoundation objects that we hold, released on every way out.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace auplayer {

struct ReleaseReference {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// Owned<CFStringRef> and the like.
template <class Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, ReleaseReference>;

} // namespace auplayer
