#include "host/kvx/picture/picture_command.h"

#include "host/kvx/files/atomic_file.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"

#include <fmt/core.h>

#include <cstdio>
#include <filesystem>
#include <strings.h>

namespace kvx {
namespace {

void checkName(const std::string& path)
{
    if (strcasecmp(std::filesystem::path(path).extension().c_str(), ".png") == 0) return;
    const std::string better = std::filesystem::path(path).replace_extension(".png").string();
    throw WrongUsage(fmt::format("{}: the result is a PNG picture; name it {}", path, better));
}

} // namespace

bool writeSoundPicture(const std::string& from, const std::string& to, const PictureSize& size,
                       Progress& progress)
{
    const bool wasInterrupted = isInterrupted(); // a signal that ended playback does not end this work
    const auto showProgress = [&](const SoundFormat& format, std::int64_t frames) {
        progress.showLine(
            formatShareDone(static_cast<double>(frames) / format.sampleRate, format.duration()));
        return isInterrupted() == wasInterrupted;
    };
    const PictureLayout layout = layOutPicture(size, SoundFile(from).format().fileChannels);
    const std::optional<SoundAnalysis> analysis = analyseSound(from, layout.analysisSize(), showProgress);
    progress.wipe();
    if (!analysis) return false;
    for (const std::string& warning : missingParts(from, analysis->format)) progress.warn(warning);
    if (analysis->isDamaged) progress.warn(formatDamage(from));
    writePicture(drawSound(*analysis, std::filesystem::path(from).filename().string(), size), to);
    return true;
}

int runPicture(const PictureOptions& options)
{
    checkName(options.to);
    const std::string from = pathOnDisk(options.from);
    refuseToOverwrite({from}, options.to, "the picture");
    Progress progress(verbosityFor(options.isQuiet, stdout), stdout);
    // The guard exists before the first temporary file, because it removes that file after a signal.
    InterruptGuard guard;
    temporaryPathFor(options.to); // if no file can be written, the command fails before it reads
    if (writeSoundPicture(from, options.to, options.size, progress)) {
        progress.say(
            fmt::format("Drew {}: {} x {} pixels", options.to, options.size.width, options.size.height));
    } else {
        progress.leaveLine();
        progress.say("Stopped; nothing was written.");
    }
    return progress.exitCode();
}

} // namespace kvx
