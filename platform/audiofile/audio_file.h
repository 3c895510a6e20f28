// AudioFile handles that an extended audio file lends.
// All functions: [any].
#pragma once

#include "platform/audiofile/data_format.h"

#include <memory>

namespace kvxplatform::audiofile {

/// Make a handle on a file's facts. The caller closes it with closeLentAudioFile. Null if there are too many
/// handles. Throws std::bad_alloc.
AudioFileID lendAudioFile(std::shared_ptr<const Facts> facts);

bool isOpen(AudioFileID file);

/// Close a lent handle. No effect if AudioFileClose has closed it.
void closeLentAudioFile(AudioFileID file);

} // namespace kvxplatform::audiofile
