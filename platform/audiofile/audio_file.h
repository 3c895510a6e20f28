// Sound files, seen from outside, for the extended ones, which hand such handles out and keep them.
#pragma once

#include "platform/audiofile/data_format.h"

#include <memory>

namespace kvxplatform::audiofile {

/// A handle on a file's facts that nobody has to close; null when there are too many. Throws std::bad_alloc.
AudioFileID lendAudioFile(std::shared_ptr<const Facts> facts);

/// Whether it is still open.
bool isOpen(AudioFileID file);

/// Close it, unless its borrower has.
void takeBack(AudioFileID file);

} // namespace kvxplatform::audiofile
