// A spy for the platform functions that the buffered player calls: the default output device, stream formats,
// I/O procedures and Delay. The render thread calls some of these functions, so recording allocates nothing
// unless a test scripts a value of more than 15 bytes or a function with a large capture.
//
// A refused property call fills the caller's buffer with garbage.
#pragma once

#include "tests/support/platform_spy.h"

#include <map>
#include <vector>

namespace device_spy {

struct Platform {
    AudioDeviceID defaultOutputDevice = 2;
    /// Stream format of each device that has no row in `streamFormatOf`.
    AudioStreamBasicDescription streamFormat = {44100, 'lpcm', 9, 8, 1, 8, 2, 32, 0};
    std::map<AudioDeviceID, AudioStreamBasicDescription> streamFormatOf;
};
Platform& platform();

/// Restore the initial platform, and forget all calls and scripted results.
void reset();

/// An I/O procedure that the player has added and not removed. installed() returns all, first added first.
struct Installed {
    AudioDeviceID device;
    AudioDeviceIOProc procedure;
    void* client;
    bool isStarted;
};
std::vector<Installed> installed();

} // namespace device_spy
