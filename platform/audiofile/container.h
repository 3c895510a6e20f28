// The data length that a container states: chunked formats (WAV, RF64, W64, AIFF, 8SVX, CAF) and AU. Decoders
// silently shorten a stated length to the bytes that the file has.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"

namespace kvxplatform::audiofile {

/// The sample data of a container, in bytes.
struct StatedData {
    SInt64 start = 0;              ///< offset in the file; 0: not found
    SInt64 bytes = 0;              ///< stated length; 0: not stated, or a placeholder for an unknown length
    SInt64 end = 0;                ///< end of the bytes for the decoder; 0: the end of the file
    bool hasTooManyChunks = false; ///< the search ended before the data
    Patch length; ///< the true length, if libsndfile would otherwise refuse the file or find no samples
};

/// Parse a container. Other formats give an empty result. The search for the data ends after 4,096 chunks.
/// [any]
StatedData statedData(ByteReader& file);

} // namespace kvxplatform::audiofile
