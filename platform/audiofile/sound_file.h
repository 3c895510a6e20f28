// A sound file being read: its facts, its frames, and a position among them.
//
// Units    frames of the file. Thread [any], one call at a time.
#pragma once

#include "platform/audiofile/data_format.h"
#include "platform/audiofile/file_view.h"
#include "platform/audiofile/open_descriptor.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace kvxplatform::audiofile {

class ByteReader;

class SoundFile {
public:
    /// Errors  as openDescriptor; kAudioFileUnsupportedFileTypeError for what libsndfile does not know,
    ///         kAudioFileUnsupportedDataFormatError for a coding that it cannot read and for a sample rate or
    ///         channel count beyond the limits in KVXPlatform.h, and kAudioFileInvalidFileError for a file at
    ///         odds with itself. Throws std::bad_alloc.
    static OSStatus open(const std::string& path, std::unique_ptr<SoundFile>& out);

    ~SoundFile();
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    const Facts& facts() const { return facts_; }
    SInt64 position() const { return position_; }

    /// Decode up to `frames` frames into out[frame * channels + channel], in one piece, straight from
    /// libsndfile. Integers of n bits are value / 2^(n-1); floats are what they are. Fewer frames at the end
    /// or where the data breaks off, unless other parts follow: the position then moves to the next part. -1
    /// if the disk cannot be read. Nothing past the frames is written.
    SInt64 read(Float32* out, SInt64 frames);

    /// The bytes of up to `frames` frames as they are on the disk. Only of a file that isPlain.
    SInt64 readPlain(void* out, SInt64 frames);

    /// False, and at some frame of the file, if the frame cannot be reached. 0 <= frame <= frames.
    bool seek(SInt64 frame);

private:
    /// What one decoder reads: the whole file, or one of several that were joined.
    struct Part {
        FileView view;
        SInt64 lead = 0;  ///< frames to drop at the beginning of the decoder's output
        SInt64 begin = 0; ///< the file's frame at which the part begins
        SInt64 frames = 0;
        bool isOmitted = false; ///< its frames do not belong to the file's
    };
    struct Close {
        void operator()(SNDFILE* file) const;
    };

    SoundFile();
    OSStatus prepare();
    OSStatus prepareMpeg(ByteReader& bytes, SInt64 start);
    OSStatus prepareOgg(ByteReader& bytes, SInt64 start);
    OSStatus preparePlain(ByteReader& bytes, SInt64 start);
    OSStatus acceptFirst(const SF_INFO& info, ByteReader& bytes, SInt64 start);
    void addPart(std::vector<Span> spans, const Patch& patch = {}, SInt64 statedBytes = 0);
    OSStatus enter(std::size_t part, SF_INFO& info);
    bool enter(std::size_t part);
    OSStatus measure(const SF_INFO& info);
    bool isReachable(SInt64 frame);
    SInt64 skip(SInt64 frames);

    OpenFile disk_;
    std::vector<Part> parts_; // never empty; complete before the first decoder opens, which keeps addresses
    std::size_t part_ = 0;    // that the decoder reads
    std::unique_ptr<SNDFILE, Close> decoder_;
    Facts facts_;
    SInt64 position_ = 0;
    bool isNoisy_ = false; // its decoder prints
};

} // namespace kvxplatform::audiofile
