// Simulated hardware under the control of a test: it interposes PortAudio's functions.
#pragma once

#include <portaudio.h>

#include <mutex>
#include <string>
#include <vector>

namespace haltest {

struct FakeDevice {
    std::string name;
    int channels = 2;
    bool opens = true;   ///< false: streams do not open
    double onlyRate = 0; ///< 0: every rate
};

/// The devices that PortAudio finds at its next start, and how its functions behave.
struct FakeHardware {
    std::mutex lock;
    std::vector<FakeDevice> plugged; ///< read by Pa_Initialize
    bool starts = true;              ///< false: Pa_Initialize fails
    int hiddenInfo = -1;             ///< the index whose Pa_GetDeviceInfo is null
    int openingsToRefuse = 0;        ///< that many streams of any device do not open
    int startsToRefuse = 0;          ///< that many open streams do not start
    bool stopsBlock = false;         ///< Pa_StopStream never returns

    int opened = 0, closed = 0; ///< counts of streams
    int closedAgain = 0;        ///< calls that closed a stream a second time
    int terminated = 0;         ///< calls of Pa_Terminate
    int lastOpenedIndex = -1;
    double lastOpenedRate = 0;
};
FakeHardware& fakeHardware();

/// All open streams report that they are no longer active.
void endFakeStreams();

} // namespace haltest
