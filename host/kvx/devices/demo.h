// Adds, changes and removes simulated devices, for `kvx devices --watch --demo`.
#pragma once

#include "host/kvx/library/core_audio.h"

#include <KVXPlatform/KVXPlatform.h>

#include <chrono>

namespace kvx {

/// Runs the life of one simulated device after the other, step by step. The platform's control functions add
/// and remove the devices; the library changes them, as in any host program.
/// All functions: [main].
class Demo {
public:
    Demo(host::Host& host, const CoreAudio& core, double secondsPerStep);
    ~Demo(); ///< the destructor removes the present device
    Demo(const Demo&) = delete;
    Demo& operator=(const Demo&) = delete;

    /// Run the next step if its time has come. Each step changes something that a Watch reports.
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
    std::size_t deviceCount_ = 0; ///< number of devices added so far
    KVXDeviceID device_ = 0;      ///< ID of the present device; 0: no device
    host::Object player_;         ///< player that keeps the device running
};

} // namespace kvx
