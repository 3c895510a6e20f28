#include "host/kvx/play/player_options.h"

#include "host/kvx/text/failure.h"
#include "host/kvx/text/number_text.h"
#include "host/kvx/text/terminal_text.h"
#include "host/kvx/text/time_text.h"

#include <fmt/core.h>

#include <KVXPlatform/KVXPlatform.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace kvx {
namespace {

void loadWithProgress(FilePlayer& player, const std::string& path, int channels, Progress& progress)
{
    const std::string name = asciiText(std::filesystem::path(path).filename().string());
    std::size_t shown = 0;
    player.loadInBackground(path, channels, [&] {
        KVXPlatformDrainMainQueue(0);
        if (progress.showLine({{fmt::format("  {} Loading", "|/-\\"[shown % 4]), 0}, {" " + name, 1}}))
            ++shown;
    });
    progress.wipe();
}

} // namespace

// A colon between the loop points makes them plain seconds, so 1:30 is a loop from 1 s to 30 s.
Loop readLoop(const std::string& text)
{
    const std::string_view whole = text;
    const auto colon = whole.find(':'), dash = whole.find('-', 1);
    const auto after = [whole](std::size_t at) { return at == whole.npos ? "" : whole.substr(at + 1); };
    auto in = readReal(whole.substr(0, colon)), out = readReal(after(colon));
    if (!in || !out) {
        in = readTime(whole.substr(0, dash));
        out = readTime(after(dash));
    }
    const auto refuse = [&text](const char* problem) {
        throw WrongUsage(
            fmt::format("--loop {}: {}; write IN:OUT in plain seconds, such as 1.5:4, or IN-OUT, "
                        "such as 1:30-2:05.5",
                        text, problem));
    };
    if (!in || !out) refuse("this is no loop");
    if (*in < 0) refuse("IN must be 0 or more");
    if (*out <= *in) refuse("OUT must be later than IN");
    return {*in, *out};
}

std::vector<int> readChannelMap(const std::string& text)
{
    std::vector<int> channels;
    for (double number : readReals(text).value_or(std::vector<double>{0.5})) {
        if (number != std::floor(number) || number < -1 || number >= 1024)
            throw WrongUsage(fmt::format("--channel-map {}: this is not a list of channels, such as 1,0; "
                                         "channels count from 0, and -1 is silence",
                                         text));
        channels.push_back(static_cast<int>(number));
    }
    return channels;
}

void checkCombination(const PlayerOptions& options)
{
    const Range range = rateRange(options.unit);
    if (options.rate && !range.holds(*options.rate))
        throw WrongUsage(
            fmt::format("--rate: {} is not a number from {} to {}", *options.rate, range.low, range.high));
    if (options.unit == RateUnit::varispeed && options.rate && options.pitch)
        throw WrongUsage("--pitch: with --unit varispeed, --rate and --pitch set the same value; give one of "
                         "them");
    if (!options.start || !options.loop) return;
    if (*options.start < options.loop->in || *options.start >= options.loop->out)
        throw WrongUsage(fmt::format(
            "--start {}: this is not in the loop, which goes from {} to {}; give a time in the loop",
            formatTimeOption(*options.start), formatTimeOption(options.loop->in),
            formatTimeOption(options.loop->out)));
}

void checkAgainstFile(const PlayerOptions& options, const PlaylistFile& file, int channels,
                      int deviceChannels)
{
    const std::string& path = file.path;
    const double seconds = file.format.duration();
    const std::string duration = formatTimeOption(seconds);
    if (options.start && *options.start >= seconds)
        throw Failure(fmt::format("--start {}: {} is only {} long; give a time before {}",
                                  formatTimeOption(*options.start), path, duration, duration));
    if (options.loop && options.loop->out > seconds)
        throw Failure(fmt::format("--loop {}-{}: {} is only {} long; give a time up to {}",
                                  formatTimeOption(options.loop->in), formatTimeOption(options.loop->out),
                                  path, duration, duration));
    if (options.pan && *options.pan != 0 && channels != 2)
        throw Failure(fmt::format("--pan {}: --pan is for two channels and {} plays in {}; leave it out",
                                  *options.pan, path, channels));
    if (!options.channelMap) return;
    if (options.channelMap->size() > static_cast<std::size_t>(deviceChannels))
        throw Failure(fmt::format("--channel-map names {} channels and the device has {}; name no more",
                                  options.channelMap->size(), deviceChannels));
    for (int channel : *options.channelMap)
        if (channel >= channels)
            throw Failure(
                fmt::format("--channel-map asks for channel {} of {}; name channels from 0 to {}, or -1",
                            channel, path, channels - 1));
}

int channelsToLoad(int fileChannels, int deviceChannels)
{
    return std::max(1, std::min(fileChannels == 1 ? 2 : fileChannels, deviceChannels));
}

int channelsToLoad(const PlayerOptions& options, int fileChannels, int deviceChannels)
{
    return channelsToLoad(fileChannels, options.channelMap ? mostChannels : deviceChannels);
}

std::int64_t loadFile(FilePlayer& player, const PlaylistFile& file, int channels,
                      const PlayerOptions& options, Progress& progress,
                      const std::function<void()>& whileLoading)
{
    player.chooseRateUnit(options.unit);
    if (whileLoading)
        player.loadInBackground(file.path, channels, whileLoading);
    else if (options.isInBackground)
        loadWithProgress(player, file.path, channels, progress);
    else
        player.load(file.path, channels);
    return framesLoaded(player, file, progress);
}

std::int64_t framesLoaded(FilePlayer& player, const PlaylistFile& file, Progress& progress)
{
    if (player.holdsAll(file.format.frames)) return file.format.frames;
    progress.warn(formatDamage(file.path));
    return countDecodedFrames(file.path);
}

void applyOptions(const PlayerOptions& options, FilePlayer& player)
{
    if (options.rate) player.setRate(*options.rate);
    if (options.pitch) player.setPitch(*options.pitch);
    if (options.volume) player.setVolume(*options.volume);
    if (options.pan) player.setPan(*options.pan);
    if (options.gains) player.setGains(*options.gains);
    if (options.channelMap) player.setChannelMap(*options.channelMap);
    if (options.loop) {
        player.setLoopIn(options.loop->in);
        player.setLoopOut(options.loop->out);
        player.setLooping(true);
    }
    // Seek to the loop start, because the class plays the first slice from the present position,
    // and jumps to the loop start only then.
    if (options.start)
        player.seek(*options.start);
    else if (options.loop)
        player.seek(options.loop->in);
}

} // namespace kvx
