// A spy for the platform's property functions: devices, streams, hardware, audio units, audio objects and
// their listeners, components, the host clock, and platform strings. Recorded calls look like this:
//
//     AudioDeviceGetProperty(0x7, 0x0, 1, 0x6E616D65, size 5, 5 zeros)
//
// Numbers are hexadecimal. "size" is the size that the caller announces. A buffer for a value shows its size
// and whether the caller zeroed it. A float shows its bits. By default a call succeeds and writes nothing.
#pragma once

#include "tests/support/platform_spy.h"

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>
#include <vector>

namespace property_spy {

/// Restore the initial state, and reset the record of calls.
void reset();

/// Set whether the spy reads the bytes that a caller passes. A test with an invalid address must set it to
/// false.
void readValues(bool areRead);

/// Return the bytes of the qualifier in the last audio-object call.
std::string lastQualifier();

/// The listeners that are added and not removed.
struct Registration {
    AudioObjectID object;
    AudioObjectPropertyAddress address;
    AudioObjectPropertyListenerProc procedure;
    void* client;
};
const std::vector<Registration>& registrations();

/// A platform string that counts its releases. `length` is its number of UTF-16 units. A string without
/// `utf8` cannot be converted.
struct PlatformString {
    std::optional<std::string> utf8;
    CFIndex length = 0;
    int releases = 0;

    explicit PlatformString(const std::string& text) : PlatformString(text, static_cast<CFIndex>(text.size()))
    {
    }
    PlatformString(std::optional<std::string> text, CFIndex units);
    ~PlatformString();
    PlatformString(const PlatformString&) = delete;
    PlatformString& operator=(const PlatformString&) = delete;

    CFStringRef reference() const { return reinterpret_cast<CFStringRef>(this); }
    /// Return the bytes of the reference, for spy::Answer::value.
    std::string asValue() const;
};

} // namespace property_spy
