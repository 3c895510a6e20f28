// Pictures of sound files: the command `kvx picture`, and the picture that `kvx play --keep` adds.
//
// All functions: [main].
#pragma once

#include "host/kvx/picture/sound_picture.h"
#include "host/kvx/terminal/progress.h"

#include <string>

namespace kvx {

struct PictureOptions {
    std::string from, to;
    PictureSize size;
    bool isQuiet = false;
};

/// Draw a sound file, and write the picture to a PNG file.
/// Returns  false if a signal of the user has ended the work; then no file is written.
/// Errors   throws Failure.
bool writeSoundPicture(const std::string& from, const std::string& to, const PictureSize& size,
                       Progress& progress);

/// Draw a sound file, and report the result to the user.
/// Returns  the exit code.
/// Errors   throws Failure.
int runPicture(const PictureOptions& options);

} // namespace kvx
