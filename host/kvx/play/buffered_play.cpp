#include "host/kvx/play/buffered_play.h"

#include "host/kvx/files/file_failure.h"
#include "host/kvx/play/playback.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/meter.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/message.h"

#include <fmt/format.h>

#include <cmath>

namespace kvx {
namespace {

void announce(Progress& progress, const ProgrammeFile& file)
{
    progress.say(printAnnouncement(file));
    if (file.format.fileChannels > file.format.channels)
        progress.say(fmt::format("  Of its {} channels the first two are heard.", file.format.fileChannels));
}

// Play one run to its end. True if any of it was heard. Throws Failure when the device goes away.
bool playRun(host::Host& host, const Run& run, float gain, const KVXDeviceInfo& device, bool isStepped,
             Progress& progress)
{
    Playback playback(host, run, gain);
    Meter meter(device.device);
    playback.begin(device);

    const ProgrammeFile* heard = nullptr;
    while (!isInterrupted() && playback.turn()) {
        const double position = playback.position();
        const ProgrammeFile& file = run.fileAt(std::int64_t(position));
        if (&file != heard) announce(progress, file);
        heard = &file;
        progress.show((position - double(run.firstFrameOf(file))) / run.sampleRate(),
                      double(file.format.frames) / run.sampleRate(), meter.takePeak());
        passTime(device, isStepped);
        if (!deviceNow(device).isAlive) {
            playback.stop();
            throw deviceDied(device);
        }
    }
    const bool isHeard = playback.position() > 0;
    playback.stop();
    for (const std::string& path : playback.damagedFiles()) progress.warn(damagedPart(path));
    if (playback.hadGap()) printMessage("the sound had gaps: the file could not be read as fast as it plays");
    return isHeard;
}

} // namespace

bool playBuffered(host::Host& host, const std::vector<Run>& runs, double gainDb, const KVXDeviceInfo& device,
                  bool isStepped, Progress& progress)
{
    const auto gain = float(std::pow(10.0, gainDb / 20.0)); // exactly 1 at 0 dB
    bool isHeard = false;
    for (const Run& run : runs)
        if (!isInterrupted() && playRun(host, run, gain, device, isStepped, progress)) isHeard = true;
    return isHeard;
}

} // namespace kvx
