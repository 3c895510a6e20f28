// A text as callers hold it: `CFStringRef` points to one of these.
#pragma once

#include "platform/corefoundation/object.h"

#include <CoreFoundation/CFString.h>

#include <string>
#include <string_view>

/// The platform's name for it. Units are UTF-16 in the processor's order, unpaired surrogates among them.
struct __CFString : kvxplatform::corefoundation::Object {
    __CFString(std::u16string&& ofUnits, bool canChange);

    std::u16string units;
    const bool isMutable;
};

namespace kvxplatform::corefoundation {

/// A new text, the caller's to release; null without memory. [any]
CFMutableStringRef newString(std::u16string_view units, bool isMutable);

} // namespace kvxplatform::corefoundation
