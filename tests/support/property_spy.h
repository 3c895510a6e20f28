// A spy for the platform functions that CoreAudioKVX and the listener call: properties, listeners, audio
// units, components, the host clock, and platform strings. A recorded call looks like this:
//
//     AudioDeviceGetProperty(0x7, 0x0, 1, 0x6E616D65, size 5, 5 zeros)
//
// Recorded numbers are hexadecimal, and floats are recorded as their bits. "size" is the size that the caller
// states; "5 zeros" is the caller's buffer. By default a call succeeds and writes nothing.
#pragma once

#include "tests/support/platform_spy.h"

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>
#include <vector>

namespace property_spy {

/// Restore the initial state, and forget all calls and scripted results.
void reset();

/// Set whether the spy reads the bytes that a caller passes. A test that passes an invalid address must
/// forbid the reading.
void readValues(bool areRead);

/// Return the bytes of the qualifier in the last audio-object call.
std::string lastQualifier();

/// A property listener that the code under test has added and not removed.
struct Registration {
    AudioObjectID object;
    AudioObjectPropertyAddress address;
    AudioObjectPropertyListenerProc procedure;
    void* client;
};
const std::vector<Registration>& registrations();

/// A platform string that a test makes; `releases` counts the calls of CFRelease. `length` is the number of
/// UTF-16 units. If `utf8` is empty, the conversion of the string to bytes fails.
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
    /// Return the bytes of the string's address, for use as spy::Answer::value.
    std::string asValue() const;
};

} // namespace property_spy
