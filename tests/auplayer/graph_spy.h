// A spy for the platform functions of the file player: sound files, graphs of units, devices, URLs and
// strings. Recorded calls look like this:
//
//     AudioUnitSetProperty(mixer, 11, input, 0, 1, 4 bytes)
//
// Platform objects have short names: url1, file1, audio1 (the audio file that the extended audio file file1
// wraps), graph1, string1. Nodes and units are named after their kind. A size that the platform overwrites is
// recorded as "size 8". Output addresses are not recorded. A stream format is recorded as its fields in
// order.
//
// After reset() all calls succeed, so that a file can be loaded and a graph can be built. A refused call only
// writes garbage to its outputs.
#pragma once

#include "tests/support/platform_spy.h"

#include <AudioToolbox/AudioToolbox.h>
#include <AudioUnit/AudioUnit.h>
#include <CoreAudio/CoreAudio.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace graph_spy {

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

struct Platform {
    File file;
    bool opensNothing = false; ///< whether opening a file succeeds but returns a null file
    bool isRunning = false;    ///< whether every graph is running
    std::vector<Device> devices;
    /// Selectors that the system knows for the device list.
    std::set<AudioObjectPropertySelector> deviceLists = {'#dev', 'dev#'};
};
Platform& platform();

/// Restore the initial platform, and reset the record of calls.
void reset();

/// Return the last render callback that was set on a graph.
AURenderCallbackStruct callback();

/// Return the bytes of a value, for spy::Answer::value.
template <class Value>
std::string bytesOf(const Value& value)
{
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

} // namespace graph_spy
