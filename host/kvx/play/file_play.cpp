#include "host/kvx/play/file_play.h"

#include "host/kvx/terminal/interrupt.h"

#include <algorithm>
#include <cmath>
#include <exception>
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

constexpr struct {
    Key key;
    void (*apply)(FilePlayer& player);
} keyActions[] = {
    {Key::pause, [](FilePlayer& p) { p.isPlaying() ? p.pause() : p.play(); }},
    {Key::back, [](FilePlayer& p) { p.seek(p.position() - seekStep); }},
    {Key::forward, [](FilePlayer& p) { p.seek(p.position() + seekStep); }},
    {Key::louder, [](FilePlayer& p) { p.setVolume(stepped(p.volume(), volumeStep, volumeRange)); }},
    {Key::softer, [](FilePlayer& p) { p.setVolume(stepped(p.volume(), -volumeStep, volumeRange)); }},
    {Key::loopIn, setLoopInHere},
    {Key::loopOut, setLoopOutHere},
    {Key::faster, [](FilePlayer& p) { p.setRate(stepped(p.rate(), rateStep, p.rates())); }},
    {Key::slower, [](FilePlayer& p) { p.setRate(stepped(p.rate(), -rateStep, p.rates())); }},
    {Key::higher, [](FilePlayer& p) { p.setPitch(stepped(p.pitch(), pitchStep, pitchRange)); }},
    {Key::lower, [](FilePlayer& p) { p.setPitch(stepped(p.pitch(), -pitchStep, pitchRange)); }},
};

/// A file of the playlist, and the player that has loaded this file.
struct Track {
    Track(host::Host& host, const CoreAudio& core, const PlaylistFile& from, int channelCount)
        : file(from), channels(channelCount), player(host, core, advice)
    {
    }

    const PlaylistFile& file;
    int channels;
    FilePlayer player;
    EndDetector end;
};

FilePlaySettings settingsOf(const FilePlayer& p)
{
    return {p.rate(), p.pitch(), p.loopIn(), p.loopOut(), p.isLooping()};
}

/// Plays the files of a playlist in order. The next file is loaded while the current file plays, and starts
/// as soon as the current file has ended.
class PlaylistPlayer {
public:
    PlaylistPlayer(host::Host& host, const Playlist& playlist, const PlayerOptions& options, Session& session)
        : host_(host), core_(host), files_(filesOf(playlist)), options_(options), session_(session)
    {
        transport_.status = [this] {
            const FilePlayer& p = current_->player;
            const float peak = session_.meter().takePeak();
            return formatPlayStatus(
                {p.audiblePosition(), p.duration(), peak, !p.isPlaying(), p.volume(), note_}, settingsOf(p));
        };
        transport_.press = [this](Key key) {
            note_ = applyKey(key, current_->player);
            if (next_) copySettings(current_->player, next_->player);
        };
        transport_.isPlaying = [this] { return current_->player.isPlaying(); };
        transport_.pause = [this] {
            former_.reset();
            current_->player.pause();
        };
        transport_.play = [this] { current_->player.play(); };
    }

    /// Play until the end of the last file, or until a key or a signal of the user ends playback.
    void run()
    {
        loadNext();
        if (loadError_) std::rethrow_exception(loadError_);
        if (isInterrupted()) return;
        startNext();
        do {
            // No file is loaded while a former file is audible, so that at most two files are in memory.
            if (!former_ && !next_ && loadedCount_ < files_.size()) loadNext();
        } while (advance());
        current_->player.pause();
    }

private:
    /// Load the next file. If a file plays in real time, the load uses a background thread, and playback
    /// continues. A stepped device (faster than real time) renders nothing during the load.
    void loadNext()
    {
        try {
            const PlaylistFile& file = files_[loadedCount_];
            const KVXDeviceInfo& device = session_.device();
            auto track = std::make_unique<Track>(
                host_, core_, file,
                channelsToLoad(options_, file.format.fileChannels, static_cast<int>(device.outputChannels)));
            std::function<void()> whileLoading;
            if (current_ && !session_.isStepped())
                whileLoading = [this] {
                    if (!advance()) current_->player.pause();
                };
            loadFile(track->player, file, track->channels, options_, session_.progress(), whileLoading);
            track->player.setDevice(device.device);
            applyOptions(options_, track->player);
            next_ = std::move(track);
            if (current_) copySettings(current_->player, next_->player);
            ++loadedCount_;
        } catch (...) {
            loadError_ =
                std::current_exception(); // checkEnds() rethrows the error when the current file has ended
            loadedCount_ = files_.size();
        }
    }

    /// Start the next player before the former player stops, because the device stops without a player.
    void startNext()
    {
        next_->player.play();
        former_ = std::move(current_);
        current_ = std::move(next_);
        announce(current_->file, current_->channels, session_.progress());
    }

    /// Poll the session, and start the next file if it is due.
    /// Returns  false after the end of playback.
    bool advance() { return session_.poll(transport_, framesToEnd()) && checkEnds(); }

    /// Start the next file if the current file has ended, and release a player whose tail has ended.
    /// Returns  false after the last sound of the last file.
    bool checkEnds()
    {
        if (next_ && hasEnded(*current_, Until::latency)) startNext();
        if (former_ && hasEnded(*former_, Until::tail)) former_.reset();
        const bool isLast = !next_ && loadedCount_ == files_.size();
        if (!isLast || former_ || !hasEnded(*current_, Until::device)) return true;
        if (loadError_) std::rethrow_exception(loadError_);
        return false;
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

    /// The number of device frames until the current file ends; one slice if the file has ended.
    std::uint64_t framesToEnd() const
    {
        const FilePlayer& player = current_->player;
        if (player.isAtEnd()) return session_.device().sliceFrames;
        const double seconds = (player.duration() - player.position()) / player.rate();
        return framesOf(seconds, session_.device().sampleRate);
    }

    host::Host& host_;
    const CoreAudio core_;
    const std::vector<PlaylistFile> files_;
    const PlayerOptions& options_;
    Session& session_;
    Transport transport_;
    std::string note_;               // for the live line: the reason why the last key had no effect, or ""
    std::unique_ptr<Track> former_;  // a file that has ended, and whose tail is still audible; may be null
    std::unique_ptr<Track> current_; // the file that plays
    std::unique_ptr<Track> next_;    // a loaded file that has not started; may be null
    std::size_t loadedCount_ = 0;
    std::exception_ptr loadError_;
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

void playFiles(host::Host& host, const Playlist& playlist, const PlayerOptions& options, Session& session)
{
    session.enableKeys(keyHelp());
    PlaylistPlayer(host, playlist, options, session).run();
}

} // namespace kvx
