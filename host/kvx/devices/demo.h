// A play in which devices come, change and go, for `kvx devices --watch` where nobody plugs real ones.
#pragma once

#include "host/kvx/library/core_audio.h"

#include <KVXPlatform/KVXPlatform.h>

#include <chrono>

namespace kvx {

/// Simulated devices are plugged in and out by the platform's own control; everything else is done through
/// the library, as a host program would do it. One act is a device's life; then the next one begins.
///
/// Thread  [main]
class Demo {
public:
    Demo(host::Host& host, const CoreAudio& core, double secondsPerStep);
    ~Demo(); ///< takes its devices along
    Demo(const Demo&) = delete;
    Demo& operator=(const Demo&) = delete;

    /// Do the next step, if its time has come, and say whether it was done. Each changes something that a
    /// watch sees. Throws Failure when a step does not succeed.
    bool turn();

private:
    using Clock = std::chrono::steady_clock;

    void plugIn();
    void becomeDefault();
    void changeRate();
    void changeSlice();
    void changeVolume();
    void muteOn();
    void muteOff();
    void start();
    void stop();
    void die();
    void unplug();

    void write(const PropertyAddress& address, const std::string& bytes);

    host::Host& host_;
    const CoreAudio& core_;
    Clock::duration pause_;
    Clock::time_point next_;
    std::size_t step_ = 0;
    std::size_t act_ = 0;
    KVXDeviceID device_ = 0;
    host::Object player_;
};

} // namespace kvx
