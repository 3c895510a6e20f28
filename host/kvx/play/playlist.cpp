#include "host/kvx/play/playlist.h"

#include "host/kvx/files/sound_list.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/shell_text.h"
#include "host/kvx/text/time_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <optional>

namespace kvx {
namespace {

std::string formatChannelRange(int first, int last)
{
    return first == last       ? fmt::format("channel {}", first)
           : first + 1 == last ? fmt::format("channels {} and {}", first, last)
                               : fmt::format("channels {} to {}", first, last);
}

/// Format the channels that do not play after the first `channels`, and the command that plays the next ones.
/// If fewer than `channels` remain, the last one plays on the rest of the device.
std::string formatDropped(const PlaylistFile& file, int channels)
{
    const int last = file.format.fileChannels - 1, lastOfMap = std::min(2 * channels - 1, last);
    std::string map;
    for (int i = channels; i < 2 * channels; ++i)
        map += fmt::format("{}{}", i > channels ? "," : "", std::min(i, last));
    return fmt::format("  It plays {} of its {}, and drops {}. To hear {}: `kvx play --channel-map {} {}`{}",
                       formatChannelRange(0, channels - 1), file.format.fileChannels,
                       formatChannelRange(channels, last), formatChannelRange(channels, lastOfMap), map,
                       quotedForShell(file.path), lastOfMap < last ? ", and so on" : "");
}

bool fits(const SoundFormat& format, const FormatGroup& group)
{
    return format.sampleRate == group.sampleRate() && format.channels == group.channels();
}

/// Open a file and add it to the last group, or to a new group if its format differs.
void addFile(const std::string& path, Playlist& playlist)
{
    refuseNestedLists(path);
    const SoundFile file(path);
    const SoundFormat& format = file.format();
    if (playlist.empty() || !fits(format, playlist.back())) playlist.emplace_back();
    playlist.back().files.push_back({file.path(), format});
}

} // namespace

std::int64_t FormatGroup::frames() const
{
    std::int64_t sum = 0;
    for (const PlaylistFile& file : files) sum += file.format.frames;
    return sum;
}

const PlaylistFile& FormatGroup::fileAt(std::int64_t frame) const
{
    for (const PlaylistFile& file : files) {
        if (frame < file.format.frames) return file;
        frame -= file.format.frames;
    }
    return files.back();
}

std::int64_t FormatGroup::firstFrameOf(const PlaylistFile& file) const
{
    std::int64_t first = 0;
    for (const PlaylistFile& each : files) {
        if (&each == &file) break;
        first += each.format.frames;
    }
    return first;
}

Playlist planPlaylist(const std::vector<std::string>& paths)
{
    Playlist playlist;
    for (const std::string& path : paths) addFile(path, playlist);
    return playlist;
}

Playlist planPlaylist(const std::vector<std::string>& paths, bool isRecursive, SpooledInputs& inputs,
                      Progress& progress)
{
    Playlist playlist;
    std::optional<Failure> problem; // the last one is thrown if no file is left
    const auto report = [&](const Failure& failure) {
        if (problem) progress.warnOfSkipped(problem->what());
        problem = failure;
    };
    const auto attempt = [&](const auto& work) {
        if (isInterrupted()) return;
        try {
            work();
        } catch (const Failure& failure) {
            report(failure);
        }
    };
    for (const std::string& path : paths)
        attempt([&] {
            for (const std::string& file : expandList(path, isRecursive, report))
                attempt([&] {
                    if (const auto readable = inputs.pathFor(file)) addFile(*readable, playlist);
                });
        });
    if (problem && playlist.empty()) throw *problem;
    if (problem) progress.warnOfSkipped(problem->what());
    return playlist;
}

FormatGroup groupFrom(const std::vector<PlaylistFile>& files, std::size_t first)
{
    FormatGroup group = {{files[first]}};
    while (++first < files.size() && fits(files[first].format, group)) group.files.push_back(files[first]);
    return group;
}

std::vector<PlaylistFile> filesOf(const Playlist& playlist)
{
    std::vector<PlaylistFile> files;
    for (const FormatGroup& group : playlist)
        files.insert(files.end(), group.files.begin(), group.files.end());
    return files;
}

std::vector<std::string> pathsOf(const Playlist& playlist)
{
    std::vector<std::string> paths;
    for (const PlaylistFile& file : filesOf(playlist)) paths.push_back(file.path);
    return paths;
}

void warnOfMissingParts(const Playlist& playlist, Progress& progress)
{
    for (const PlaylistFile& file : filesOf(playlist))
        for (const std::string& line : missingParts(file.path, file.format)) progress.warn(line);
}

void announce(const PlaylistFile& file, int channels, Progress& progress)
{
    const SoundFormat& format = file.format;
    progress.say(fmt::format("Playing {}: {} Hz, {}, {}",
                             std::filesystem::path(file.path).filename().string(), format.sampleRate,
                             formatChannels(format.fileChannels), formatTime(format.duration())));
    if (format.fileChannels > channels) progress.say(formatDropped(file, channels));
}

std::size_t GroupReader::read(float* out, std::size_t frames)
{
    std::size_t done = 0;
    while (done < frames) {
        if (!open_) {
            if (next_ == group_.files.size()) break;
            left_ = group_.files[next_].format.frames;
            open_ = std::make_unique<SoundFile>(group_.files[next_++].path);
        }
        const std::size_t wanted = std::min(frames - done, static_cast<std::size_t>(left_));
        const std::size_t got = open_->read(out + done * static_cast<std::size_t>(group_.channels()), wanted);
        done += got;
        left_ -= static_cast<std::int64_t>(got);
        if (done == frames) break;
        const bool isNew = damagedFiles_.empty() || damagedFiles_.back() != open_->path();
        if (open_->isDamaged() && isNew) damagedFiles_.push_back(open_->path());
        open_.reset(); // closes the file that has been read to its end
    }
    return done;
}

void GroupReader::seek(std::int64_t frame)
{
    const PlaylistFile& file = group_.fileAt(frame);
    next_ = static_cast<std::size_t>(&file - group_.files.data()) + 1;
    open_ = std::make_unique<SoundFile>(file.path);
    const std::int64_t inFile = frame - group_.firstFrameOf(file);
    open_->seek(inFile);
    left_ = std::max<std::int64_t>(0, file.format.frames - inFile);
}

} // namespace kvx
