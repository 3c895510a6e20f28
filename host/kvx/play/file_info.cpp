#include "host/kvx/play/file_info.h"

#include "host/kvx/play/file_play.h"
#include "host/kvx/play/file_player.h"
#include "host/kvx/terminal/progress.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/format.h>

#include <algorithm>

namespace kvx {
namespace {

constexpr Advice advice = {"see that the file is whole, and that the memory has room for it", nullptr};

std::string printChannelCount(const FilePlayer& player, const ProgrammeFile& file)
{
    const int loaded = player.channels(), all = file.format.fileChannels;
    return loaded == all ? fmt::format("{}", all)
                         : fmt::format("{}, of which the first {} play", all, loaded);
}

} // namespace

std::string printFileInfo(host::Host& host, const ProgrammeFile& file, Progress& progress)
{
    const CoreAudio core(host);
    FilePlayer player(host, core, advice);
    player.load(file.path, std::min(file.format.fileChannels, mostChannels));
    std::string text = plainText(file.path) + "\n";
    const auto line = [&text](const char* name, const std::string& value) {
        text += fmt::format("  {:<14}{}\n", name, value);
    };
    line("sample rate", fmt::format("{} Hz", player.sampleRate()));
    line("channels", printChannelCount(player, file));
    const double duration = double(framesLoaded(player, file, progress)) / player.sampleRate();
    line("duration", fmt::format("{} ({:.3f} s)", printTime(duration), duration));
    line("client format", player.clientFormat());
    line("output format", player.outputFormat());
    return text;
}

} // namespace kvx
