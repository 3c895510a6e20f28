// A file through the library's sound component, as a classic sound program plays.
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/play/programme.h"
#include "host/kvx/terminal/progress.h"
#include "host/runtime/host.h"
#include "host/soundclient/sample_bytes.h"

namespace kvx {

struct ClassicOptions {
    double gainDb = 0;
    soundclient::Labelling labelling = soundclient::Labelling::bigAsLittle;
};

/// Play it to the end, or until the user interrupts. True if anything was heard. Throws Failure. [main]
bool playClassic(host::Host& host, const ProgrammeFile& file, const ClassicOptions& options,
                 const KVXDeviceInfo& device, bool isStepped, Progress& progress);

} // namespace kvx
