// AudioFile handles that an extended audio file lends to its callers.
// All functions: [any].
#pragma once

#include "platform/audiofile/data_format.h"

#include <memory>

namespace kvxplatform::audiofile {

/// Make an AudioFile handle for the facts of an extended audio file, which closes the handle with
/// closeLentAudioFile. Returns null if the table of handles is full. Throws std::bad_alloc.
AudioFileID lendAudioFile(std::shared_ptr<const Facts> facts);

bool isOpen(AudioFileID file);

/// Close a lent handle. No effect if AudioFileClose has already closed the handle.
void closeLentAudioFile(AudioFileID file);

} // namespace kvxplatform::audiofile
