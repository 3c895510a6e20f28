// The file player: the library's class AUPlayerKVX with one function per property and method.
#pragma once

#include "host/kvx/library/core_audio.h"
#include "host/kvx/play/equaliser_curve.h"
#include "host/runtime/host.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kvx {

/// The unit that changes rate and pitch; the numbers are those of the property TimePitchUnit of the class.
enum class RateUnit {
    timePitch = 1, ///< changes rate and pitch independently
    varispeed =
        2, ///< changes rate and pitch together: a write of the rate also sets the pitch, and vice versa
};

/// The range of values that a setting accepts, with both limits.
struct Range {
    double low, high;
    bool holds(double value) const { return value >= low && value <= high; }
};
Range rateRange(RateUnit unit);             ///< the range of the rate, which is a factor
constexpr Range pitchRange = {-2400, 2400}; // cents
constexpr Range volumeRange = {0, 1};
constexpr Range panRange = {-1, 1};

constexpr int mostChannels = 64; // highest number of channels that the units accept

/// Delays between the position of a player and the audible sound, in seconds.
struct Delay {
    double latency = 0; ///< total delay of all units: input that they have pulled ahead
    double tail = 0;    ///< time in which the units decay to silence after the last frame of the file
    double device = 0;  ///< delay of the device, as the output unit reports it
};

/// Restore a rate that the class has rounded to single precision.
/// Returns  the nearest hundredth if rounding the hundredth gives the same value; otherwise `rate`.
double undoSinglePrecision(double rate);

/// The next steps that end the error messages of a file player.
struct Advice {
    const char* whenNotLoaded;  ///< next step if a file cannot be loaded
    const char* whenNotStarted; ///< next step if the player does not start; null in a command that only loads
};
constexpr const char* checkFileAndMemory =
    "check that the file is complete and that there is enough free memory";

/// Plays one file. The position is the time of the next frame that the player renders; the frame becomes
/// audible after delay().
/// Units   seconds of the file, factors, cents.
/// Errors  throws Failure if the platform refuses a call, and host::HostException if the library raises an
///         exception.
/// [main]
class FilePlayer {
public:
    FilePlayer(host::Host& host, const CoreAudio& core, const Advice& advice);
    ~FilePlayer(); ///< the destructor stops the player
    FilePlayer(const FilePlayer&) = delete;
    FilePlayer& operator=(const FilePlayer&) = delete;

    // ---- functions to call before or for the load ----

    void chooseRateUnit(RateUnit unit);

    /// Decode the whole file into memory, in `channels` channels, and build the units.
    void load(const std::string& path, int channels);

    /// Load the file on a background thread. The calling thread runs `whileLoading` repeatedly until the load
    /// has ended.
    void loadInBackground(const std::string& path, int channels, const std::function<void()>& whileLoading);

    // ---- the loaded file ----

    std::string clientFormat() const;
    std::string outputFormat() const;
    double sampleRate() const;
    int channels() const;
    double duration() const;

    /// Check whether the player has loaded exactly `frames` frames. Also moves the position to the start.
    bool holdsAll(std::int64_t frames);

    // ---- transport ----

    void play();
    void pause();
    bool isPlaying() const;

    double position() const;

    /// Returns  the position of the frame that the units output now, but not less than the start of a loop
    ///          that plays. After a stop it is position(), because the next start discards the input that was
    ///          pulled ahead.
    double audiblePosition() const;

    void seek(double seconds); ///< moves the position to the nearest frame
    bool isAtEnd() const;      ///< whether the position is past the last frame

    // ---- settings ----

    void setDevice(ObjectID device);
    double volume() const;
    void setVolume(double volume);
    void setPan(double pan);

    /// The present rate and pitch. With varispeed, a write of either also changes the other.
    double rate() const;
    double pitch() const;
    Range rates() const { return rateRange(rateUnit()); }
    void setRate(double rate); ///< sets the rate to the nearest hundredth
    void setPitch(double cents);

    void setGains(const Gains& gains);
    void setChannelMap(const std::vector<int>& channels);

    // ---- loop ----

    double loopIn() const;           ///< loop start; 0 if unset
    double loopOut() const;          ///< loop end; 0 if unset
    void setLoopIn(double seconds);  ///< sets the loop start to the nearest frame
    void setLoopOut(double seconds); ///< sets the loop end to the nearest frame
    bool isLooping() const;
    void setLooping(
        bool isOn); ///< switches looping on or off; looping has no effect unless both loop points are set

    Delay delay() const; ///< the present delays: the sum of all units, and the device

    /// Read and clear the render errors of all units.
    /// Returns  the first error; 0 if no unit reports an error.
    Status renderError() const;

private:
    RateUnit rateUnit() const;
    double nearestFrame(double seconds) const;
    Status lastError() const;
    void check(const char* what) const;
    void write(const char* property, const host::Value& value, const char* what);
    void loadWith(const char* method, const std::string& path, int channels);
    double unitSeconds(const char* unit, std::uint32_t property) const;

    host::Host& host_;
    const CoreAudio& core_;
    Advice advice_;
    host::Object object_;
};

} // namespace kvx
