// A spy that replaces the platform functions of the file player: sound files, graphs of units, devices, URLs
// and strings. A test program links the graph_spy files and exports its symbols, which override the symbols
// of the platform library.
//
// The spy records every call with all arguments, in order, as text:
//
//     AudioUnitSetProperty(mixer, 11, input, 0, 1, 4 bytes)
//
// Platform objects have short names: url1, file1, audio1 (the audio file that the extended audio file file1
// wraps), graph1, string1. Nodes and units are named after their kind. A size that the platform overwrites is
// recorded as "size 8". Output addresses are not recorded. A stream format is recorded as its fields in
// order.
//
// After reset() all calls succeed, so that a file can be loaded and a graph can be built. A refused call only
// writes garbage to its outputs. Platform functions: [any]. All other functions: [main].
#pragma once

#include <AudioToolbox/AudioToolbox.h>
#include <AudioUnit/AudioUnit.h>
#include <CoreAudio/CoreAudio.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace graph_spy {

using Notes = std::vector<std::string>;

/// The file that every URL opens. Sample n, counted over all channels, has the value n.
struct File {
    AudioStreamBasicDescription format = {48000, 'lpcm', 0xC, 4, 1, 4, 2, 16, 0};
    SInt64 length = 1000;             ///< number of frames that the file declares
    std::optional<UInt32> framesRead; ///< number of frames that a read returns; none for all requested frames
    bool touchesBuffer = true;        ///< whether a read writes samples
    Float64 seconds = 2.5;            ///< estimated duration, in seconds
};

/// A device in the system's device list.
struct Device {
    AudioDeviceID id;
    std::string name; ///< bytes of the name, with a terminator if the test needs one
    bool hasOutput = true;
    OSStatus nameStatus = 0;
};

/// The scripted result of one platform function. It applies to all calls of that function.
struct Answer {
    /// Status that refuses the call, unless 0; a refused creating function returns null.
    OSStatus status = 0;
    bool leavesGarbage = true;  ///< whether a refused call writes garbage to its outputs
    std::optional<UInt32> size; ///< size that the call writes back to the caller
    /// Bytes that the call writes to the caller's buffer, cut to the buffer's size.
    std::string value;
    Float32 number = 0;             ///< parameter value that AudioUnitGetParameter returns
    std::function<void()> during;   ///< function that runs inside the call and may throw
    std::function<OSStatus()> each; ///< function that, if set, returns the status instead of `status`
};

struct Platform {
    File file;
    bool opensNothing = false; ///< whether opening a file succeeds but returns a null file
    bool isRunning = false;    ///< whether every graph is running
    std::vector<Device> devices;
    /// Selectors that the system knows for the device list.
    std::set<AudioObjectPropertySelector> deviceLists = {'#dev', 'dev#'};
    std::map<std::string, Answer> answers;
    /// Status of each refused call, by the number of the call. Calls are counted from 0 after reset() or
    /// forgetCalls().
    std::map<std::size_t, OSStatus> refusals;
    /// Function that runs inside every call with the number of the call. The function may throw; a releasing
    /// call releases its object even then.
    std::function<void(std::size_t)> inEachCall;
};
Platform& platform();
Answer& answer(const std::string& function);

/// Forget all platform objects, recorded calls, names and scripted results.
void reset();

Notes calls();
void forgetCalls();

/// Set the name of a pointer in recorded calls. A pointer without a name is recorded as "memory".
void name(const void* pointer, const std::string& text);

/// Return the bytes of the last property that was set.
std::string lastValue();

/// Return the last render callback that was set on a graph.
AURenderCallbackStruct callback();

/// Return the names of all platform objects that are not released.
Notes live();

/// Return descriptions of misuse: an object that was released twice or used after its release, or the release
/// of an unknown address.
Notes faults();

/// Return the bytes of a value, for Answer::value.
template <class Value>
std::string bytesOf(const Value& value)
{
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

} // namespace graph_spy
