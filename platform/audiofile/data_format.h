// The format of a file's sample data, in the platform's terms.
#pragma once

#include <AudioToolbox/AudioFile.h>

#include <sndfile.h>

namespace kvxplatform::audiofile {

/// Properties of an open file that never change.
struct Facts {
    AudioStreamBasicDescription format{}; ///< of the data in the file
    AudioFileTypeID type = 0;             ///< 0: a type that the platform does not name
    SInt64 frames = 0;                    ///< decodable
    SInt64 statedFrames = 0;              ///< stated in the header; 0: not stated in frames
    bool isCutShort = false;              ///< the file ends before its stated length
    UInt32 omittedStreams = 0;            ///< joined streams that are not decoded
    SInt64 fileBytes = 0;
    UInt32 largestPacket = 0; ///< bytes; 0: unknown
    SInt32 sourceBits = 0;    ///< per sample before encoding; 0: unknown
    bool isPlain = false;     ///< the data bytes are frames in exactly `format`
};

/// Describe a file that libsndfile has opened, except its length. `formType` is the word at byte 8.
/// [any]
Facts describe(SNDFILE* file, const SF_INFO& info, UInt32 formType);

} // namespace kvxplatform::audiofile
