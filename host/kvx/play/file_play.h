// Files through the class of the file player, one object each, with keys where there is a terminal.
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/play/player_options.h"
#include "host/kvx/play/programme.h"
#include "host/kvx/terminal/progress.h"
#include "host/runtime/host.h"

#include <functional>
#include <vector>

namespace kvx {

/// Throws Failure when an option does not fit one of the files, or the device.
void checkFiles(const std::vector<ProgrammeFile>& files, const PlayerOptions& options,
                const KVXDeviceInfo& device);

/// Play all to the end, or until the user quits or interrupts. True if anything was heard. Throws Failure.
/// [main]
bool playFiles(host::Host& host, const std::vector<ProgrammeFile>& files, const PlayerOptions& options,
               const KVXDeviceInfo& device, bool isStepped, Progress& progress);

/// The channels to load a file with: its own, no more than the device has. A device of two or more gets mono
/// as two, or only one side would sound.
int channelsToLoad(int fileChannels, int deviceChannels);

/// Load a file as the options say, with progress shown; or, with `whileLoading`, on a background thread while
/// that function runs repeatedly on this one. Returns the frames as framesLoaded(). Throws Failure.
std::int64_t loadFile(FilePlayer& player, const ProgrammeFile& file, int channels,
                      const PlayerOptions& options, Progress& progress,
                      const std::function<void()>& whileLoading = {});

/// The frames that a player holds of its file. Warns when these are not all, since the data is damaged.
/// Throws Failure.
std::int64_t framesLoaded(FilePlayer& player, const ProgrammeFile& file, Progress& progress);

} // namespace kvx
