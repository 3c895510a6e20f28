// Finds the sample data of a container, and the data length that its header states. The containers are
// chunked formats (WAV, RF64, W64, AIFF, 8SVX, CAF) and AU. Decoders do not report the stated length: they
// shorten it to the bytes that the file has.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"

namespace kvxplatform::audiofile {

/// The position and the length of a container's sample data, in bytes.
struct StatedData {
    SInt64 start = 0; ///< file offset of the first sample; 0: not found
    SInt64 bytes = 0; ///< stated length of the data; 0: not stated, or a placeholder for an unknown length
    SInt64 end = 0;   ///< file offset at which the decoder's input ends; 0: the end of the file
    bool hasTooManyChunks = false; ///< true if the search stopped at the chunk limit before it found the data
    /// True length of the data; empty unless libsndfile would refuse the file or find no samples.
    Patch length;
};

/// Find the sample data of a container. The result is empty for other file formats. The search for the data
/// stops after 4,096 chunks.
/// [any]
StatedData statedData(ByteReader& file);

} // namespace kvxplatform::audiofile
