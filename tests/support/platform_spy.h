// The common part of all spies that replace platform functions: the log of calls, the scripted results, and
// the simulated platform objects. A spy defines platform functions under their own names; a test program that
// links the spy and exports its symbols calls these functions instead of those of libkvxplatform.
//
// A recorded call shows the function and its arguments:
//
//     AudioUnitSetProperty(mixer, 11, input, 0, 1, 4 bytes)
//
// Platform functions: [any]. All other functions: [main].
#pragma once

#include "tests/support/call_log.h"

#include <CoreAudio/CoreAudio.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace spy {

// ---- scripted results ----

/// The scripted result of one platform function, for all calls of the function.
struct Answer {
    OSStatus status = 0;             ///< status of the call; a status other than 0 refuses the call
    bool leavesGarbage = true;       ///< graph_spy: whether a refused read of a property writes garbage
    std::optional<UInt32> size;      ///< size that the call writes to the caller's size variable
    std::optional<Boolean> writable; ///< result of a call that asks whether a property is writable
    /// Bytes that the call writes to the caller's buffer, cut to the buffer's size.
    std::string value;
    Float32 parameter = 0;        ///< result of AudioUnitGetParameter in graph_spy; property_spy uses `value`
    std::uint64_t bits = 0;       ///< bits of the result of a function that returns no status
    std::function<void()> during; ///< function that the call runs after the recording; may throw
};

struct Script {
    std::map<std::string, Answer, std::less<>> answers; ///< scripted results by the name of the function
    /// Status of each refused call, by the number of the call: calls of all functions are counted together,
    /// from 0 after reset() or forgetCalls().
    std::map<std::size_t, OSStatus> refusals;
    /// Function that runs inside every call, with the number of the call. If the function throws, a platform
    /// call that releases an object still releases it.
    std::function<void(std::size_t)> inEachCall;
};
Script& script();
Answer& answer(const std::string& function);

/// Forget all calls, scripted results, names and platform objects.
void reset();

// ---- recorded calls ----

Calls calls();
void forgetCalls();

/// Return the number of recorded calls of one function.
int count(const std::string& function);

/// Set the name of a pointer in recorded calls. A pointer without a name is recorded as "memory".
void name(const void* pointer, const std::string& text);

/// Return the bytes of the last property that was set.
std::string lastValue();

/// Return the names of all platform objects that the code under test has not released.
Calls live();

/// Return descriptions of misuse: an object that was released twice or used after its release, or the release
/// of an unknown address.
Calls faults();

// ---- for the spies ----

/// Holds the lock on the state of all spies. record() also takes the lock, and releases it before it calls
/// functions of the test.
class Guard {
public:
    Guard();
    ~Guard();
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
};

/// The result of record(): the status that the platform function returns, and the scripted result.
struct Call {
    OSStatus status;
    Answer scripted;
};
/// Internal part of record(): log the line, then run the functions of the test.
Call finish(const char* function, const Line& line);

/// Record a call as text, run the functions that the test has scripted for it, and return the result.
template <class... Arguments>
Call record(const char* function, const Arguments&... arguments)
{
    Line line;
    {
        const Guard guard;
        line << function << "(";
        [[maybe_unused]] const char* between = "";
        ((line << between << arguments, between = ", "), ...);
        line << ")";
    }
    return finish(function, line);
}

/// Return whether the test has named a pointer. Call while a Guard exists.
bool isNamed(const void* pointer);

void fault(const std::string& text);

/// Keep the bytes that lastValue() returns.
void keepValue(const void* bytes, UInt32 size);

/// A simulated platform object. The address of this struct is the handle that the code under test receives.
/// `bytes` is the first field, because a memory handle is a pointer to the address of the memory.
struct Object {
    char* bytes = nullptr;
    std::string name;
    bool isLive = true;
    bool isOwed = true;             ///< whether the code under test must release the object
    std::unique_ptr<char[]> memory; ///< exactly `size` bytes, so that a sanitizer finds a write past the end
    std::size_t size = 0;
};

/// Make an object. make() and makeMemory() name the object after its kind and number, such as "file2".
void* make(const std::string& kind, bool isOwed = true);
void* makeNamed(const std::string& name);
void* makeMemory(const std::string& kind, const void* bytes, std::size_t size);

/// Return the object of a handle, or null.
Object* find(const void* handle);

/// Return the next name of a kind, such as "file2".
std::string nextName(const std::string& kind);

/// Mark the objects whose names begin with `beginning` as released. Call when their owner is released.
void releaseAll(const std::string& beginning);

/// Releases the object of a handle in its destructor, at the end of a platform call, even if the call throws.
class Release {
public:
    Release(const char* function, const void* handle) : function_(function), handle_(handle) {}
    ~Release();
    Release(const Release&) = delete;
    Release& operator=(const Release&) = delete;

    bool isCancelled = false;

private:
    const char* function_;
    const void* handle_;
};

inline void writeGarbage(void* bytes, std::size_t size)
{
    if (bytes) std::memset(bytes, 0x3F, size);
}

/// Write `value` to the caller's variable, or garbage if `status` refuses the call.
template <class T>
OSStatus give(OSStatus status, T* target, const T& value)
{
    if (status)
        writeGarbage(target, sizeof *target);
    else if (target)
        *target = value;
    return status;
}

/// Make an object and write its handle to the caller's variable, or garbage if `status` refuses the call.
template <class Reference>
OSStatus giveNew(OSStatus status, const char* kind, Reference* target, bool isOwed = true)
{
    return give(status, target, status ? Reference{} : static_cast<Reference>(make(kind, isOwed)));
}

/// Write a property value to the caller's buffer of `*size` bytes, or garbage if `status` refuses the call.
/// Returns  `status`, or `sizeError` if the buffer is too small.
template <class T>
OSStatus giveProperty(OSStatus status, OSStatus sizeError, UInt32* size, void* target, const T& value)
{
    if (!status && *size < sizeof value) status = sizeError;
    if (status) {
        writeGarbage(target, *size);
        return status;
    }
    std::memcpy(target, &value, sizeof value);
    *size = sizeof value;
    return noErr;
}

} // namespace spy
