// A simulated device that tests turn by hand, and what it played.
#pragma once

#include <CoreAudio/CoreAudio.h>
#include <KVXPlatform/KVXPlatform.h>

#include <ctime>
#include <vector>

namespace test {

class SteppedDevice {
public:
    SteppedDevice(Float64 rate, UInt32 channels, UInt32 sliceFrames, bool isStepped = true);
    ~SteppedDevice();
    SteppedDevice(const SteppedDevice&) = delete;

    AudioDeviceID id() const { return device; }
    void makeDefault(AudioHardwarePropertyID role = kAudioHardwarePropertyDefaultOutputDevice) const;
    void remove();

    /// Whether a procedure is started on it: the next step calls that procedure.
    bool isRunning() const;

    /// Turn it, and return how many frames it ran for.
    UInt32 step(UInt32 frames)
    {
        return static_cast<UInt32>(KVXPlatformStep(device, static_cast<uint32_t>(frames)));
    }

    /// What was played, [frame * channels + channel]. Not while a paced device runs.
    std::vector<float> played;

private:
    static void tap(void* self, const float* samples, uint32_t frames, uint32_t channels);
    KVXDeviceID device;
};

/// Wait until something that another thread does has happened; false after ten seconds.
template <class Happened>
bool eventually(Happened happened)
{
    for (int turn = 0; turn < 10000; ++turn) {
        if (happened()) return true;
        struct timespec pause = {0, 1000000};
        nanosleep(&pause, nullptr);
    }
    return false;
}

} // namespace test
