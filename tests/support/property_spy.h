// A spy in the place of the platform's property calls: devices, streams, hardware, audio units, audio objects
// and their listeners, components, the host clock, and platform strings. A test program that links
// property_spy.cpp and exports its symbols answers these calls itself; it stands in front of libkvxplatform.
//
// Every call is noted with every argument, in order, as text:
//
//     AudioDeviceGetProperty(0x7, 0x0, 1, 0x6E616D65, size 5, 5 zeros)
//
// Numbers are hexadecimal, as wide as they are; "size" is what stood in the caller's in/out size; a pointer
// shows by the name that the test gave it, as null, or else as "memory" - a buffer to be filled as what it
// held. Floats show as their bits. Thread: one at a time.
#pragma once

#include <CoreAudio/CoreAudio.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace property_spy {

using Notes = std::vector<std::string>;

/// What a platform function does, until the next reset. Where nothing is said it writes nothing and answers
/// 0.
struct Answer {
    OSStatus status = 0;
    std::optional<UInt32> size;      ///< written to the caller's size
    std::optional<Boolean> writable; ///< written to the caller's writability
    std::string value;               ///< written to the caller's buffer, as much as its size has room for
    std::uint64_t number = 0;        ///< the result of a function that returns no status, bit for bit
    std::function<void()> during;    ///< runs inside the call, after it has been noted; it may throw
};

/// The answer of the function of that name, to be set up.
Answer& answer(const std::string& function);

/// Forget answers, calls and names.
void reset();

/// The calls since the last reset or forgetCalls.
Notes calls();
void forgetCalls();

/// How `pointer` shows.
void name(const void* pointer, const std::string& text);

/// Whether the bytes handed to a set call are read (they are, unless a test says that they cannot be).
void readValues(bool areRead);

/// The bytes of the last set call.
std::string lastValue();

/// The qualifier's bytes in the last audio-object call.
std::string lastQualifier();

/// The listeners that are added and not removed.
struct Registration {
    AudioObjectID object;
    AudioObjectPropertyAddress address;
    AudioObjectPropertyListenerProc procedure;
    void* client;
};
const std::vector<Registration>& registrations();

/// A platform string that counts its releases. `length` is in units; a text without one cannot be converted.
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
    /// The reference as a property's value.
    std::string asValue() const;
};

} // namespace property_spy
