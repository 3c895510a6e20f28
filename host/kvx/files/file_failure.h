// Why a sound file cannot be read, and what is missing from one that can.
#pragma once

#include "host/kvx/files/sound_file.h"
#include "host/kvx/text/failure.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kvx {

/// For a file that the platform refused with `status`.
Failure fileFailure(const std::string& path, std::int32_t status);

/// A line for each part that a file should hold and does not: frames before its stated end, omitted streams.
/// Empty for a whole file.
std::vector<std::string> missingParts(const std::string& path, const SoundFormat& format);

/// A line for a file whose data stops decoding before its last frame.
std::string damagedPart(const std::string& path);

} // namespace kvx
