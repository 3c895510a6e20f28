// The play method of the file player: one object per file, keys while a file plays, and the next file loaded
// in advance.
#pragma once

#include "host/kvx/play/player_options.h"
#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/runtime/host.h"

namespace kvx {

/// Play all files until the end, or until the user quits or interrupts.
/// Errors  throws Failure.
/// [main]
void playFiles(host::Host& host, const Playlist& playlist, const PlayerOptions& options, Session& session);

} // namespace kvx
