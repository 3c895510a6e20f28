// Options that several commands share.
// All functions: [main].
#pragma once

#include "host/kvx/command_line/command.h"
#include "host/kvx/devices/output_device.h"
#include "host/kvx/library/library.h"

namespace kvx {

Option quietOption(bool& isQuiet);

/// The option that prints JSON in place of text.
Option jsonOption(bool& isJson);

/// The options `--library` and `--host-version`.
OptionGroup libraryOptions(LibraryOptions& options);

/// The options `--device`, `--device-rate` and `--fast`, for commands that play to a device.
OptionGroup deviceOptions(DeviceRequest& request);

} // namespace kvx
