// A spy in the place of the platform that the file player uses: sound files, graphs of units, devices, paths
// and platform strings. A test program that links the graph_spy files and exports its symbols answers these
// calls itself; it stands in front of libkvxplatform.
//
// Every call is noted with every argument, in order, as text:
//
//     AudioUnitSetProperty(mixer, 11, input, 0, 1, 4 bytes)
//
// What the platform makes goes by short names: url1 the first path, file1, audio1 (the handle inside file1),
// graph1, string1; nodes and units by what they are. A size that the caller gives and the platform writes
// back reads "size 8"; a place for an answer is not shown. A stream format shows its words in order.
//
// As new, the platform loads a file and builds a graph around it. A refused call does nothing, and leaves
// rubbish where its answer would stand. Threads: calls may come from any; the rest is for the test's.
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

/// The file that every path leads to. Its sample number n, counted over all channels, is n.
struct File {
    AudioStreamBasicDescription format = {48000, 'lpcm', 0xC, 4, 1, 4, 2, 16, 0};
    SInt64 length = 1000;             ///< frames, as it declares
    std::optional<UInt32> framesRead; ///< what a read gives, where it is not all that was asked for
    bool touchesBuffer = true;        ///< false: a read writes no sample
    Float64 seconds = 2.5;            ///< as the platform estimates them
};

/// A device of the system's list.
struct Device {
    AudioDeviceID id;
    std::string name; ///< its bytes, with a terminator where it has one
    bool hasOutput = true;
    OSStatus nameStatus = 0;
};

/// What one function answers, each time it is called.
struct Answer {
    OSStatus status = 0;            ///< other than 0: refused; for one that makes something: null
    bool leavesRubbish = true;      ///< refused, where its answer would stand
    std::optional<UInt32> size;     ///< written to the caller's size
    std::string value;              ///< written to the caller's buffer, as much as its size has room for
    Float32 number = 0;             ///< of AudioUnitGetParameter
    std::function<void()> during;   ///< runs inside the call, after it has been noted; it may throw
    std::function<OSStatus()> each; ///< where given: the status of this call, instead of `status`
};

struct Platform {
    File file;
    bool opensNothing = false; ///< a file opened well is null
    bool isRunning = false;    ///< of every graph
    std::vector<Device> devices;
    std::set<AudioObjectPropertySelector> deviceLists = {'#dev', 'dev#'}; ///< by which the list is known
    std::map<std::string, Answer> answers;
    /// Calls refused by their number, counted from 0 since the last reset or forgetCalls.
    std::map<std::size_t, OSStatus> refusals;
    /// Runs inside every call, after it has been noted, with its number; it may throw. What was to be given
    /// back is given back all the same.
    std::function<void(std::size_t)> inEachCall;
};
Platform& platform();
Answer& answer(const std::string& function);

/// A platform as new: nothing made, noted or named.
void reset();

Notes calls();
void forgetCalls();

/// How `pointer` shows where a caller hands it over; one without a name is "memory".
void name(const void* pointer, const std::string& text);

/// The bytes that the last call that sets a property was given.
std::string lastValue();

/// The callback that the last graph was given.
AURenderCallbackStruct callback();

/// What was made and not released, by name.
Notes live();

/// What must never be done, done: a thing released twice or used after that, a foreign address.
Notes faults();

/// The bytes of a value, for Answer::value.
template <class Value>
std::string bytesOf(const Value& value)
{
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

} // namespace graph_spy
