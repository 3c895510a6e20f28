#include "host/kvx/play/file_play.h"

#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace kvx {
namespace {

constexpr Advice advice = {"`kvx play --buffered` plays files from the disk",
                           "choose another with --device (see `kvx devices`)"};

bool hasLoop(const FilePlayer& player) { return player.loopOut() > player.loopIn(); }

/// Switch looping off if the loop contains no frame, because the player would repeat one position.
void endEmptyLoop(FilePlayer& player)
{
    if (player.isLooping() && !hasLoop(player)) player.setLooping(false);
}

void setLoopInHere(FilePlayer& player)
{
    player.setLoopIn(player.audiblePosition());
    endEmptyLoop(player);
}

void setLoopOutHere(FilePlayer& player)
{
    const double here = player.audiblePosition();
    // Without a loop start, the loop begins at the start of the file, but the class loops only after a write
    // of 0 to LoopIn. This write also moves the loop end if it is not set, so the loop end is written last.
    if (player.loopIn() == 0) player.setLoopIn(0);
    player.setLoopOut(here);
    endEmptyLoop(player);
}

std::string toggleLoop(FilePlayer& player)
{
    if (!player.isLooping() && !hasLoop(player)) return "mark a loop with [ and ] first";
    player.setLooping(!player.isLooping());
    return {};
}

void toggleFileLoop(FilePlayer& player)
{
    const bool isOn = player.isLooping() && player.loopIn() == 0 && player.loopOut() >= player.duration();
    player.setLoopIn(0);
    player.setLoopOut(player.duration());
    player.setLooping(!isOn);
}

constexpr struct {
    Key key;
    void (*apply)(FilePlayer& player);
} keyActions[] = {
    {Key::pause, [](FilePlayer& p) { p.isPlaying() ? p.pause() : p.play(); }},
    {Key::back, [](FilePlayer& p) { p.seek(p.audiblePosition() - seekStep); }},
    {Key::forward, [](FilePlayer& p) { p.seek(p.audiblePosition() + seekStep); }},
    {Key::louder, [](FilePlayer& p) { p.setVolume(stepped(p.volume(), volumeStep, volumeRange)); }},
    {Key::softer, [](FilePlayer& p) { p.setVolume(stepped(p.volume(), -volumeStep, volumeRange)); }},
    {Key::loopIn, setLoopInHere},
    {Key::loopOut, setLoopOutHere},
    {Key::loopFile, toggleFileLoop},
    {Key::faster, [](FilePlayer& p) { p.setRate(stepped(p.rate(), rateStep, p.rates())); }},
    {Key::slower, [](FilePlayer& p) { p.setRate(stepped(p.rate(), -rateStep, p.rates())); }},
    {Key::higher, [](FilePlayer& p) { p.setPitch(stepped(p.pitch(), pitchStep, pitchRange)); }},
    {Key::lower, [](FilePlayer& p) { p.setPitch(stepped(p.pitch(), -pitchStep, pitchRange)); }},
};

/// A file of the playlist, and the player that has loaded this file.
struct Track {
    Track(host::Host& host, const CoreAudio& core, std::size_t number, const PlaylistFile& from,
          int channelCount)
        : index(number), file(from), channels(channelCount), player(host, core, advice)
    {
    }

    std::size_t index; ///< number of the file in the playlist
    const PlaylistFile& file;
    int channels;
    FilePlayer player;
    EndDetector end;
    std::uint64_t firstFrame = 0; ///< number of device frames before the start of the file
};

FilePlaySettings settingsOf(const FilePlayer& p)
{
    return {p.rate(), p.pitch(), p.loopIn(), p.loopOut(), p.isLooping()};
}

/// Plays the files of a playlist in order, up to a file for the buffered player. The next file is loaded
/// while the current file plays, and starts as soon as the current file has ended or the user skips the rest.
class PlaylistPlayer {
public:
    PlaylistPlayer(host::Host& host, const std::vector<PlaylistFile>& files, PlayOrder& order,
                   const PlayerOptions& options, Session& session)
        : host_(host), core_(host), files_(files), order_(order), options_(options), session_(session)
    {
        transport_.keys = allKeys();
        transport_.status = [this] {
            const FilePlayer& p = current_->player;
            const float peak = session_.meter().takePeak();
            return formatPlayStatus(
                {p.audiblePosition(), p.duration(), peak, !p.isPlaying(), p.volume(), note_}, settingsOf(p));
        };
        transport_.press = [this](Key key) {
            note_ = press(key);
            session_.volume().value = current_->player.volume();
            if (next_) copySettings(current_->player, next_->player);
        };
        transport_.isPlaying = [this] { return current_->player.isPlaying(); };
        transport_.pause = [this] {
            former_.reset();
            current_->player.pause();
        };
        transport_.play = [this] { current_->player.play(); };
    }

