// Tags that editors put before, between and after the sound of a file, in any format.
#pragma once

#include "platform/audiofile/byte_reader.h"

namespace kvxplatform::audiofile {

/// The bytes of the tag (ID3v1, ID3v2, APE, Lyrics3) that begins at an offset; 0 if none does. A tag that
/// states more bytes than the file holds is none.
SInt64 tagBytes(ByteReader& file, SInt64 offset);

/// The first offset after all tags that follow each other from an offset on.
SInt64 afterTags(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
