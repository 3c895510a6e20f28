// Helpers for tests that convert the platform's strings to and from C++ values.
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

/// A smart pointer that releases its string.
using Owned = std::unique_ptr<const __CFString, Release>;

Owned make(std::u16string_view units);

/// Returns  the bytes that CFStringGetCString writes for a string; nothing if the call fails.
std::optional<std::string> bytes(CFStringRef string, CFStringEncoding encoding);

/// Returns  the UTF-16 units of a string.
std::u16string units(CFStringRef string);

/// Format UTF-16 units as hexadecimal numbers, for failure messages.
std::string readable(std::u16string_view units);

/// Returns  the number of live strings.
unsigned alive();

} // namespace text
