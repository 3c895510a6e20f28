// A device of the platform, as a plain record.
//
// Its fields stand in groups by the lock that guards them. The tree's lock (tree.h) guards what properties
// tell; `cycleLock` what the running cycle works on: a cycle holds it from beginning to end, so whoever takes
// it has waited for the cycle in progress. `control` serialises starting, stopping and reconfiguring; it is
// never taken in a cycle.
#pragma once

#include "platform/hal/capture.h"

#include <CoreAudio/CoreAudio.h>
#include <KVXPlatform/KVXPlatform.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kvxplatform::hal {

/// What a device is set to. Rates in Hz, the rest in frames and channels.
struct Settings {
    double rate = 44100;
    UInt32 outputChannels = 2;
    UInt32 inputChannels = 0;
    UInt32 sliceFrames = 512;
    UInt32 latencyFrames = 0;
};

/// How loud a channel is: the scalar that programs set, and whether it is muted.
struct Level {
    float scalar = 1;
    bool isMuted = false;
};

/// A procedure registered with a device.
struct IOProc {
    AudioDeviceIOProc proc;
    void* client;
    bool hasOwnID; ///< registered under an ID of its own, which is this record's address
    bool isStarted = false;
    bool isRemoved = false; ///< waits to be swept
};

/// Who turns the cycle.
enum class Driver { timer, steps, hardware };

/// A stream of PortAudio that turns the device.
struct HardwareStream {
    struct Device* device = nullptr;
    UInt32 channels = 0;
    void* stream = nullptr;
    std::int64_t openedNanos = 0; ///< on the host clock
};

struct Device {
    // ---- never changes ----
    AudioObjectID id = 0;
    AudioObjectID outputStream = 0; ///< 0: no such stream
    AudioObjectID inputStream = 0;
    std::string name, manufacturer, uid;
    UInt32 transport = 0;
    bool isSimulated = false;

    // ---- under the tree's lock ----
    Settings settings;
    bool isAlive = true;
    bool isListed = true; ///< false: unplugged, kept only until its last procedure has stopped
    bool isMuted = false;
    std::vector<Level> outputLevels;
    SInt32 hogOwner = -1;
    UInt32 dataSource = 'spkr';
    std::vector<double> rates; ///< those on offer; empty: any from 1 kHz to 768 kHz
    bool ratesAreKnown = true;

    // ---- under `control` ----
    std::mutex control;
    int hardwareIndex = -1; ///< PortAudio's index of the device
    std::unique_ptr<HardwareStream> hardware;
    bool hasTimerThread = false;

    // ---- under `cycleLock` ----
    std::mutex cycleLock;
    std::condition_variable timerWake;
    Driver driver = Driver::timer;
    bool isDiscarding = false; ///< dead or unplugged: turned, but nothing is heard
    bool mustEnd = false;      ///< the timer's thread shall end
    OSStatus startRefusal = noErr;
    std::vector<std::unique_ptr<IOProc>> procs;
    int startedProcs = 0;
    int startsWithoutProc = 0;
    Settings running; ///< the settings that the cycle uses
    double sampleTime = 0;
    double stepDebt = 0; ///< frames of elapsed time that a stepped device still owes
    std::vector<float> mix, scratch, inputSilence;
    std::vector<float> gains, targetGains; ///< per output channel; a slice glides from one to the other
    KVXOutputTap tap = nullptr;
    void* tapContext = nullptr;
    std::shared_ptr<Capture> capture;

    // ---- any thread ----
    std::atomic<bool> isRunning{false};          ///< a procedure is started: what 'goin' tells
    std::atomic<bool> hasNewsOfRunning{false};   ///< for the housekeeper
    std::atomic<bool> mustApply{false};          ///< likewise: settings were changed from inside the cycle
    std::atomic<std::int64_t> lastCycleNanos{0}; ///< when the latest cycle began, on the host clock
};

using DeviceRef = std::shared_ptr<Device>;

/// The device whose cycle runs on this thread, or null.
extern thread_local Device* turningDevice;

/// Make the cycle work with the settings and levels of now. Takes `control`; not in a cycle of this device,
/// where the housekeeper is asked instead.
void applySettings(const DeviceRef& device);

/// Make the cycle glide to the levels of now.
void applyLevels(const DeviceRef& device);

/// The scalar volume as a factor, and the decibels in between: linear in decibels from the lowest volume to 0
/// dB.
constexpr float lowestDecibels = -64;
float decibelsOfScalar(float scalar);
float scalarOfDecibels(float decibels);
float gainOfScalar(float scalar);

} // namespace kvxplatform::hal
