#include "host/kvx/file_play.h"

#include "host/kvx/end_rule.h"
#include "host/kvx/interrupt.h"
#include "host/kvx/meter.h"
#include "host/kvx/plain_text.h"
#include "host/kvx/player_keys.h"
#include "host/kvx/status_line.h"
#include "host/kvx/terminal.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>

namespace kvx {
namespace {

constexpr Advice advice = {"`kvx play --buffered` plays files from the disk",
                           "choose another with --device (see `kvx devices`)"};

// What is the same for every file.
struct Session {
    host::Host& host;
    const CoreAudio& core;
    const PlayerOptions& options;
    const KVXDeviceInfo& device;
    bool isStepped;
    Progress& progress;
    KeyTerminal* keys; // null: none can be read
};

void announce(const Session& session, const ProgrammeFile& file, int channels)
{
    session.progress.say(printAnnouncement(file));
    if (file.format.fileChannels > channels)
        session.progress.say(fmt::format("  Of its {} channels the first {} are heard.",
                                         file.format.fileChannels,
                                         channels == 2 ? "two" : std::to_string(channels)));
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

// One file while it sounds.
class Turn {
public:
    Turn(const Session& session, FilePlayer& player)
        : session_(session), player_(player), meter_(session.device.device)
    {
    }

    bool isQuit() const { return isQuit_; }
    bool isHeard() const { return meter_.frames() > 0; }

    /// False once there is nothing more to hear.
    bool turn()
    {
        if (session_.keys) takeKeys();
        if (isQuit_ || isInterrupted() || hasEnded()) return false;
        session_.progress.showLine(printPlayStatus(statusOf(player_, note_)));
        passTime(session_.device, session_.isStepped);
        if (!deviceNow(session_.device).isAlive) throw wentAway(session_.device);
        return true;
    }

private:
    void takeKeys()
    {
        if (KeyTerminal::isStopAsked()) stopWithTheProcess(session_, player_);
        for (Key key : reader_.read(session_.keys->read())) {
            const KeyEffect effect = applyKey(key, player_);
            isQuit_ = isQuit_ || effect.isQuit;
            note_ = effect.note;
            session_.progress.hurry();
        }
    }

    bool hasEnded()
    {
        if (!player_.isAtEnd()) {
            end_.notAtEnd();
            return false;
        }
        const KVXDeviceInfo device = deviceNow(session_.device);
        const Delay delay = player_.delay();
        return end_.hasEnded(meter_.frames(), framesOf(delay.latency + delay.tail, device.sampleRate) +
                                                  device.sliceFrames); // the slice that took the last frame
    }

    const Session& session_;
    FilePlayer& player_;
    Meter meter_;
    KeyReader reader_;
    EndRule end_;
    std::string note_;
    bool isQuit_ = false;
};

struct FileEnd {
    bool isHeard, isQuit;
};

FileEnd playFile(const Session& session, const ProgrammeFile& file)
{
    const int channels = channelsToLoad(file.format.fileChannels, int(session.device.outputChannels));
    FilePlayer player(session.host, session.core, advice);
    loadFile(player, file, channels, session.options, session.progress);
    if (isInterrupted()) return {false, false};
    player.setDevice(session.device.device);
    applyAfterLoad(session.options, player);

    announce(session, file, channels);
    Turn turn(session, player);
    player.play();
    while (turn.turn()) {
    }
    player.pause();
    return {turn.isHeard(), turn.isQuit()};
}

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

void loadFile(FilePlayer& player, const ProgrammeFile& file, int channels, const PlayerOptions& options,
              Progress& progress)
{
    applyBeforeLoad(options, player);
    if (options.isInBackground)
        loadInBackground(player, file.path, channels, progress);
    else
        player.load(file.path, channels);
    if (player.takeFrameCount() < file.format.frames) throw cutShort(file.path);
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
    FileEnd end = {false, false};
    for (const ProgrammeFile& file : files) {
        if (isInterrupted() || end.isQuit) break;
        const FileEnd each = playFile(session, file);
        end = {end.isHeard || each.isHeard, each.isQuit};
    }
    return end.isHeard;
}

} // namespace kvx
