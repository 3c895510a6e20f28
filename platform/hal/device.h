// A device of the platform, as a plain record.
//
// Its fields are grouped by the lock that guards them. An I/O cycle takes no lock but cycleLock: other
// threads pass values to it in atomic words and published records, which the next cycle reads.
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

/// What runs the I/O cycles of a device.
enum class Driver { timer, steps, hardware };

struct HardwareStream;

struct Device {
    // ---- never changes once the device is listed ----
    AudioObjectID id = 0;
    AudioObjectID outputStream = 0; ///< 0: the device has no output
    AudioObjectID inputStream = 0;
    std::string name, manufacturer, uid;
    UInt32 transport = 0;
    bool isSimulated = false;
    bool isOfServer = false; ///< ends together with the JACK server

    // ---- under propertyLock ----
    Settings settings;
    bool isAlive = true;
    bool isListed = true; ///< false: unplugged, kept until its last procedure is removed
    bool isMuted = false;
    std::vector<Level> outputLevels;
    SInt32 hogOwner = -1;
    UInt32 outputSource = 'spkr';
    std::vector<double> rates; ///< on offer; empty: every rate of a simulated device
    bool ratesAreKnown = true;

    // ---- under `control` ----
    std::mutex control; ///< serialises start, stop and new settings; never held during a wait for a procedure
    std::shared_ptr<HardwareStream> hardware; ///< shared with a thread that closes it
    Settings applied;                         ///< the settings of `buffers`
    bool hasTimerThread = false;

    std::mutex finishing; ///< held while a capture is finished, so that a second caller waits for its file

    // ---- under `cycleLock`: the state of the cycles ----
    std::mutex cycleLock; ///< held by the thread that runs cycles; contended only when the driver changes
    std::array<Glide, mostChannels> glides; ///< of each output channel's gain
    UInt32 glidingChannels = 0;             ///< output channels of the latest cycle
    double sampleTime = 0;
    double stepDebt = 0; ///< frames of elapsed time that a stepped device has not yet run

    // ---- published to the cycles; writers hold `control` ----
    RenderScope scope; ///< of the thread that runs cycles
    ProcList procs{scope};
    Published<CycleBuffers> buffers;
    Published<const OutputSinks> sinks; ///< null: none
    std::array<std::atomic<float>, mostChannels> targetGains;
    std::atomic<Driver> driver{Driver::timer};
    std::atomic<bool> isDiscarding{false}; ///< dead or unplugged: cycles run, but their output is discarded

    // ---- published by the cycles ----
    std::atomic<const IOProc*> called{nullptr};  ///< the procedure in progress
    std::atomic<std::int64_t> lastCycleNanos{0}; ///< start of the latest cycle, on the host clock

    // ---- any thread ----
    std::atomic<int> starts{0};             ///< started procedures, and starts without a procedure
    std::atomic<int> startsWithoutProc{0};  ///< the latter only
    std::atomic<bool> hasJustStarted{true}; ///< the device was silent: the first cycle does not glide
    std::atomic<OSStatus> startRefusal{noErr};
    std::atomic<bool> mustEnd{false}; ///< the timer thread shall end
    Signal timerWake;
    std::atomic<bool> hasNewRunningState{false}; ///< the housekeeper shall notify listeners
    std::atomic<bool> hasRemovedProcs{false};    ///< the housekeeper shall free them
    std::atomic<bool> mustApply{false};          ///< the housekeeper shall apply settings of a cycle

    bool isRunning() const { return starts > 0; }
};

using DeviceRef = std::shared_ptr<Device>;

/// Guards what properties report: the device list, and the settings of every device. Held for reads and
/// changes of plain values only; no other lock is taken and no callback called under it.
inline std::mutex propertyLock;

} // namespace kvxplatform::hal
