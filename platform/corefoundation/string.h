// Strings. A `CFStringRef` points to a __CFString.
#pragma once

#include "platform/corefoundation/object.h"

#include <CoreFoundation/CFString.h>

#include <string>
#include <string_view>

/// A string; the platform's header determines the name of this type. The units are UTF-16 in the processor's
/// byte order and may include unpaired surrogates.
struct __CFString : kvxplatform::corefoundation::Object {
    __CFString(std::u16string&& ofUnits, bool canChange);

    std::u16string units;
    const bool isMutable;
};

namespace kvxplatform::corefoundation {

/// Make a string.
/// Owner    the caller releases the result.
/// Returns  null if memory runs out.
/// [any]
CFMutableStringRef newString(std::u16string_view units, bool isMutable);

} // namespace kvxplatform::corefoundation
