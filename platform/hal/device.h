// An audio device of the platform, as a plain structure.
//
// The fields are grouped by the mutex that guards them. An I/O cycle locks no mutex except `cycleLock`: other
// threads pass values to the cycle in atomic variables and published objects, which the next cycle reads.
#pragma once

#include "platform/hal/cycle_buffers.h"
#include "platform/hal/levels.h"
#include "platform/hal/output_sinks.h"
#include "platform/hal/proc_list.h"
#include "platform/hal/signal.h"
#include "platform/support/published.h"
#include "platform/support/render_scope.h"

#include <CoreAudio/CoreAudio.h>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kvxplatform::hal {

/// The driver of a device: the thread or caller that runs the device's I/O cycles.
enum class Driver { timer, steps, hardware };

struct HardwareStream;

struct Device {
    // ---- constant after the device is added to the device list ----
    AudioObjectID id = 0;
    AudioObjectID outputStream = 0; ///< ID of the output stream; 0 if the device has no output
    AudioObjectID inputStream = 0;
    std::string name, manufacturer, uid;
    std::string system; ///< short name of the sound system, such as "JACK"
    UInt32 transport = 0;
    bool isSimulated = false;
    bool isOfServer = false; ///< whether the device ends together with the JACK server

    // ---- guarded by propertyLock ----
    Settings settings;
    bool isAlive = true;
    /// False if the device is unplugged and is kept until its last procedure is removed.
    bool isListed = true;
    bool isMuted = false;
    std::vector<Level> outputLevels;
    SInt32 hogOwner = -1;
    UInt32 outputSource = 'spkr';
    /// Supported sample rates; an empty list on a simulated device means every rate.
    std::vector<double> rates;
    bool ratesAreKnown = true;

    // ---- guarded by `control` ----

    /// Mutex that serialises start, stop and new settings; not held during a wait for a procedure's call.
    std::mutex control;
    /// The open hardware stream, shared with a thread that closes it.
    std::shared_ptr<HardwareStream> hardware;
    Settings applied; ///< settings for which `buffers` are allocated
    bool hasTimerThread = false;

    /// Mutex, held while a capture is finished, so a second caller returns only after the file is complete.
    std::mutex finishing;

    // ---- guarded by `cycleLock`: the state of the I/O cycles ----
    std::mutex cycleLock; ///< mutex of the thread that runs cycles; contended only during a change of driver
    std::array<Glide, mostChannels> glides; ///< gain of each output channel
    UInt32 glidingChannels = 0;             ///< number of output channels in the latest cycle
    double sampleTime = 0;
    double stepDebt = 0; ///< elapsed time of a stepped device, in frames, that no cycle has run yet

    // ---- published to the I/O cycles; a thread that writes holds `control` ----
    RenderScope scope; ///< render scope of the thread that runs cycles
    ProcList procs{scope};
    Published<CycleBuffers> buffers;
    Published<const OutputSinks> sinks; ///< tap and captures; null before the first
    std::array<std::atomic<float>, mostChannels> targetGains;
    std::atomic<Driver> driver{Driver::timer};
    /// Whether the device is dead or unplugged, so that its cycles run but their output is discarded.
    std::atomic<bool> isDiscarding{false};

    // ---- published by the I/O cycles ----
    std::atomic<const IOProc*> called{nullptr};  ///< procedure whose call is in progress
    std::atomic<std::int64_t> lastCycleNanos{0}; ///< start time of the latest cycle, on the host clock

    // ---- read and written by any thread ----
    std::atomic<int> starts{0};            ///< number of started procedures plus `startsWithoutProc`
    std::atomic<int> startsWithoutProc{0}; ///< number of starts of the device itself, without a procedure
    /// Whether the device was silent until now, so that the gains do not glide in the first cycle.
    std::atomic<bool> hasJustStarted{true};
    std::atomic<OSStatus> startRefusal{noErr};
    std::atomic<bool> mustEnd{false}; ///< request to the timer thread to end
    Signal timerWake;
    /// Request to the housekeeper thread to notify listeners of a start or stop.
    std::atomic<bool> hasNewRunningState{false};
    /// Request to the housekeeper thread to free removed procedures.
    std::atomic<bool> hasRemovedProcs{false};
    /// Request to the housekeeper thread to apply settings that changed inside a cycle.
    std::atomic<bool> mustApply{false};

    bool isRunning() const { return starts > 0; }
};

using DeviceRef = std::shared_ptr<Device>;

/// Guards all values that properties report: the device list and the settings of every device. It is held
/// only while plain values are read or changed; the holder locks no other mutex and calls no callback.
inline std::mutex propertyLock;

} // namespace kvxplatform::hal
