#include "host/kvx/play/file_play.h"

#include "host/kvx/files/file_failure.h"
#include "host/kvx/play/end_rule.h"
#include "host/kvx/play/player_keys.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/meter.h"
#include "host/kvx/terminal/status_line.h"
#include "host/kvx/terminal/terminal.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>

namespace kvx {
namespace {

constexpr Advice advice = {"`kvx play --buffered` plays files from the disk",
                           "choose another with --device (see `kvx devices`)"};

// The same for every file.
struct Session {
    host::Host& host;
    const CoreAudio& core;
    const PlayerOptions& options;
    const KVXDeviceInfo& device;
    bool isStepped;
    Progress& progress;
    KeyTerminal* keys; // null: none can be read
};

// One loaded file.
struct Track {
    Track(const Session& session, const ProgrammeFile& of)
        : file(of), channels(channelsToLoad(of.format.fileChannels, int(session.device.outputChannels))),
          player(session.host, session.core, advice)
    {
    }

    const ProgrammeFile& file;
    int channels;
    FilePlayer player;
    EndRule end;
};

void announce(Progress& progress, const Track& track)
{
    progress.say(printAnnouncement(track.file));
    if (track.file.format.fileChannels > track.channels)
        progress.say(fmt::format("  Of its {} channels the first {} are heard.",
                                 track.file.format.fileChannels,
                                 track.channels == 2 ? "two" : std::to_string(track.channels)));
}

PlayStatus statusOf(const FilePlayer& player, const std::string& note)
{
    PlayStatus status;
    status.position = player.position();
    status.duration = player.duration();
    status.level = player.level();
    status.isPaused = !player.isPlaying();
    status.rate = player.rate();
    status.pitch = player.pitch();
    status.volume = player.volume();
    status.loopIn = player.loopIn();
    status.loopOut = player.loopOut();
    status.isLooping = player.isLooping();
    status.note = note;
    return status;
}

// Ctrl-Z: the device rests while the process does.
void stopWithTheProcess(const Session& session, FilePlayer& player)
{
    const bool wasPlaying = player.isPlaying();
    player.pause();
    session.progress.leaveLine();
    std::fflush(stdout);
    session.keys->stopProcess();
    if (wasPlaying && !isInterrupted()) player.play();
}

// Plays files one after the other. The next file is loaded while the current one plays, and starts as soon as
// the current one has ended.
class PlaylistPlayer {
public:
    PlaylistPlayer(const Session& session, const std::vector<ProgrammeFile>& files)
        : session_(session), files_(files), meter_(session.device.device)
    {
    }

    bool hasOutput() const { return meter_.frames() > 0; }

    /// To the end of the last file, or until the user quits or interrupts.
    void run()
    {
        loadNext();
        if (loadError_) std::rethrow_exception(loadError_);
        if (isInterrupted()) return;
        startNext();
        do {
            if (!former_ && !next_ && loadedCount_ < files_.size()) loadNext();
        } while (advance());
        current_->player.pause();
    }

private:
    /// Without a file that plays, the user sees the load; else keys and the status line go on. A stepped
    /// device stands still during the load.
    void loadNext()
    {
        try {
            auto track = std::make_unique<Track>(session_, files_[loadedCount_]);
            std::function<void()> whileLoading;
            if (current_ && !session_.isStepped)
                whileLoading = [this] {
                    if (!advance()) current_->player.pause();
                };
            loadFile(track->player, track->file, track->channels, session_.options, session_.progress,
                     whileLoading);
            track->player.setDevice(session_.device.device);
            applyAfterLoad(session_.options, track->player);
            next_ = std::move(track);
            if (current_) carrySettings(current_->player, next_->player);
            ++loadedCount_;
        } catch (...) {
            loadError_ = std::current_exception(); // reported after the end of the current file
            loadedCount_ = files_.size();
        }
    }

    /// Starts before the former file's player stops, so that the device never stops in between.
    void startNext()
    {
        next_->player.play();
        former_ = std::move(current_);
        current_ = std::move(next_);
        announce(session_.progress, *current_);
    }

    /// False once nothing more is to be played.
    bool advance()
    {
        if (session_.keys) takeKeys();
        if (isQuit_ || isInterrupted()) return false;
        session_.progress.showLine(printPlayStatus(statusOf(current_->player, note_)));
        passTime(session_.device, session_.isStepped, framesToEnd());
        if (!deviceNow(session_.device).isAlive) throw deviceDied(session_.device);
        return checkEnds();
    }

    void takeKeys()
    {
        if (KeyTerminal::isStopAsked()) {
            former_.reset();
            stopWithTheProcess(session_, current_->player);
        }
        for (Key key : reader_.read(session_.keys->read())) {
            const KeyEffect effect = applyKey(key, current_->player);
            isQuit_ = isQuit_ || effect.isQuit;
            note_ = effect.note;
            if (next_) carrySettings(current_->player, next_->player);
            session_.progress.hurry();
        }
    }

