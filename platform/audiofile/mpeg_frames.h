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
    MpegHeader first;        ///< of the first audio frame; 0 bytes: none was found
    std::vector<Span> spans; ///< the complete audio frames of one stream, without info frames
    SInt64 count = 0;        ///< number of these frames
    UInt32 largestBytes = 0; ///< size of the largest frame
    SInt64 statedCount = 0;  ///< frames that the info frames state; 0: not stated
    bool isCutShort = false; ///< stated frames are missing, and stated bytes too if there are any
    SInt64 lead = 0;         ///< samples per channel to drop first: the delay of encoder and decoder
    SInt64 samples = 0;      ///< per channel, after the lead and without the encoder's padding
    UInt32 otherStreams = 0; ///< joined streams with another layer, sample rate or number of channels

    /// A file length in bytes that makes a decoder estimate at least `count` frames.
    SInt64 claimedBytes() const { return (count + 2) * (SInt64{largestBytes} + 4); }
};

/// Find the frames at and after an offset. A stream begins with four consecutive frames, or fewer up to a tag
/// or the end of the file; single matches are ignored as chance. Throws std::bad_alloc. [any]
MpegFrames findMpegFrames(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
