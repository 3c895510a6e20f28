// The header of an MPEG audio frame.
//
// Source   ISO/IEC 11172-3 and 13818-3, 2.4.1.3 and 2.4.2.3; version 2.5 is a known extension of them.
#pragma once

#include <MacTypes.h>

namespace kvxplatform::audiofile {

struct MpegHeader {
    UInt32 word = 0; ///< the four bytes, first one highest
    UInt32 layer = 0;
    UInt32 bytes = 0;   ///< of the whole frame
    UInt32 samples = 0; ///< of each channel
    bool isMPEG1 = false;
    bool isMono = false;
    bool isFreeFormat = false; ///< no bit rate: all frames of the stream have one size, but for the padding
};

/// Read a header; false for four bytes that are none. `freeBytes` is the size of the stream's free-format
/// frames without padding; 0 takes headers without a bit rate for none.
bool readMpegHeader(UInt32 word, MpegHeader& out, UInt32 freeBytes = 0);

/// Whether two frames belong to one stream: the same layer, sample rate and number of channels.
bool isSameStream(const MpegHeader& a, const MpegHeader& b);

/// Bytes from the start of a layer III frame to the name of an info frame (Xing, Info).
UInt32 infoOffset(const MpegHeader& header);

} // namespace kvxplatform::audiofile
