// The header of an MPEG audio frame.
//
// Source   ISO/IEC 11172-3 and 13818-3, 2.4.1.3 and 2.4.2.3; version 2.5 is a common extension.
#pragma once

#include <MacTypes.h>

namespace kvxplatform::audiofile {

struct MpegHeader {
    UInt32 word = 0; ///< the four bytes, big-endian
    UInt32 layer = 0;
    UInt32 bytes = 0;   ///< of the frame
    UInt32 samples = 0; ///< per channel
    bool isMPEG1 = false;
    bool isMono = false;
    bool isFreeFormat =
        false; ///< no bit rate is stated: all frames of the stream have one size, apart from padding
};

/// Parse a header. False if `word` is not a header. `freeBytes` is the size of the stream's free-format
/// frames without padding; with 0, headers without a bit rate are refused. [any]
bool readMpegHeader(UInt32 word, MpegHeader& out, UInt32 freeBytes = 0);

/// Whether two frames have the same layer, sample rate and number of channels, as those of one stream do.
bool isSameStream(const MpegHeader& a, const MpegHeader& b);

/// The offset of an info frame's name (Xing, Info) in a layer III frame, in bytes.
UInt32 infoOffset(const MpegHeader& header);

} // namespace kvxplatform::audiofile
