// The length that a container states for its sound data, found without a decoder: chunked formats (WAV, RF64,
// W64, AIFF, 8SVX, CAF) and AU. Decoders shorten such a length to what the file holds and do not report it.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"

namespace kvxplatform::audiofile {

/// The sound data of a container, in bytes.
struct StatedData {
    SInt64 start = 0; ///< offset in the file; 0: no such data was found
    SInt64 bytes = 0; ///< as stated; 0: nothing is stated, or a placeholder for an unknown length
    SInt64 end = 0;   ///< of the bytes that a decoder needs; 0: of the file
    bool hasTooManyChunks = false; ///< the search for the data was given up
    Patch length; ///< the true length, where libsndfile would refuse the file or find no sound in it
};

/// Parse a container. Other formats state nothing. The search for the data ends after 4,096 chunks.
StatedData statedData(ByteReader& file);

} // namespace kvxplatform::audiofile
