// Owned references to platform (CF) objects.
#pragma once

#include "plugin/release.h"

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

/// Owned reference to a platform object, for example OwnedCF<CFStringRef>.
template <class Reference>
using OwnedCF = std::unique_ptr<std::remove_pointer_t<Reference>, Releases<CFRelease>>;
