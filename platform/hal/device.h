// A device of the platform, as a plain record.
//
// Its fields stand in groups by who may touch them. The tree's lock (tree.h) guards what properties tell. The
// cycle works on a state of its own, and takes no lock: what others want of it, they publish in atomic words,
// and it takes them up when the next cycle begins. `turnLock` is held by whoever turns the device, around
// each cycle; it is only contended when another driver takes over. `control` serialises starting, stopping
// and reconfiguring; it is never taken in a cycle, nor while a call of a procedure is waited for.
#pragma once

#include "platform/hal/capture.h"
#include "platform/hal/cycle_count.h"
#include "platform/hal/proc_list.h"
#include "platform/hal/signal.h"

#include <CoreAudio/CoreAudio.h>
#include <KVXPlatform/KVXPlatform.h>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kvxplatform::hal {

constexpr double lowestRate = 1000, highestRate = 768000; // Hz, of a simulated device
constexpr UInt32 mostChannels = 64;
constexpr UInt32 smallestSlice = 1, largestSlice = 8192; // frames

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

/// A gain on its way to another in a straight line of as many frames as `glideFrames`, however they are
/// sliced.
constexpr UInt32 glideFrames = 512;
struct Glide {
    float from = 1, to = 1;
    UInt32 framesLeft = 0;

    float now() const
    {
        return to + (from - to) * (static_cast<float>(framesLeft) / static_cast<float>(glideFrames));
    }
};

/// Settings as a cycle uses them, with buffers of their size. Made outside the cycle, and freed outside.
struct Shape {
    explicit Shape(const Settings& ofSettings);

    const Settings settings;
    std::vector<float> mix, scratch, inputSilence;
    Shape* nextSpent = nullptr;
};

/// Where a device's output goes beside the device.
struct Tap {
    KVXOutputTap function;
    void* context;
};

/// Whose wish a capture is. A device has one of each at a time.
enum class CaptureWish { program, environment };
constexpr std::size_t captureWishes = 2;

/// Who turns the cycle.
enum class Driver { timer, steps, hardware };

/// A stream of PortAudio that turns the device.
struct HardwareStream {
    struct Device* device = nullptr;
    UInt32 channels = 0;
    void* stream = nullptr;
    std::int64_t openedNanos = 0;         ///< on the host clock
    std::atomic<bool> isAbandoned{false}; ///< it has stopped answering: never touched again
};

struct Device {
    Device() = default;
    ~Device();

    // ---- never changes ----
    AudioObjectID id = 0;
    AudioObjectID outputStream = 0; ///< 0: no such stream
    AudioObjectID inputStream = 0;
    std::string name, manufacturer, uid;
    UInt32 transport = 0;
    bool isSimulated = false;
    bool isOfServer = false; ///< it ends together with the JACK server

    // ---- under the tree's lock ----
    Settings settings;
    bool isAlive = true;
    bool isListed = true; ///< false: unplugged, kept only until its last procedure has gone
    bool isMuted = false;
    std::vector<Level> outputLevels;
    SInt32 hogOwner = -1;
    UInt32 outputSource = 'spkr';
    std::vector<double> rates; ///< those on offer; empty: any from 1 kHz to 768 kHz
    bool ratesAreKnown = true;

    // ---- under `control` ----
    std::mutex control;
    std::shared_ptr<HardwareStream> hardware; ///< shared with a thread that closes it
    Settings applied; ///< those that the device was last turned with, or is to be turned with next
    bool hasTimerThread = false;
    std::unique_ptr<const Tap> ownedTap;
    std::array<std::shared_ptr<Capture>, captureWishes> ownedCaptures;

    std::mutex finishing; ///< held while a capture is finished, so that a second caller waits for its file

    // ---- the cycle's own, under `turnLock` ----
    std::mutex turnLock;
    std::unique_ptr<Shape> shape;
    std::array<Glide, mostChannels> glides; ///< of each output channel's gain
    double sampleTime = 0;
    double stepDebt = 0; ///< frames of elapsed time that a stepped device still owes

    // ---- published to the cycle ----
    CycleCount cycles;
    ProcList procs{cycles};
    std::atomic<Shape*> nextShape{nullptr}; ///< owned by whoever takes it out
    std::array<std::atomic<float>, mostChannels> targetGains;
    std::atomic<const Tap*> tap{nullptr};
    std::array<std::atomic<Capture*>, captureWishes> captures = {}; ///< null: none
    std::atomic<Driver> driver{Driver::timer};
    std::atomic<bool> isDiscarding{false}; ///< dead or unplugged: turned, but nothing is heard

    // ---- published by the cycle ----
    std::atomic<const IOProc*> called{nullptr};  ///< the procedure that is being called
    std::atomic<Shape*> spentShapes{nullptr};    ///< to be freed
    std::atomic<std::int64_t> lastCycleNanos{0}; ///< when the latest cycle began, on the host clock

    // ---- any thread ----
    std::atomic<int> starts{0};             ///< started procedures, and starts without one
    std::atomic<int> startsWithoutProc{0};  ///< those among them
    std::atomic<bool> hasJustStarted{true}; ///< nothing was heard before: levels need not glide
    std::atomic<OSStatus> startRefusal{noErr};
    std::atomic<bool> mustEnd{false}; ///< the timer's thread shall end
    Signal timerWake;
    std::atomic<bool> hasNewsOfRunning{false}; ///< for the housekeeper, as the next two
    std::atomic<bool> hasRemovedProcs{false};
    std::atomic<bool> mustApply{false}; ///< settings were changed from inside a cycle

    bool isRunning() const { return starts > 0; }
};

using DeviceRef = std::shared_ptr<Device>;

/// The device whose cycle runs on this thread, or null.
extern thread_local Device* turningDevice;

/// Make the cycle work with the settings of now. Takes `control`; in a cycle the housekeeper is asked
/// instead. Hardware that does not open with a new rate or slice keeps the former ones: '!dat'. If it does
/// not open with those either, the device dies: 'what'.
OSStatus applySettings(const DeviceRef& device);

/// Make the cycle glide to the levels of now. [any]
void applyLevels(const DeviceRef& device);

/// The scalar volume as a factor, and the decibels in between: linear in decibels from the lowest volume to 0
/// dB.
constexpr float lowestDecibels = -64;
float decibelsOfScalar(float scalar);
float scalarOfDecibels(float decibels);
float gainOfScalar(float scalar);

} // namespace kvxplatform::hal