    /// Play from the file `first` until the end of the last file, a file for the buffered player, or a key or
    /// a signal that ends playback.
    /// Returns  the number of the file for the buffered player; nullopt if playback has ended.
    std::optional<std::size_t> run(std::size_t first)
    {
        wanted_ = first;
        while (!current_) {
            if (!isWantedHere()) return wanted_;
            loadWanted();
            if (isInterrupted()) return std::nullopt;
            if (next_) startNext();
        }
        do {
            // No file is loaded while a former file is audible, so that at most two files are in memory.
            if (!former_ && isWantedHere() && !isWantedLoaded()) loadWanted();
        } while (advance());
        current_->player.pause();
        return session_.isOver() ? std::nullopt : wanted_;
    }

private:
    /// Whether there is a next file, and this player plays it.
    bool isWantedHere() const
    {
        return wanted_ && !isForBufferedPlayer(options_, files_[*wanted_], session_.device());
    }

    bool isWantedLoaded() const { return next_ && wanted_ == next_->index; }

    /// Load the next file. If a file plays in real time, the load uses a background thread, and playback
    /// continues. A stepped device (faster than real time) renders nothing during the load. A file that fails
    /// to load is reported and left out, unless no other file is left.
    void loadWanted()
    {
        const std::size_t index = *wanted_;
        next_.reset();
        try {
            next_ = load(index);
        } catch (const Failure& failure) {
            order_.leaveOut(index);
            if (order_.isEmpty() || !deviceNow(session_.device()).isAlive) throw;
            session_.progress().warnOfSkipped(failure.what());
            if (wanted_ == index) wanted_ = isGoingBack_ ? order_.before(index) : order_.after(index);
            if (!wanted_ && current_) goOn();
        }
    }

    std::unique_ptr<Track> load(std::size_t index)
    {
        const PlaylistFile& file = files_[index];
        const KVXDeviceInfo& device = session_.device();
        auto track = std::make_unique<Track>(
            host_, core_, index, file,
            channelsToLoad(options_, file.format.fileChannels, static_cast<int>(device.outputChannels)));
        std::function<void()> whileLoading;
        if (current_ && !session_.isStepped())
            whileLoading = [this] {
                if (!advance()) current_->player.pause();
            };
        loadFile(track->player, file, track->channels, options_, session_.progress(), whileLoading);
        track->player.setDevice(device.device);
        applyOptions(options_, track->player);
        track->player.setVolume(session_.volume().value);
        if (current_) copySettings(current_->player, track->player);
        return track;
    }

    /// Start the next player before the former player stops, because the device stops without a player.
    void startNext()
    {
        next_->firstFrame = session_.meter().frames();
        next_->player.play();
        former_ = std::move(current_);
        current_ = std::move(next_);
        if (isSkipping_) former_.reset();
        goOn();
        announce(current_->file, current_->channels, session_.progress());
    }

    /// Let the current file play to its end.
    void goOn()
    {
        wanted_ = order_.after(current_->index);
        isSkipping_ = isGoingBack_ = false;
    }

    /// Returns  the reason why the key had no effect; "" if it had an effect.
    std::string press(Key key)
    {
        FilePlayer& player = current_->player;
        if (key == Key::next) return skipTo(order_.after(isSkipping_ ? *wanted_ : current_->index), false);
        if (key == Key::previous) {
            const auto before = order_.before(isSkipping_ ? *wanted_ : current_->index);
            if (before && player.position() < restartSeconds) return skipTo(before, true);
            player.seek(0);
        } else if (key == Key::mute) {
            session_.volume().toggleMute();
            player.setVolume(session_.volume().value);
        } else {
            return applyKey(key, player);
        }
        return {};
    }

    std::string skipTo(std::optional<std::size_t> file, bool isBack)
    {
        if (!file) return lastFileNote;
        wanted_ = file;
        isSkipping_ = true;
        isGoingBack_ = isBack;
        return {};
    }

    /// Poll the session, and start the next file if it is due.
    /// Returns  false after the end of playback.
    bool advance() { return session_.poll(transport_, framesToEnd()) && checkEnds(); }

    /// Start the next file if the current file has ended or is skipped, and release a player whose tail has
    /// ended.
    /// Returns  false after the last sound of the last file, or on a skip to a file for the buffered player.
    bool checkEnds()
    {
        if (framesToLimit() == 0) endAtLimit();
        if (isWantedLoaded() && (isSkipping_ || hasEnded(*current_, Until::latency))) startNext();
        if (former_ && hasEnded(*former_, Until::tail)) former_.reset();
        if (isWantedHere()) return true;
        return !isSkipping_ && (former_ || !hasEnded(*current_, Until::device));
    }

