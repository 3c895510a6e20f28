// An open sound file: its facts, its decoded frames and a read position, in frames of the file.
// One call at a time.
// All functions: [any].
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
    /// Open a file. `out` is unchanged on failure.
    /// Errors  those of openDescriptor; kAudioFileUnsupportedFileTypeError: libsndfile does not know the
    ///         type; kAudioFileUnsupportedDataFormatError: libsndfile does not know the coding, or the sample
    ///         rate or channel count is beyond the limits in KVXPlatform.h; kAudioFileInvalidFileError: the
    ///         header contradicts itself or the contents of the file. Throws std::bad_alloc.
    static OSStatus open(const std::string& path, std::unique_ptr<SoundFile>& out);

    ~SoundFile();
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    const Facts& facts() const { return facts_; }
    SInt64 position() const { return position_; }

    /// Decode up to `frames` frames at the read position.
    /// Shape    out[frame * channels + channel]; nothing is written after the last frame.
    /// Units    an n-bit integer sample becomes value / 2^(n-1); a float sample is unchanged.
    /// Returns  the number of frames: fewer at the end of the file or at damaged data. After damaged data the
    ///          position is at the next part, if there is one. -1 if the disk cannot be read.
    SInt64 read(Float32* out, SInt64 frames);

    /// Copy the data bytes of up to `frames` frames. Call it only if facts().isPlain is true. Returns the
    /// number of frames, as read() does.
    SInt64 readPlain(void* out, SInt64 frames);

    /// Set the read position, from 0 to facts().frames. Returns false if the frame cannot be reached; the
    /// position may then be at another frame.
    bool seek(SInt64 frame);

private:
    /// The input of one decoder: the whole file, or one of several joined files.
    struct Part {
        FileView view;
        SInt64 lead = 0;  ///< number of decoded frames to drop at the start of the part
        SInt64 begin = 0; ///< file frame at the start of the part
        SInt64 frames = 0;
        bool isOmitted = false; ///< true if the part is not decoded
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
    // Not empty after open(). Never resized while a decoder is open, because the decoder has a part's
    // address.
    std::vector<Part> parts_;
    std::size_t part_ = 0; // index of the part that the decoder reads
    std::unique_ptr<SNDFILE, Close> decoder_;
    Facts facts_;
    SInt64 position_ = 0;
    bool isNoisy_ = false; // true if the decoder prints warnings
};

} // namespace kvxplatform::audiofile
