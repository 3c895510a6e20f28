// The demonstration of `kvx devices --watch --demo`, which adds, changes and removes simulated devices.
#pragma once

#include "host/kvx/library/core_audio.h"

#include <KVXPlatform/KVXPlatform.h>

#include <chrono>

namespace kvx {

/// Adds a simulated device, changes it in several steps and removes it, then repeats this with a new device.
/// The platform's control functions add and remove the device; the library changes it.
// All functions: [main].
class Demo {
public:
    Demo(host::Host& host, const CoreAudio& core, double secondsPerStep);
    ~Demo(); ///< the destructor removes the device that exists at this time
    Demo(const Demo&) = delete;
    Demo& operator=(const Demo&) = delete;

    /// Run the next step if its time has come. Each step makes one change that a Watch reports.
    /// Returns  whether a step ran.
    /// Errors   throws Failure.
    bool stepIfDue();

private:
    using Clock = std::chrono::steady_clock;

    void add();
    void start();
    void stop();
    void kill();
    void remove();
    void write(const PropertyAddress& address, const std::string& bytes);

    host::Host& host_;
    const CoreAudio& core_;
    Clock::duration pause_;
    Clock::time_point next_;
    std::size_t step_ = 0;
    std::size_t deviceCount_ = 0; ///< number of simulated devices added so far
    KVXDeviceID device_ = 0;      ///< ID of the simulated device that exists now; 0: none
    host::Object player_;         ///< player of the library that keeps the device running
};

} // namespace kvx
