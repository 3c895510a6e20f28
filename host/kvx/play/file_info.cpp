#include "host/kvx/play/file_info.h"

#include "host/kvx/files/file_details.h"
#include "host/kvx/play/file_player.h"
#include "host/kvx/play/player_options.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/message.h"
#include "host/kvx/text/terminal_text.h"
#include "host/kvx/text/time_text.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace kvx {
namespace {

using nlohmann::ordered_json;

constexpr Advice advice = {checkFileAndMemory, nullptr};

/// A file, and what a player reports that has loaded the file.
struct FileInfo {
    std::string path;
    FileDetails details;
    double sampleRate; ///< Hz
    int fileChannels, playedChannels;
    std::int64_t frames;
    std::string clientFormat, outputFormat;

    double duration() const { return static_cast<double>(frames) / sampleRate; } ///< seconds
};

FileInfo readInfo(host::Host& host, const PlaylistFile& file, Progress& progress)
{
    const CoreAudio core(host);
    FilePlayer player(host, core, advice);
    const int fileChannels = file.format.fileChannels;
    player.load(file.path, std::min(fileChannels, mostChannels));
    const std::int64_t frames = framesLoaded(player, file, progress);
    return {withInputNames(file.path), readFileDetails(file.path),
            player.sampleRate(),       fileChannels,
            player.channels(),         frames,
            player.clientFormat(),     player.outputFormat()};
}

std::string formatInfo(const FileInfo& info)
{
    std::string text = plainText(info.path) + "\n";
    const auto line = [&text](const std::string& name, const std::string& value) {
        if (!value.empty()) text += fmt::format("  {:<14}{}\n", name, plainText(value));
    };
    line("container", info.details.container);
    line("codec", info.details.codec);
    line("bit depth", info.details.bitDepth > 0 ? fmt::format("{}", info.details.bitDepth) : "");
    line("sample rate", fmt::format("{} Hz", info.sampleRate));
    line("channels",
         info.playedChannels == info.fileChannels
             ? fmt::format("{}", info.fileChannels)
             : fmt::format("{}, of which the first {} play", info.fileChannels, info.playedChannels));
    line("duration", fmt::format("{} ({:.3f} s)", formatTime(info.duration()), info.duration()));
    line("client format", info.clientFormat);
    line("output format", info.outputFormat);
    for (const auto& [name, value] : info.details.tags) line(name, value);
    return text;
}

ordered_json infoJson(const FileInfo& info)
{
    ordered_json json = {
        {"path", info.path}, {"container", info.details.container}, {"codec", info.details.codec}};
    if (info.details.bitDepth > 0) json["bitDepth"] = info.details.bitDepth;
    json.update({{"sampleRate", info.sampleRate},
                 {"channels", info.fileChannels},
                 {"playedChannels", info.playedChannels},
                 {"frames", info.frames},
                 {"duration", info.duration()},
                 {"clientFormat", info.clientFormat},
                 {"outputFormat", info.outputFormat}});
    json["tags"] = ordered_json::object();
    for (const auto& [name, value] : info.details.tags) json["tags"][name] = value;
    return json;
}

} // namespace

std::string describeFiles(host::Host& host, const std::vector<PlaylistFile>& files, bool isJson,
                          Progress& progress)
{
    std::string text;
    ordered_json list = ordered_json::array();
    for (const PlaylistFile& file : files) {
        if (isInterrupted()) break;
        const FileInfo info = readInfo(host, file, progress);
        isJson ? list.push_back(infoJson(info)) : void(text += formatInfo(info));
    }
    return isJson ? list.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n" : text;
}

} // namespace kvx
