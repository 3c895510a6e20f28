// The library's class of the file player, as this program uses it.
#pragma once

#include "host/kvx/library/core_audio.h"
#include "host/kvx/play/end_rule.h"
#include "host/kvx/play/equaliser_curve.h"
#include "host/runtime/host.h"

#include <functional>
#include <string>
#include <vector>

namespace kvx {

/// Which unit changes time and pitch.
enum class RateUnit {
    timePitch = 1, ///< rate and pitch apart
    varispeed = 2, ///< both together, as a tape does: one value, the last write wins
};

/// What each setting takes.
struct Range {
    double low, high;
    bool holds(double value) const { return value >= low && value <= high; }
};
Range rateRange(RateUnit unit);             ///< in steps of a hundredth
constexpr Range pitchRange = {-2400, 2400}; // cents
constexpr Range volumeRange = {0, 1};
constexpr Range panRange = {-1, 1};

constexpr int mostChannels = 64; // that the units take

/// What a user can do, in the command that is at work.
struct Advice {
    const char* whenNotLoaded;
    const char* whenNotStarted; ///< null: it is never started
};

/// One object, for one file.
///
/// Units   seconds of the file, factors, cents; positions are of what goes in, ahead of what is heard.
/// Thread  [main]
/// Errors  Failure where the platform refuses: what, its status in words, and the advice where there is one.
///         What the library raises passes through as host::HostException.
class FilePlayer {
public:
    FilePlayer(host::Host& host, const CoreAudio& core, const Advice& advice);
    ~FilePlayer(); ///< stops it
    FilePlayer(const FilePlayer&) = delete;
    FilePlayer& operator=(const FilePlayer&) = delete;

    // ---- before the load ----

    void chooseRateUnit(RateUnit unit);

    /// Decode the whole file into memory, in `channels` channels, and build the units.
    void load(const std::string& path, int channels);

    /// The same off the main thread; `turn` runs again and again meanwhile, on this one.
    void loadInBackground(const std::string& path, int channels, const std::function<void()>& turn);

    // ---- what was loaded ----

    std::string clientFormat() const;
    std::string outputFormat() const;
    double sampleRate() const;
    int channels() const;
    double duration() const;

    /// True when all `frames` frames of the file were decoded. Moves the position to the start.
    bool holdsAll(std::int64_t frames);

    // ---- sound ----

    void play();
    void pause();
    bool isPlaying() const;

    double position() const;
    void seek(double seconds); ///< to the nearest frame of the file
    bool isAtEnd() const;      ///< the last frame has gone in

    double level() const; ///< average power, decibels

    // ---- settings ----

    void setDevice(ObjectID device);
    double volume() const;
    void setVolume(double volume);
    void setPan(double pan);

    /// What is in force: with varispeed, what the last write of rate or pitch made of both.
    double rate() const;
    double pitch() const;
    Range rates() const { return rateRange(rateUnit()); }
    void setRate(double rate); ///< rounded to the nearest hundredth
    void setPitch(double cents);

    void setGains(const Gains& gains);
    void setChannelMap(const std::vector<int>& channels);

    // ---- loop ----

    double loopIn() const;           ///< 0 when unset, too
    double loopOut() const;          ///< likewise
    void setLoopIn(double seconds);  ///< at the nearest frame
    void setLoopOut(double seconds); ///< likewise
    bool isLooping() const;
    void setLooping(bool isOn); ///< on has no effect without both points

    Delay delay() const;

    /// The first status that a unit kept from rendering; 0 when all is well. Asking clears it.
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
