// Sound files, decoded to 32-bit float by the platform: every format that it reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

struct OpaqueExtAudioFile; // the platform's

namespace kvx {

/// What a file holds, and what its header states beyond that.
struct SoundFormat {
    int sampleRate = 0;               ///< Hz, within the platform's limits
    int fileChannels = 0;             ///< as stored
    int channels = 0;                 ///< read: 1 or 2
    std::int64_t frames = 0;          ///< that decode
    bool isCutShort = false;          ///< the file ends before a length that its header states
    std::int64_t statedFrames = 0;    ///< by the header; 0: it states none
    std::uint32_t omittedStreams = 0; ///< chained streams that are not decoded

    double duration() const { return double(frames) / sampleRate; } ///< seconds
};

/// One open file. Of more than two channels the first two are read. [main]
class SoundFile {
public:
    /// Throws Failure: what is wrong with the file, and what to do next. A file that is cut short opens.
    explicit SoundFile(const std::string& path);

    /// As the disk spells it.
    const std::string& path() const { return path_; }
    const SoundFormat& format() const { return format_; }

    /// Decode up to `frames` frames: out[frame * format().channels + channel]. Returns the frames decoded;
    /// fewer than requested at the end only. Throws Failure when the disk cannot be read.
    std::size_t read(float* out, std::size_t frames);

    /// Reading ended before format().frames: the data is damaged.
    bool isDamaged() const { return isDamaged_; }

private:
    struct Dispose {
        void operator()(OpaqueExtAudioFile* file) const;
    };
    std::string path_;
    std::unique_ptr<OpaqueExtAudioFile, Dispose> file_;
    SoundFormat format_;
    std::int64_t framesRead_ = 0;
    bool isDamaged_ = false;
};

/// Decode the whole file and count its frames: fewer than format().frames where the data is damaged. Throws
/// Failure. [main]
std::int64_t framesThatDecode(const std::string& path);

} // namespace kvx
