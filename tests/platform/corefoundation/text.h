// Platform texts as C++ values, for tests.
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

/// A string that is released at the end.
using Owned = std::unique_ptr<const __CFString, Release>;

Owned make(std::u16string_view units);

/// The string's bytes in an encoding, by its own longest size; nothing if it refuses.
std::optional<std::string> bytes(CFStringRef string, CFStringEncoding encoding);

/// Its units.
std::u16string units(CFStringRef string);

/// A failing test shows these.
std::string readable(std::u16string_view units);

/// Strings alive, as the accounts have it.
unsigned alive();

} // namespace text