    /// Start the next file if the current one has ended. False after the last sound of the last file.
    bool checkEnds()
    {
        if (next_ && hasEnded(*current_, Until::latency)) startNext();
        if (former_ && hasEnded(*former_, Until::tail)) former_.reset();
        const bool isLast = !next_ && loadedCount_ == files_.size();
        if (!isLast || former_ || !hasEnded(*current_, Until::device)) return true;
        if (loadError_) std::rethrow_exception(loadError_);
        return false;
    }

    // How much after the last frame went in.
    enum class Until {
        latency, ///< the units have rendered the last frame
        tail,    ///< the units are silent
        device,  ///< the device has played everything, its slice under way too
    };

    bool hasEnded(Track& track, Until until)
    {
        // The position of a loop that ends with the file is at the end for a moment.
        if (!track.player.isAtEnd() || track.player.isLooping() || !track.player.isPlaying()) {
            track.end.notAtEnd();
            return false;
        }
        const KVXDeviceInfo device = deviceNow(session_.device);
        const Delay delay = track.player.delay();
        double seconds = delay.latency;
        if (until >= Until::tail) seconds += delay.tail;
        if (until >= Until::device) seconds += delay.device;
        const std::uint64_t slice = until >= Until::device ? device.sliceFrames : 0;
        return track.end.hasEnded(meter_.frames(), framesOf(seconds, device.sampleRate) + slice);
    }

    /// Device frames until the current file ends; a slice after it has ended.
    std::uint64_t framesToEnd() const
    {
        const FilePlayer& player = current_->player;
        if (player.isAtEnd()) return session_.device.sliceFrames;
        const double seconds = (player.duration() - player.position()) / player.rate();
        return framesOf(seconds, session_.device.sampleRate);
    }

    const Session& session_;
    const std::vector<ProgrammeFile>& files_;
    Meter meter_;
    KeyReader reader_;
    std::string note_;
    bool isQuit_ = false;
    std::unique_ptr<Track> former_; // ended, with a tail still audible
    std::unique_ptr<Track> current_;
    std::unique_ptr<Track> next_; // loaded
    std::size_t loadedCount_ = 0;
    std::exception_ptr loadError_;
};

void sayKeys(Progress& progress, const char* whyNot)
{
    progress.say(whyNot ? printNoKeys(whyNot) : keyHelp());
}

void loadInBackground(FilePlayer& player, const std::string& path, int channels, Progress& progress)
{
    const std::string name = asciiText(std::filesystem::path(path).filename().string());
    std::size_t shown = 0;
    player.loadInBackground(path, channels, [&] {
        KVXPlatformDrainMainQueue(0);
        if (progress.showLine(fmt::format("  {} Loading {}", "|/-\\"[shown % 4], name))) ++shown;
    });
    progress.wipe();
}

} // namespace

int channelsToLoad(int fileChannels, int deviceChannels)
{
    return std::max(1, std::min(fileChannels == 1 ? 2 : fileChannels, deviceChannels));
}

std::int64_t loadFile(FilePlayer& player, const ProgrammeFile& file, int channels,
                      const PlayerOptions& options, Progress& progress,
                      const std::function<void()>& whileLoading)
{
    applyBeforeLoad(options, player);
    if (whileLoading)
        player.loadInBackground(file.path, channels, whileLoading);
    else if (options.isInBackground)
        loadInBackground(player, file.path, channels, progress);
    else
        player.load(file.path, channels);
    return framesLoaded(player, file, progress);
}

std::int64_t framesLoaded(FilePlayer& player, const ProgrammeFile& file, Progress& progress)
{
    if (player.holdsAll(file.format.frames)) return file.format.frames;
    progress.warn(damagedPart(file.path));
    return framesThatDecode(file.path);
}

void checkFiles(const std::vector<ProgrammeFile>& files, const PlayerOptions& options,
                const KVXDeviceInfo& device)
{
    const int deviceChannels = int(device.outputChannels);
    for (const ProgrammeFile& file : files)
        checkAgainstFile(options, file.path, file.format.duration(),
                         channelsToLoad(file.format.fileChannels, deviceChannels), deviceChannels);
}

bool playFiles(host::Host& host, const std::vector<ProgrammeFile>& files, const PlayerOptions& options,
               const KVXDeviceInfo& device, bool isStepped, Progress& progress)
{
    const CoreAudio core(host);
    std::optional<KeyTerminal> keys;
    const char* whyNot = KeyTerminal::whyNot();
    if (!isStepped) sayKeys(progress, whyNot);
    if (!isStepped && !whyNot) keys.emplace();

    const Session session = {host, core, options, device, isStepped, progress, keys ? &*keys : nullptr};
    PlaylistPlayer playlist(session, files);
    playlist.run();
    return playlist.hasOutput();
}

} // namespace kvx