    /// Moments after a player has reached the last frame of its file, in order of time.
    enum class Until {
        latency, ///< the units have rendered the last frame
        tail,    ///< the units have decayed to silence
        device,  ///< the device has played all frames, including those of its current slice
    };

    /// Whether the moment `until` of a file has passed.
    bool hasEnded(Track& track, Until until)
    {
        // A player that loops at the end of the file does not end there.
        if (!track.player.isAtEnd() || track.player.isLooping() || !track.player.isPlaying()) {
            track.end.reset();
            return false;
        }
        const KVXDeviceInfo device = deviceNow(session_.device());
        const Delay delay = track.player.delay();
        double seconds = delay.latency;
        if (until >= Until::tail) seconds += delay.tail;
        if (until >= Until::device) seconds += delay.device;
        const std::uint64_t slice = until >= Until::device ? device.sliceFrames : 0;
        return track.end.hasEnded(session_.meter().frames(), framesOf(seconds, device.sampleRate) + slice);
    }

    /// Skip the rest of the current file, and the tail of the former file.
    void endAtLimit()
    {
        former_.reset();
        isSkipping_ = true;
    }

    /// The number of device frames until the current file has played for the longest duration.
    std::uint64_t framesToLimit() const
    {
        if (!options_.duration) return UINT64_MAX;
        const std::uint64_t played = session_.meter().frames() - current_->firstFrame;
        const std::uint64_t longest = framesOf(*options_.duration, session_.device().sampleRate);
        return longest - std::min(longest, played);
    }

    /// The number of device frames until the current file ends; one slice if the file has ended. At most
    /// framesToLimit().
    std::uint64_t framesToEnd() const
    {
        const FilePlayer& player = current_->player;
        if (player.isAtEnd()) return std::min<std::uint64_t>(session_.device().sliceFrames, framesToLimit());
        const double seconds = (player.duration() - player.position()) / player.rate();
        return std::min(framesOf(seconds, session_.device().sampleRate), framesToLimit());
    }

    host::Host& host_;
    const CoreAudio core_;
    const std::vector<PlaylistFile>& files_;
    PlayOrder& order_;
    const PlayerOptions& options_;
    Session& session_;
    Transport transport_;
    std::string note_;                  // for the live line: the reason why the last key had no effect, or ""
    std::unique_ptr<Track> former_;     // a file that has ended, and whose tail is still audible; may be null
    std::unique_ptr<Track> current_;    // the file that plays
    std::unique_ptr<Track> next_;       // a loaded file that has not started; may be null
    std::optional<std::size_t> wanted_; // number of the next file; nullopt after the last file
    bool isSkipping_ = false;           // whether the next file starts before the current file has ended
    bool isGoingBack_ = false;          // whether the next file precedes the current file
};

} // namespace

double stepped(double value, double step, const Range& range)
{
    const double moved = value + step;
    const double onGrid = std::round(moved / step) * step;
    return std::clamp(std::fabs(moved - onGrid) < std::fabs(step) * 1e-3 ? onGrid : moved, range.low,
                      range.high);
}

std::string applyKey(Key key, FilePlayer& player)
{
    if (key == Key::loop) return toggleLoop(player);
    for (const auto& each : keyActions)
        if (each.key == key) each.apply(player);
    return {};
}

void copySettings(const FilePlayer& from, FilePlayer& to)
{
    to.setVolume(from.volume());
    to.setRate(from.rate());
    to.setPitch(from.pitch()); // with varispeed, the pitch sets the same value as the rate, but more exactly
}

bool isForBufferedPlayer(const PlayerOptions& options, const PlaylistFile& file, const KVXDeviceInfo& device)
{
    const bool needsFilePlayer = options.rate || options.pitch || options.pan || options.loop ||
                                 options.gains || options.channelMap || options.unit != RateUnit::timePitch;
    return !needsFilePlayer && loadedBytes(options, file, device) > mostLoadedBytes;
}

double loadedBytes(const PlayerOptions& options, const PlaylistFile& file, const KVXDeviceInfo& device)
{
    const int channels =
        channelsToLoad(options, file.format.fileChannels, static_cast<int>(device.outputChannels));
    return static_cast<double>(file.format.frames) * channels * sizeof(float);
}

std::optional<std::size_t> playFiles(host::Host& host, const std::vector<PlaylistFile>& files,
                                     std::size_t first, PlayOrder& order, const PlayerOptions& options,
                                     Session& session)
{
    return PlaylistPlayer(host, files, order, options, session).run(first);
}

} // namespace kvx
