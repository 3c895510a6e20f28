// Hardware that does what a test says: this program's functions stand in front of PortAudio's own.
#pragma once

#include <portaudio.h>

#include <mutex>
#include <string>
#include <vector>

namespace bench {

struct FakeDevice {
    std::string name;
    int channels = 2;
    bool opens = true;   ///< else a stream is refused
    double onlyRate = 0; ///< 0: every rate
};

/// What PortAudio finds when it is started the next time, and how it goes on.
struct FakeHardware {
    std::mutex lock;
    std::vector<FakeDevice> plugged; ///< taken over by Pa_Initialize
    bool starts = true;              ///< else Pa_Initialize fails
    int hiddenInfo = -1;             ///< the index whose Pa_GetDeviceInfo is null
    int openingsToRefuse = 0;        ///< so many more streams are refused, whatever the device
    int startsToRefuse = 0;          ///< so many more opened streams do not start
    bool stopsBlock = false;         ///< Pa_StopStream never returns

    int opened = 0, closed = 0; ///< streams so far
    int closedAgain = 0;        ///< calls that closed a stream a second time
    int terminated = 0;         ///< calls of Pa_Terminate
    int lastOpenedIndex = -1;
    double lastOpenedRate = 0;
};
FakeHardware& fakeHardware();

/// What an open stream does from now on: it says that it is no longer active.
void endFakeStreams();

} // namespace bench
