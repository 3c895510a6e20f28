// MPEG audio, frame by frame, without decoding it. A stream says how long it is only if its encoder put that
// into a first frame without sound; of others the length is guessed by who trusts the first frame's bit rate,
// which is wrong wherever the rate varies. Counting the frames' headers is right.
//
// Source   ISO/IEC 11172-3 and 13818-3, 2.4.1.3 and 2.4.2.3 (the header); 2.5 is a known extension of them.
#pragma once

#include <MacTypes.h>

namespace kvxplatform::audiofile {

/// One frame's header.
struct MpegHeader {
    UInt32 word = 0; ///< the four bytes, first one highest
    UInt32 layer = 0;
    UInt32 bytes = 0;   ///< of the whole frame
    UInt32 samples = 0; ///< a channel's
    bool isMPEG1 = false;
    bool isMono = false;
};

/// Read a header; false for four bytes that are none, or of a bit rate that it does not tell.
bool readMpegHeader(UInt32 word, MpegHeader& out);

/// Bytes between a layer III frame's start and the place where its length may stand.
UInt32 infoPlace(const MpegHeader& header);

struct MpegFrames {
    MpegHeader first;       ///< of the first frame that sounds; 0 bytes: no frame was found
    SInt64 start = 0;       ///< where that frame is, in bytes of the file
    UInt32 count = 0;       ///< whole frames from there on
    bool hasLength = false; ///< the stream says its length itself: nothing was counted
};

/// Look through a file. Tags between frames, and junk in front of a frame like the others, are passed over.
MpegFrames countMpegFrames(int descriptor, SInt64 fileBytes);

} // namespace kvxplatform::audiofile
