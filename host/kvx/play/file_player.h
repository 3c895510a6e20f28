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

/// The unit that changes rate and pitch; the values are those of the class.
enum class RateUnit {
    timePitch = 1, ///< changes rate and pitch independently
    varispeed = 2, ///< changes rate and pitch together: each write of one also sets the other
};

/// The accepted values of a setting.
struct Range {
    double low, high;
    bool holds(double value) const { return value >= low && value <= high; }
};
Range rateRange(RateUnit unit);             ///< range of the rate, a factor
constexpr Range pitchRange = {-2400, 2400}; // cents
constexpr Range volumeRange = {0, 1};
constexpr Range panRange = {-1, 1};

constexpr int mostChannels = 64; // highest number of channels that the units accept

/// Delay between the position of a player and the audible sound, in seconds.
struct Delay {
    double latency = 0; ///< delay of the units
    double tail = 0;    ///< decay of the units after the last frame of the file
    double device = 0;  ///< delay of the device
};

/// Restore a rate that the class has rounded to single precision: the nearest hundredth, if it rounds to the
/// same value, otherwise the rate unchanged.
double undoSinglePrecision(double rate);

/// Ends of error messages, which name the next step for the user.
struct Advice {
    const char* whenNotLoaded;  ///< next step if a file cannot be loaded
    const char* whenNotStarted; ///< next step if the player does not start; null in a command that only loads
};

/// A player of one file. A position is the next frame that the player renders; the audible sound follows
/// after delay().
/// Units   seconds of the file, factors, cents.
/// Errors  throws Failure if the platform refuses a call, and host::HostException for an exception of the
///         library.
/// [main]
class FilePlayer {
public:
    FilePlayer(host::Host& host, const CoreAudio& core, const Advice& advice);
    ~FilePlayer(); ///< stops the player
    FilePlayer(const FilePlayer&) = delete;
    FilePlayer& operator=(const FilePlayer&) = delete;

    // ---- before the load ----

    void chooseRateUnit(RateUnit unit);

    /// Decode the whole file into memory, in `channels` channels, and build the units.
    void load(const std::string& path, int channels);

    /// Load on a background thread. `whileLoading` runs repeatedly on the calling thread until the end.
    void loadInBackground(const std::string& path, int channels, const std::function<void()>& whileLoading);

    // ---- the loaded file ----

    std::string clientFormat() const;
    std::string outputFormat() const;
    double sampleRate() const;
    int channels() const;
    double duration() const;

    /// Whether the player contains exactly `frames` frames. Moves the position to the start.
    bool holdsAll(std::int64_t frames);

    // ---- transport ----

    void play();
    void pause();
    bool isPlaying() const;

    double position() const;
    void seek(double seconds); ///< moves to the nearest frame
    bool isAtEnd() const;      ///< whether the position is past the last frame

    double level() const; ///< average power in decibels

    // ---- settings ----

    void setDevice(ObjectID device);
    double volume() const;
    void setVolume(double volume);
    void setPan(double pan);

    /// The present rate and pitch. With varispeed, a write of one of them also changes the other.
    double rate() const;
    double pitch() const;
    Range rates() const { return rateRange(rateUnit()); }
    void setRate(double rate); ///< rounds to the nearest hundredth
    void setPitch(double cents);

    void setGains(const Gains& gains);
    void setChannelMap(const std::vector<int>& channels);

    // ---- loop ----

    double loopIn() const;           ///< loop start; 0 if unset
    double loopOut() const;          ///< loop end; 0 if unset
    void setLoopIn(double seconds);  ///< sets the loop start to the nearest frame
    void setLoopOut(double seconds); ///< sets the loop end to the nearest frame
    bool isLooping() const;
    void setLooping(bool isOn); ///< looping has no effect unless both loop points are set

    Delay delay() const; ///< total delay of all units

    /// The first render error that a unit reports; 0 without an error. Reading clears the error.
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
