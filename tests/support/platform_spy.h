// A spy in the platform's place. A test program that links platform_spy.cpp, and exports its symbols, answers
// the platform calls named below itself: it stands in front of libkvxplatform for the objects linked into it,
// and for a plug-in that it loads.
//
// Every call is noted with every argument, in order; the answers, and what happens during a call, are the
// test's. Threads: calls may come from any thread; the rest is for the thread that runs the test.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace spy {

enum class Function {
    hardwareGetProperty,
    deviceGetProperty,
    addIOProc,
    removeIOProc,
    start,
    stop,
    delay,
};

/// What the platform is like, until the next reset.
struct Platform {
    AudioDeviceID defaultOutputDevice = 2;
    AudioStreamBasicDescription streamFormat = {}; ///< of every device without a row of its own
    std::map<AudioDeviceID, AudioStreamBasicDescription> streamFormatOf;

    std::map<Function, OSStatus> refusal; ///< a call with a row answers that status and does nothing else
    /// Runs inside the call, after it has been noted. A Delay without a row would be a wait that nothing
    /// ends: the spy says so and aborts.
    std::map<Function, std::function<void()>> during;
};

/// The platform, to be set up by the test.
Platform& platform();

/// A platform as new: 44100 Hz, two channels, no calls noted, no names.
void reset();

/// The calls since the last reset or forgetCalls, as text: "AudioDeviceStart(2, render)".
std::vector<std::string> calls();
void forgetCalls();

/// How often one function was called.
int count(Function function);

/// How a pointer shows in the calls' text; one without a name shows as "?", null as "null".
void name(const void* pointer, const char* text);

/// The procedures that are added and not removed, in order.
struct Installed {
    AudioDeviceID device;
    AudioDeviceIOProc procedure;
    void* client;
    bool isStarted;
};
std::vector<Installed> installed();

} // namespace spy
