// What the bytes of a sound file are, in the platform's terms.
#pragma once

#include <AudioToolbox/AudioFile.h>

#include <sndfile.h>

namespace kvxplatform::audiofile {

/// What does not change while a file is open.
struct Facts {
    AudioStreamBasicDescription format{}; ///< of the data on the disk
    AudioFileTypeID type = 0;             ///< 0: without a name of the platform's
    SInt64 frames = 0;                    ///< that decode
    SInt64 statedFrames = 0;              ///< that the header states; 0: none, or not in frames
    bool isCutShort = false;              ///< the file ends before a length that it states
    UInt32 omittedStreams = 0;            ///< joined streams that are not decoded
    SInt64 fileBytes = 0;
    UInt32 largestPacket = 0; ///< bytes; 0: not known
    SInt32 sourceBits = 0;    ///< a sample's, before it was encoded; 0: it had none
    bool isPlain = false;     ///< the bytes on the disk are the frames just as `format` says
};

/// All but the length, of a file that libsndfile has opened. `formType` is the word at byte 8.
Facts describe(SNDFILE* file, const SF_INFO& info, UInt32 formType);

} // namespace kvxplatform::audiofile
