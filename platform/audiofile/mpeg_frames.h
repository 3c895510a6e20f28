// The frames of an MPEG audio file, found and counted by their headers.
//
// An MPEG file is a sequence of frames without a container, often with tags, other data or a second file
// between them. An info frame (Xing, Info, VBRI) may state a wrong length, and a length estimated from the
// first bit rate is wrong if the bit rate varies.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"
#include "platform/audiofile/mpeg_header.h"

#include <vector>

namespace kvxplatform::audiofile {

struct MpegFrames {
    MpegHeader first;        ///< header of the first audio frame; 0 bytes: no frame was found
    std::vector<Span> spans; ///< spans of the complete audio frames of one stream, without info frames
    SInt64 count = 0;        ///< number of frames in `spans`
    UInt32 largestBytes = 0; ///< size of the largest frame, in bytes
    SInt64 statedCount = 0;  ///< number of frames that the info frames state; 0: not stated
    /// True if the file has fewer frames than stated, and fewer bytes than stated if a size is stated.
    bool isCutShort = false;
    SInt64 lead = 0;         ///< samples per channel to drop at the start: the delay of encoder and decoder
    SInt64 samples = 0;      ///< samples per channel after `lead`, without the encoder's padding
    UInt32 otherStreams = 0; ///< number of joined streams with another layer, sample rate or channel count

    /// Get a file length in bytes from which a decoder estimates at least `count` frames.
    SInt64 claimedBytes() const { return (count + 2) * (SInt64{largestBytes} + 4); }
};

/// Find the frames at and after an offset. A stream begins with four consecutive frames, or with fewer if a
/// tag or the end of the file follows. A single header is ignored, because other data may contain its bytes
/// by chance. Throws std::bad_alloc.
/// [any]
MpegFrames findMpegFrames(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
