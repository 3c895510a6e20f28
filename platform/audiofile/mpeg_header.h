// The header of an MPEG audio frame.
//
// Source   ISO/IEC 11172-3 and 13818-3, 2.4.1.3 and 2.4.2.3; version 2.5 is a common extension.
#pragma once

#include <MacTypes.h>

namespace kvxplatform::audiofile {

struct MpegHeader {
    UInt32 word = 0; ///< the header's four bytes as a big-endian number
    UInt32 layer = 0;
    UInt32 bytes = 0;   ///< size of the frame
    UInt32 samples = 0; ///< samples per channel in the frame
    bool isMPEG1 = false;
    bool isMono = false;
    /// True if the header states no bit rate. All frames of the stream then have one size, apart from
    /// padding.
    bool isFreeFormat = false;
};

/// Parse a frame header. Returns false if `word`, four bytes as a big-endian number, is not a frame header.
/// `freeBytes` is the size of the stream's free-format frames without padding; if it is 0, headers without a
/// bit rate are refused.
/// [any]
bool readMpegHeader(UInt32 word, MpegHeader& out, UInt32 freeBytes = 0);

/// Whether two frames can belong to one stream: they have the same version, layer, sample rate and kind of
/// bit rate, and are both mono or both stereo.
bool isSameStream(const MpegHeader& a, const MpegHeader& b);

/// Get the offset in bytes at which an info frame has its name (Xing, Info) in a layer III frame.
UInt32 infoOffset(const MpegHeader& header);

} // namespace kvxplatform::audiofile
