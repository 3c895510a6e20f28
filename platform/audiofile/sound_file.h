// A sound file being read: its facts, its frames, and a place among them.
//
// Units    frames of the file. Thread [any], one call at a time.
#pragma once

#include "platform/audiofile/data_format.h"
#include "platform/audiofile/open_descriptor.h"

#include <memory>
#include <string>

namespace kvxplatform::audiofile {

class MpegStream;

class SoundFile {
public:
    /// Errors  as openDescriptor; kAudioFileUnsupportedFileTypeError for what libsndfile does not know,
    ///         kAudioFileUnsupportedDataFormatError for a coding that it cannot read, and
    ///         kAudioFileInvalidFileError for a file at odds with itself. Throws std::bad_alloc.
    static OSStatus open(const std::string& path, std::unique_ptr<SoundFile>& out);

    ~SoundFile();
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    const Facts& facts() const { return facts_; }
    SInt64 place() const { return place_; }

    /// Decode up to `frames` frames into out[frame * channels + channel], in one piece, straight from
    /// libsndfile. Integers of n bits are value / 2^(n-1); floats are what they are. Fewer frames at the end
    /// or where the data breaks off; -1 if the disk cannot be read. Nothing behind the frames is touched.
    SInt64 read(Float32* out, SInt64 frames);

    /// The bytes of up to `frames` frames as they are on the disk. Only of a file that isPlain.
    SInt64 readPlain(void* out, SInt64 frames);

    /// False, and at some frame of the file, if the frame cannot be reached. 0 <= frame <= frames.
    bool seek(SInt64 frame);

private:
    SoundFile();
    OSStatus openDecoder(SF_INFO& info);
    OSStatus openAgain();
    OSStatus prepare(const SF_INFO& first);
    OSStatus countMpeg(SF_INFO& info);
    OSStatus makeLengthSure();
    void compareWithStated();
    bool isReachable(SInt64 frame);
    SInt64 skip(SInt64 frames);

    struct Close {
        void operator()(SNDFILE* file) const;
    };

    OpenFile disk_;
    std::unique_ptr<MpegStream> mpeg_; // between the two, for a stream that does not say its length
    std::unique_ptr<SNDFILE, Close> decoder_;
    Facts facts_;
    SInt64 place_ = 0;
    bool isNoisy_ = false; // its decoder prints
};

} // namespace kvxplatform::audiofile
