// Files through the class of the buffered player: decoded here, fed while they play, without gaps between
// files of one format.
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/play/programme.h"
#include "host/kvx/terminal/progress.h"
#include "host/runtime/host.h"

#include <vector>

namespace kvx {

/// Play all to the end, or until the user interrupts. True if anything was heard. Throws Failure. [main]
bool playBuffered(host::Host& host, const std::vector<Run>& runs, double gainDb, const KVXDeviceInfo& device,
                  bool isStepped, Progress& progress);

} // namespace kvx
