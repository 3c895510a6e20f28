// A simulated device whose I/O cycles are run by a test, and the samples that the device played.
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

    /// Whether an I/O procedure is started, so that the next step() calls it.
    bool isRunning() const;

    /// Run I/O cycles with a total of `frames` frames. Returns the number of frames that were run.
    UInt32 step(UInt32 frames)
    {
        return static_cast<UInt32>(KVXPlatformStep(device, static_cast<uint32_t>(frames)));
    }

    /// The samples that the device played: [frame * channels + channel]. Must not be read while a paced
    /// device runs.
    std::vector<float> played;

private:
    static void tap(void* self, const float* samples, uint32_t frames, uint32_t channels);
    KVXDeviceID device;
};

/// Wait until another thread has made a condition true.
/// Returns  false if the condition is still false after ten seconds.
template <class Happened>
bool eventually(Happened happened)
{
    for (int attempt = 0; attempt < 10000; ++attempt) {
        if (happened()) return true;
        struct timespec pause = {0, 1000000};
        nanosleep(&pause, nullptr);
    }
    return false;
}

} // namespace test
