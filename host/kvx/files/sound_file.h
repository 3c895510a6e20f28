// Sound files that the platform decodes to 32-bit float or to PCM16 (16-bit integers), and the messages about
// files that do not decode.
// All functions: [main].
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct OpaqueExtAudioFile; // declared by the platform

namespace kvx {

/// The contents of a sound file, and the length that its header states.
struct SoundFormat {
    int sampleRate = 0;      ///< sample rate in Hz, within the platform's limits
    int fileChannels = 0;    ///< number of channels in the file
    int channels = 0;        ///< number of channels that SoundFile reads: 1 or 2
    std::int64_t frames = 0; ///< number of frames that the platform can decode
    bool isCutShort = false; ///< whether the file ends before the length in its header
    std::int64_t statedFrames =
        0; ///< number of frames that the header states; 0: the header states no number
    std::uint32_t omittedStreams = 0; ///< number of chained streams that the platform does not decode

    double duration() const { return double(frames) / sampleRate; } ///< seconds
};

/// An open sound file. If the file has more than two channels, only the first two are read.
class SoundFile {
public:
    /// Open a file, which may be cut short.
    /// Errors  throws Failure with the reason and the next step.
    explicit SoundFile(const std::string& path);

    /// The path in the spelling of pathOnDisk().
    const std::string& path() const { return path_; }
    const SoundFormat& format() const { return format_; }

    /// Decode up to `frames` frames.
    /// Shape    out[frame * format().channels + channel].
    /// Returns  the number of decoded frames; less than `frames` only at the end of the file.
    /// Errors   throws Failure if the disk cannot be read.
    std::size_t read(float* out, std::size_t frames);

    /// Whether decoding ended before format().frames, because the data is damaged.
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

/// Round a sample to PCM16: full scale 1 is 32768, values out of range are clipped, NaN becomes 0.
std::int16_t toPcm16(float sample);

/// Reads a file from its first frame to its last frame. Mono is copied to both channels. Samples that the
/// file stores as PCM16 do not change.
class Pcm16Reader {
public:
    /// Open a file. `gain` is a factor; exactly 1 leaves every sample unchanged.
    /// Errors  throws Failure.
    Pcm16Reader(const std::string& path, float gain) : file_(path), gain_(gain) {}

    /// Decode up to `frames` frames.
    /// Shape    out[frame * 2 + channel].
    /// Returns  the number of decoded frames; less than `frames` only at the end of the file.
    /// Errors   throws Failure if the disk cannot be read.
    std::size_t read(std::int16_t* out, std::size_t frames);

    /// Whether the data is damaged, as SoundFile::isDamaged() reports.
    bool isDamaged() const { return file_.isDamaged(); }

private:
    SoundFile file_;
    float gain_;
    std::vector<float> decoded_;
};

/// Decode a whole file and count its frames. The result is less than format().frames if the data is damaged.
/// Errors  throws Failure.
std::int64_t countDecodedFrames(const std::string& path);

/// Path lookup: find the spelling of a path on the disk, which may store accented letters in composed or
/// decomposed form.
/// Returns  `path` if it exists or if no item matches; otherwise the absolute path of the matching item.
std::string pathOnDisk(const std::string& path);

/// One message for each kind of missing content: frames before the stated end, and omitted streams.
/// Returns  no message for a whole file.
std::vector<std::string> missingParts(const std::string& path, const SoundFormat& format);

/// The message for a file whose data stops decoding before its last frame.
std::string formatDamage(const std::string& path);

} // namespace kvx
