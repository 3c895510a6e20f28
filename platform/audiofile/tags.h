// Tags before, between and after the audio data of a file of any format.
// All functions: [any].
#pragma once

#include "platform/audiofile/byte_reader.h"

namespace kvxplatform::audiofile {

/// The size of the tag (ID3v1, ID3v2, APE, Lyrics3) at an offset, in bytes; 0 if there is none, or if it
/// states more bytes than the file has.
SInt64 tagBytes(ByteReader& file, SInt64 offset);

/// The offset after all consecutive tags at an offset.
SInt64 afterTags(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
