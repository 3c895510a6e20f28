// Things of the platform's that we hold, given back on every way out.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace auplayer {

/// Give `thing` back. A platform that throws keeps it: there is nothing left to undo, and the way out may be
/// that of another exception.
template <class Result, class Thing>
void giveBack(Result (*function)(Thing), Thing thing) noexcept
{
    try {
        function(thing);
    } catch (...) {
    }
}

struct ReleaseReference {
    void operator()(CFTypeRef object) const noexcept { giveBack(CFRelease, object); }
};

/// Owned<CFStringRef> and the like.
template <class Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, ReleaseReference>;

} // namespace auplayer
