// The playback session: the device, the meter, the keys and the end detection, which all play methods share.
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/terminal/keyboard.h"
#include "host/kvx/terminal/progress.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kvx {

/// Measures the output of a device. The device must outlive the meter.
class Meter {
public:
    explicit Meter(KVXDeviceID device); ///< [main]
    ~Meter();
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;

    /// The highest magnitude since the last call: 1 is full scale, 0 is silence.
    /// [main]
    float takePeak() { return peak_.exchange(0.0f, std::memory_order_relaxed); }

    /// The number of frames rendered since construction, in completed slices.
    /// [any]
    std::uint64_t frames() const { return frames_.load(std::memory_order_relaxed); }

private:
    static void measure(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels);

    KVXDeviceID device_;
    std::atomic<float> peak_{0.0f};
    std::atomic<std::uint64_t> frames_{0};
};

/// The number of device frames to which `fileFrames` frames of a file render, rounded to the nearest number.
/// The sample rates are in Hz; `rate` is the factor that the file player applies.
std::uint64_t framesRendered(std::uint64_t fileFrames, double fileRate, double rate, double deviceRate);

/// A time in device frames, rounded up. A time computed from a whole number of frames yields that number.
std::uint64_t framesOf(double seconds, double deviceRate);

/// End-of-playback detection: detects when the device has played the last sound of a file. The caller polls
/// the detector.
/// [main]
class EndDetector {
public:
    /// The player has not reached the last frame of the file, or loops, or is paused.
    void reset() { isEndSeen_ = false; }

    /// The player has reached the last frame of the file. `frames` is the number of frames that the device
    /// has rendered so far, `remaining` the number of frames that it must render after the first such call.
    /// Returns  whether playback has ended.
    bool hasEnded(std::uint64_t frames, std::uint64_t remaining);

private:
    std::uint64_t endSeenAt_ = 0;
    bool isEndSeen_ = false;
};

/// The functions that a play method provides to Session::poll(). A method without keys provides only
/// `status`.
/// [main]
struct Transport {
    std::function<std::string()> status; ///< returns the text of the live line
    std::function<void(Key)> press;      ///< applies a key other than Key::quit
    std::function<bool()> isPlaying;     ///< returns whether the player is playing
    std::function<void()> pause;         ///< called before Ctrl-Z stops the process
    std::function<void()> play;          ///< called when the process continues
};

/// The device, the keys and the live line during playback.
/// [main]
class Session {
public:
    Session(const KVXDeviceInfo& device, bool isStepped, Progress& progress);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Read keys from now on, and print `help`, or the reason why no keys can be read. No effect with a
    /// stepped device.
    void enableKeys(const char* help);

    /// Apply keys, update the live line, and let the device play: `frames` as for passTime().
    /// Returns  false after the user quits or interrupts.
    /// Errors   throws Failure if the device dies.
    bool poll(const Transport& transport, std::uint64_t frames = longestStep);

    const KVXDeviceInfo& device() const { return device_; } ///< state of the device when the session began
    bool isStepped() const { return isStepped_; }
    Progress& progress() { return progress_; }
    Meter& meter() { return meter_; }

private:
    void applyKeys(const Transport& transport);
    void stopWithProcess(const Transport& transport);

    const KVXDeviceInfo device_;
    const bool isStepped_;
    Progress& progress_;
    Meter meter_;
    std::optional<Keyboard> keyboard_;
    bool isQuit_ = false;
};

/// Print that the sound had gaps, because the file could not be read fast enough. The exit code is unchanged.
/// [main]
void printGap();

} // namespace kvx
