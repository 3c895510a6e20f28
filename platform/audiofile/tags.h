// Tags before, between and after the audio data of a file of any format.
// All functions: [any].
#pragma once

#include "platform/audiofile/byte_reader.h"

namespace kvxplatform::audiofile {

/// Get the size in bytes of the tag (ID3v1, ID3v2, APE or Lyrics3) at an offset. Returns 0 if there is no
/// tag, or if the tag states more bytes than the file has.
SInt64 tagBytes(ByteReader& file, SInt64 offset);

/// Get the offset after all consecutive tags that begin at an offset.
SInt64 afterTags(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
