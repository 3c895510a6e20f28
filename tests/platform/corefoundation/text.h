// Strings of the platform as C++ values.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace text {

struct Release {
    using pointer = CFStringRef;
    void operator()(CFStringRef string) const { CFRelease(string); }
};

/// Releases its string.
using Owned = std::unique_ptr<const __CFString, Release>;

Owned make(std::u16string_view units);

/// Returns  the bytes of CFStringGetCString; nothing if it fails.
std::optional<std::string> bytes(CFStringRef string, CFStringEncoding encoding);

/// The UTF-16 units of a string.
std::u16string units(CFStringRef string);

/// Units as hexadecimal numbers, for failure messages.
std::string readable(std::u16string_view units);

/// The live-object count of strings.
unsigned alive();

} // namespace text
