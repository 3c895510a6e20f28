// The playback session, which all play methods share: the device, the level meter, the keys of the user, and
// the detection of the end of playback.
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/terminal/keyboard.h"
#include "host/kvx/terminal/progress.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace kvx {

/// Measures the level and counts the frames of a device's output. The device must outlive the meter.
class Meter {
public:
    explicit Meter(KVXDeviceID device); ///< [main]
    ~Meter();
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;

    /// Return the highest magnitude of a sample since the last call: 1 is full scale, 0 is silence.
    /// [main]
    float takePeak() { return peak_.exchange(0.0f, std::memory_order_relaxed); }

    /// Return the highest magnitude of a sample since construction.
    /// [any]
    float highestPeak() const { return highestPeak_.load(std::memory_order_relaxed); }

    /// Return the number of frames that the device has rendered since construction, in completed slices.
    /// [any]
    std::uint64_t frames() const { return frames_.load(std::memory_order_relaxed); }

private:
    static void measure(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels);

    KVXDeviceID device_;
    std::atomic<float> peak_{0.0f}, highestPeak_{0.0f};
    std::atomic<std::uint64_t> frames_{0};
};

/// The number of device frames to which `fileFrames` frames of a file render, rounded to the nearest number.
/// The sample rates are in Hz; `rate` is the factor that the file player applies.
/// [any]
std::uint64_t framesRendered(std::uint64_t fileFrames, double fileRate, double rate, double deviceRate);

/// Convert a time to device frames, rounded up. A time that was computed from a whole number of frames gives
/// that number again, despite rounding errors.
/// [any]
std::uint64_t framesOf(double seconds, double deviceRate);

/// Detects when the device has played the last sound of a file. The caller calls reset() or hasEnded()
/// repeatedly during playback.
/// [main]
class EndDetector {
public:
    /// Forget the end of the file. Call while the player has not reached the last frame, loops or is paused.
    void reset() { isEndSeen_ = false; }

    /// Call while the player is past the last frame of the file. `frames` is the number of frames that the
    /// device has rendered so far.
    /// Returns  whether the device has rendered `remaining` frames since the first call after reset().
    bool hasEnded(std::uint64_t frames, std::uint64_t remaining);

private:
    std::uint64_t endSeenAt_ = 0;
    bool isEndSeen_ = false;
};

/// The volume that the user sets with keys, as a factor.
/// [main]
struct Volume {
    double value = 1;
    double beforeMute = 1; ///< the volume to which the key that mutes returns

    void toggleMute();
};

/// The callbacks through which Session::poll() controls a player, and the keys that the player applies.
/// [main]
struct Transport {
    std::function<LiveLine()> status; ///< returns the live line
    std::vector<Key> keys;            ///< the keys that the help lists
    std::function<void(Key)> press;   ///< applies a key other than Key::quit and Key::help
    std::function<bool()> isPlaying;  ///< returns whether the player is playing
    std::function<void()> pause;      ///< pauses the player, before Ctrl-Z stops the process
    std::function<void()> play;       ///< continues playback, when the stopped process continues
};

/// Lets the device play, reads keys and shows the live line during playback.
/// [main]
class Session {
public:
    Session(const KVXDeviceInfo& device, bool isStepped, Progress& progress);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Read keys from now on, and print keyHint; if no keys can be read, print the reason. Has no effect if
    /// the device is stepped (runs faster than real time).
    void enableKeys();

    /// Apply the typed keys, update the live line, and let the device play by passTime() with `frames`.
    /// Returns  false after the key that quits, or after a signal of the user.
    /// Errors   throws Failure if the device dies.
    bool poll(const Transport& transport, std::uint64_t frames = longestStep);

    /// Whether a key or a signal of the user has ended playback.
    bool isOver() const;

    const KVXDeviceInfo& device() const { return device_; } ///< the device, as it was when the session began
    bool isStepped() const { return isStepped_; }
    Progress& progress() { return progress_; }
    Meter& meter() { return meter_; }
    Volume& volume() { return volume_; }

private:
    void applyKeys(const Transport& transport);
    void stopWithProcess(const Transport& transport);

    const KVXDeviceInfo device_;
    const bool isStepped_;
    Progress& progress_;
    Meter meter_;
    Volume volume_;
    std::optional<Keyboard> keyboard_;
    bool isQuit_ = false;
};

/// Print that the sound had gaps, because the file could not be read fast enough. The exit code of the
/// command does not change.
/// [main]
void printGap();

} // namespace kvx
