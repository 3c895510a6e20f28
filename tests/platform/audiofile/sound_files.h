// Sound files for tests: written by libsndfile into a folder of the test's own, read by libsndfile, and read
// through the platform.
#pragma once

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/MacErrors.h>
#include <KVXPlatform/KVXPlatform.h>

#include <sndfile.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace sound {

using Bytes = std::vector<std::uint8_t>;

/// A folder that goes with all that is in it.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string operator/(const std::string& name) const { return path_ + '/' + name; }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

Bytes load(const std::string& path);
void save(const std::string& path, const Bytes& bytes);

/// Files in a row, as one.
Bytes joined(std::initializer_list<Bytes> parts);
/// Bytes that begin with a text; the rest are zeros.
Bytes ofText(const char* text, std::size_t size);
/// The first bytes of a file.
Bytes firstOf(const Bytes& bytes, std::size_t size);
/// The bytes after those.
Bytes afterFirst(const Bytes& bytes, std::size_t size);

/// Interleaved samples that differ from frame to frame and channel to channel, within 0.8.
std::vector<float> music(int channels, int frames);

/// Write a file in one of libsndfile's formats.
void write(const std::string& path, int format, int rate, int channels, const std::vector<float>& samples);

/// Write an MP3 file of a varying rate, ten seconds, the first half of it noise; its bytes.
Bytes varyingMp3(const std::string& path);

/// What libsndfile makes of a file, read in one piece.
struct Decoded {
    SF_INFO info{};
    std::vector<float> samples;
};
Decoded decode(const std::string& path);

/// Whether two rows of samples are the same to the last bit.
bool isSame(const std::vector<float>& a, const std::vector<float>& b);

CFURLRef urlOf(const std::string& path);

/// Open a file and say how that went; closes it at once.
OSStatus statusOfOpening(const std::string& path);

/// An extended file, disposed at the end.
class File {
public:
    explicit File(const std::string& path);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    operator ExtAudioFileRef() const { return file_; }
    AudioStreamBasicDescription
    format(ExtAudioFilePropertyID property = kExtAudioFileProperty_FileDataFormat) const;
    SInt64 frames() const;
    KVXSoundFileReport report() const;
    SInt64 tell() const;
    OSStatus setClient(const AudioStreamBasicDescription& format) const;

    /// Read up to `frames` frames of an interleaved client format of so many bytes a frame.
    OSStatus read(UInt32 frames, UInt32 bytesPerFrame, UInt32 channels, Bytes& out) const;

    /// The same of 32-bit float, to the end, `atATime` frames at once.
    std::vector<float> readFloats(UInt32 channels, UInt32 atATime = 1u << 30) const;

    OSStatus status = 0; // of opening

private:
    ExtAudioFileRef file_ = nullptr;
};

/// Native 32-bit float, interleaved.
AudioStreamBasicDescription floats(double rate, UInt32 channels);
/// Any interleaved linear PCM.
AudioStreamBasicDescription pcm(double rate, UInt32 channels, UInt32 bits, UInt32 flags);

/// A format, for a failing test.
std::string text(const AudioStreamBasicDescription& format);
std::string code(std::int64_t fourCharacters);

/// Platform objects that somebody still has to release.
unsigned alive();

} // namespace sound
