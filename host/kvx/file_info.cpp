#include "host/kvx/file_info.h"

#include "host/kvx/file_player.h"
#include "host/kvx/plain_text.h"
#include "host/kvx/progress.h"

#include <fmt/format.h>

namespace kvx {

std::string printFileInfo(host::Host& host, const ProgrammeFile& file)
{
    const CoreAudio core(host);
    FilePlayer player(host, core);
    player.load(file.path, file.format.fileChannels);
    std::string text = plainText(file.path) + "\n";
    const auto line = [&text](const char* name, const std::string& value) {
        text += fmt::format("  {:<14}{}\n", name, value);
    };
    line("sample rate", fmt::format("{} Hz", player.sampleRate()));
    line("channels", fmt::format("{}", player.channels()));
    line("duration", fmt::format("{} ({:.3f} s)", printTime(player.duration()), player.duration()));
    line("client format", player.clientFormat());
    line("output format", player.outputFormat());
    return text;
}

} // namespace kvx
