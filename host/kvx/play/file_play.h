// The play method `file`: one file player per file. The user controls the player with keys, and the next file
// is loaded while a file plays.
// All functions: [main].
#pragma once

#include "host/kvx/play/play_order.h"
#include "host/kvx/play/player_options.h"
#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/kvx/terminal/keyboard.h"
#include "host/runtime/host.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kvx {

constexpr double seekStep = 5;      // change of the position by a key, seconds
constexpr double volumeStep = 0.05; // change of the volume by a key, a factor
constexpr double rateStep = 0.05;   // change of the rate by a key, a factor
constexpr double pitchStep = 100;   // change of the pitch by a key, cents

// After this time, the key for the previous file goes to the start of the file.
constexpr double restartSeconds = 3;
constexpr const char* lastFileNote = "this is the last file";

/// Largest size of a loaded file in bytes. Two files must fit into the address space of 4 GiB.
constexpr double mostLoadedBytes = 1.5 * (1 << 30);

/// Add `step` to `value` and clamp the result to the range. A result close to a multiple of the step is
/// rounded to the multiple.
double stepped(double value, double step, const Range& range);

/// Apply a key to a player. Key::quit has no effect, because the session handles it.
/// Returns  for the user, the reason why the key had no effect; "" if the key had an effect.
std::string applyKey(Key key, FilePlayer& player);

/// Copy volume, rate and pitch from one player to another player, which has the same rate unit.
void copySettings(const FilePlayer& from, FilePlayer& to);

/// Whether the buffered player plays a file, because it is too long for the memory and no option needs the
/// file player.
bool isForBufferedPlayer(const PlayerOptions& options, const PlaylistFile& file, const KVXDeviceInfo& device);

/// The memory that a file needs in the file player, in bytes.
double loadedBytes(const PlayerOptions& options, const PlaylistFile& file, const KVXDeviceInfo& device);

/// Play from the file `first` until the end, until a file for the buffered player, or until a key or a signal
/// of the user ends playback. A file that fails to load is reported and left out of `order`.
/// Returns  the number of the file for the buffered player; nullopt if playback has ended.
/// Errors   throws Failure, also if no file is left.
std::optional<std::size_t> playFiles(host::Host& host, const std::vector<PlaylistFile>& files,
                                     std::size_t first, PlayOrder& order, const PlayerOptions& options,
                                     Session& session);

} // namespace kvx
