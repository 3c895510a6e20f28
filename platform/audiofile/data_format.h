// Describes the format of a file's sample data with the platform's structs and constants.
#pragma once

#include <AudioToolbox/AudioFile.h>

#include <sndfile.h>

namespace kvxplatform::audiofile {

/// Facts about an open file, which never change.
struct Facts {
    AudioStreamBasicDescription format{}; ///< format of the data in the file
    AudioFileTypeID type = 0;             ///< file type; 0: a type that the platform does not name
    SInt64 frames = 0;                    ///< number of decodable frames
    SInt64 statedFrames = 0;   ///< number of frames that the header states; 0: not stated in frames
    bool isCutShort = false;   ///< true if the file ends before its stated length
    UInt32 omittedStreams = 0; ///< number of joined streams that are not decoded
    SInt64 fileBytes = 0;
    UInt32 largestPacket = 0; ///< size of the largest packet in bytes; 0: unknown
    SInt32 sourceBits = 0;    ///< bits per sample before encoding; 0: unknown
    bool isPlain = false;     ///< true if the data bytes of the file are frames in exactly `format`
};

/// Describe a file that libsndfile has opened. The length fields of the result stay empty. `formType` is the
/// big-endian 32-bit number at byte 8 of the file.
/// [any]
Facts describe(SNDFILE* file, const SF_INFO& info, UInt32 formType);

} // namespace kvxplatform::audiofile
