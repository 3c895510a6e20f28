// Reads sound files, which the platform decodes to 32-bit float or to PCM16 (16-bit integers), and formats
// messages about files that do not decode.
// All functions: [main].
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct OpaqueExtAudioFile; // declared by the platform

namespace kvx {

/// The format and the length of a sound file.
struct SoundFormat {
    int sampleRate = 0;               ///< sample rate in Hz, within the platform's limits
    int fileChannels = 0;             ///< number of channels in the file
    int channels = 0;                 ///< number of channels that SoundFile reads
    std::int64_t frames = 0;          ///< number of frames, as far as the platform can tell before decoding
    bool isCutShort = false;          ///< whether the file ends before the length that its header states
    std::int64_t statedFrames = 0;    ///< number of frames in the header; 0: the header states no number
    std::uint32_t omittedStreams = 0; ///< number of chained Ogg streams that the platform does not decode

    double duration() const { return static_cast<double>(frames) / sampleRate; } ///< duration in seconds
};

/// Format a number of channels: "mono", "stereo", "6 channels".
std::string formatChannels(int channels);

/// Reads an open sound file.
class SoundFile {
public:
    /// Open a sound file. If it has more than `mostChannels` channels, only the first ones are read. A file
    /// that is cut short can be opened, too.
    /// Errors  throws Failure with the reason and the next step.
    explicit SoundFile(const std::string& path, int mostChannels = 2);

    /// The path of the file, in the spelling of pathOnDisk().
    const std::string& path() const { return path_; }
    const SoundFormat& format() const { return format_; }

    /// Decode up to `frames` frames.
    /// Shape    out[frame * format().channels + channel].
    /// Returns  the number of decoded frames; less than `frames` only at the end of the file.
    /// Errors   throws Failure if the disk cannot be read.
    std::size_t read(float* out, std::size_t frames);

    /// Continue at the frame number `frame`, at most format().frames.
    /// Errors  throws Failure if the disk cannot be read.
    void seek(std::int64_t frame);

    /// Whether decoding ended before format().frames, because the data is damaged.
    bool isDamaged() const { return isDamaged_; }

private:
    struct Dispose {
        void operator()(OpaqueExtAudioFile* file) const;
    };
    std::string path_;
    std::unique_ptr<OpaqueExtAudioFile, Dispose> file_;
    SoundFormat format_;
    std::int64_t position_ = 0;
    bool isDamaged_ = false;
};

/// Round a sample to PCM16: full scale 1 is 32768, values out of range are clipped, NaN becomes 0.
std::int16_t toPcm16(float sample);

/// Reads a file as PCM16 stereo, from the first frame to the last. A mono file is copied to both channels.
/// With a gain of 1, samples that the file stores as PCM16 do not change.
class Pcm16Reader {
public:
    /// Open a file. `gain` is a factor that applies to each sample.
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

/// Decode a whole file and count the decoded frames. If data is damaged, these are less than
/// SoundFormat::frames.
/// Errors  throws Failure.
std::int64_t countDecodedFrames(const std::string& path);

/// Find the spelling of a path on the disk. The disk may store accented letters in composed or in decomposed
/// form, and the user may type the other form.
/// Returns  `path` if it exists or if no item matches; otherwise the absolute path of the matching item.
std::string pathOnDisk(const std::string& path);

/// Format a warning for each kind of missing content: frames at the end, and streams that are not decoded.
/// Returns  no warnings for a whole file.
std::vector<std::string> missingParts(const std::string& path, const SoundFormat& format);

/// Format the warning about a file whose data stops decoding before the last frame.
std::string formatDamage(const std::string& path);

} // namespace kvx
