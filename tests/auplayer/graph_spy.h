// A spy that replaces the platform functions of the file player: sound files, graphs of units, devices, URLs
// and strings. A test program links the graph_spy files and exports its symbols, which override the
// platform's.
//
// Every call is recorded with all arguments, in order, as text:
//
//     AudioUnitSetProperty(mixer, 11, input, 0, 1, 4 bytes)
//
// Platform objects have short names: url1, file1, audio1 (the handle inside file1), graph1, string1; nodes
// and units are named after their kind. A size that the platform writes back reads "size 8"; an output
// address is not shown. A stream format shows its fields in order.
//
// After a reset the platform loads a file and builds a graph. A refused call does nothing and writes garbage
// to its outputs. Platform functions: [any]. All other functions: [main].
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

/// The file behind every URL. Sample n, counted over all channels, has the value n.
struct File {
    AudioStreamBasicDescription format = {48000, 'lpcm', 0xC, 4, 1, 4, 2, 16, 0};
    SInt64 length = 1000;             ///< declared frames
    std::optional<UInt32> framesRead; ///< by a read; none: all requested frames
    bool touchesBuffer = true;        ///< false: a read writes no sample
    Float64 seconds = 2.5;            ///< the estimated duration
};

/// A device of the system's list.
struct Device {
    AudioDeviceID id;
    std::string name; ///< bytes, with a terminator if the test needs one
    bool hasOutput = true;
    OSStatus nameStatus = 0;
};

/// The scripted result of one function, for each of its calls.
struct Answer {
    OSStatus status = 0;            ///< other than 0: refused; a creating function returns null
    bool leavesGarbage = true;      ///< a refused call writes garbage to its outputs
    std::optional<UInt32> size;     ///< written to the caller's size
    std::string value;              ///< written to the caller's buffer, cut to its size
    Float32 number = 0;             ///< of AudioUnitGetParameter
    std::function<void()> during;   ///< runs inside the call; it may throw
    std::function<OSStatus()> each; ///< if set, returns the call's status instead of `status`
};

struct Platform {
    File file;
    bool opensNothing = false; ///< opening a file succeeds with a null file
    bool isRunning = false;    ///< of every graph
    std::vector<Device> devices;
    std::set<AudioObjectPropertySelector> deviceLists = {'#dev', 'dev#'}; ///< selectors of the list
    std::map<std::string, Answer> answers;
    /// Refused calls by number, counted from 0 since the last reset or forgetCalls.
    std::map<std::size_t, OSStatus> refusals;
    /// Runs inside every call, with the call's number; it may throw. A release is done even if it throws.
    std::function<void(std::size_t)> inEachCall;
};
Platform& platform();
Answer& answer(const std::string& function);

/// Forget all objects, calls, names and scripts.
void reset();

Notes calls();
void forgetCalls();

/// Set the name of a pointer in recorded calls; unnamed pointers read "memory".
void name(const void* pointer, const std::string& text);

/// The bytes of the last property that was set.
std::string lastValue();

/// The last callback that was set on a graph.
AURenderCallbackStruct callback();

/// The names of all objects that are not released.
Notes live();

/// Misuse: an object released twice or used after its release, or an unknown address released.
Notes faults();

/// The bytes of a value, for Answer::value.
template <class Value>
std::string bytesOf(const Value& value)
{
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

} // namespace graph_spy
