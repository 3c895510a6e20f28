// Simulated hardware that a test controls. It replaces PortAudio's functions.
#pragma once

#include <portaudio.h>

#include <mutex>
#include <string>
#include <vector>

namespace haltest {

struct FakeDevice {
    std::string name;
    int channels = 2;
    bool opens = true;   ///< false if streams of this device cannot be opened
    double onlyRate = 0; ///< the only supported sample rate; 0 if every rate is supported
};

/// The devices that PortAudio finds at its next start, and the behaviour of PortAudio's functions.
struct FakeHardware {
    std::mutex lock;
    std::vector<FakeDevice> plugged; ///< devices that the next Pa_Initialize finds
    bool starts = true;              ///< false if Pa_Initialize fails
    int hiddenInfo = -1;             ///< index of the device for which Pa_GetDeviceInfo returns null
    int openingsToRefuse = 0;        ///< number of further streams that fail to open, on any device
    int startsToRefuse = 0;          ///< number of further streams that open but fail to start
    bool stopsBlock = false;         ///< true if Pa_StopStream never returns

    int opened = 0, closed = 0; ///< numbers of streams that were opened and closed
    int closedAgain = 0;        ///< number of calls that closed a stream a second time
    int terminated = 0;         ///< number of calls of Pa_Terminate
    int lastOpenedIndex = -1;
    double lastOpenedRate = 0;
};
FakeHardware& fakeHardware();

/// Make all open streams report that they are no longer active.
void endFakeStreams();

} // namespace haltest
