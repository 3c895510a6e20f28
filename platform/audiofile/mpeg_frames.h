// The frames of an MPEG audio file, found and counted by their headers.
//
// An MPEG file is a row of frames without a container, and what else editors and recorders left in it: tags,
// remains of other data, several files joined. The length that an info frame (Xing, Info, VBRI) states may be
// wrong, and a decoder's guess from the first bit rate is wrong wherever the bit rate varies; the headers are
// right.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"
#include "platform/audiofile/mpeg_header.h"

#include <vector>

namespace kvxplatform::audiofile {

struct MpegFrames {
    MpegHeader first;        ///< of the first frame that sounds; 0 bytes: none was found
    std::vector<Span> spans; ///< of all frames that sound, whole ones of one stream, without info frames
    SInt64 count = 0;        ///< of those frames
    UInt32 largestBytes = 0; ///< of a frame
    SInt64 statedCount = 0;  ///< that the info frames state; 0: there is none, or it states no number
    bool isCutShort = false; ///< frames that they state are missing, and bytes where they state bytes
    SInt64 lead = 0;         ///< samples of each channel before the music: the encoder's and decoder's delay
    SInt64 samples = 0;      ///< of each channel, after the lead and without the encoder's padding
    UInt32 otherStreams = 0; ///< joined streams of another layer, sample rate or number of channels

    /// A length in bytes from which a decoder that guesses the number of frames does not guess too few.
    SInt64 claimedBytes() const { return (count + 2) * (SInt64{largestBytes} + 4); }
};

/// Look through a file from an offset on. Four headers in a row, or all up to a tag or the end of the file,
/// make a stream; a lone one is taken for chance. Throws std::bad_alloc.
MpegFrames findMpegFrames(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
