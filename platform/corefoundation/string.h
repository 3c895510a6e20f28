// Strings: `CFStringRef` points to a __CFString.
#pragma once

#include "platform/corefoundation/object.h"

#include <CoreFoundation/CFString.h>

#include <string>
#include <string_view>

/// The platform's name of the type. Units are UTF-16 in the processor's order and may be unpaired surrogates.
struct __CFString : kvxplatform::corefoundation::Object {
    __CFString(std::u16string&& ofUnits, bool canChange);

    std::u16string units;
    const bool isMutable;
};

namespace kvxplatform::corefoundation {

/// Make a string.
/// Owner    the caller releases the result.
/// Returns  null without memory.
/// [any]
CFMutableStringRef newString(std::u16string_view units, bool isMutable);

} // namespace kvxplatform::corefoundation
