// Sound files for tests. libsndfile writes them; libsndfile and the platform read them.
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

/// A temporary folder, which the destructor removes with its contents.
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

/// Concatenate files.
Bytes joined(std::initializer_list<Bytes> parts);
/// Make `size` bytes: a text, followed by zeros.
Bytes ofText(const char* text, std::size_t size);
/// Get the first `size` bytes.
Bytes firstOf(const Bytes& bytes, std::size_t size);
/// Get all bytes after the first `size` bytes.
Bytes afterFirst(const Bytes& bytes, std::size_t size);

/// Make interleaved samples that differ in every frame and channel, between -0.8 and 0.8.
std::vector<float> music(int channels, int frames);

/// Write a sound file; `format` is a format of libsndfile.
void write(const std::string& path, int format, int rate, int channels, const std::vector<float>& samples);

/// Write an MP3 file of varying bit rate: ten seconds, the first half noise. Returns its bytes.
Bytes varyingMp3(const std::string& path);

/// The properties and samples of a file, decoded by libsndfile in one read.
struct Decoded {
    SF_INFO info{};
    std::vector<float> samples;
};
Decoded decode(const std::string& path);

/// Whether two arrays of samples are bit-identical.
bool isSame(const std::vector<float>& a, const std::vector<float>& b);

CFURLRef urlOf(const std::string& path);

/// Open and close a file. Returns the status of the opening.
OSStatus statusOfOpening(const std::string& path);

/// An open extended audio file, which the destructor closes.
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

    /// Read up to `frames` frames in an interleaved client format.
    OSStatus read(UInt32 frames, UInt32 bytesPerFrame, UInt32 channels, Bytes& out) const;

    /// Read the rest of the file as 32-bit float, `atATime` frames per read.
    std::vector<float> readFloats(UInt32 channels, UInt32 atATime = 1u << 30) const;

    OSStatus status = 0; ///< status of the opening

private:
    ExtAudioFileRef file_ = nullptr;
};

/// Get the format of native 32-bit float, interleaved.
AudioStreamBasicDescription floats(double rate, UInt32 channels);
/// Get a linear PCM format, non-interleaved if the flags state it.
AudioStreamBasicDescription pcm(double rate, UInt32 channels, UInt32 bits, UInt32 flags);

/// A format or a four-character code as text, for failure messages.
std::string text(const AudioStreamBasicDescription& format);
std::string code(std::int64_t fourCharacters);

/// Get the number of live platform objects.
unsigned alive();

} // namespace sound
