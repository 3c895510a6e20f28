#include "tests/platform/audiofile/sound_files.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace sound {

Folder::Folder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "kvx-sound-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
    path_ = pattern;
}

Folder::~Folder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Bytes load(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

void save(const std::string& path, const Bytes& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file) throw std::runtime_error("cannot write " + path);
}

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes whole;
    for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

Bytes ofText(const char* text, std::size_t size)
{
    Bytes bytes(text, text + std::strlen(text));
    bytes.resize(size);
    return bytes;
}

Bytes firstOf(const Bytes& bytes, std::size_t size)
{
    return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(size, bytes.size())));
}

Bytes afterFirst(const Bytes& bytes, std::size_t size)
{
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(std::min(size, bytes.size())), bytes.end());
}

std::vector<float> music(int channels, int frames)
{
    std::vector<float> samples;
    for (int f = 0; f < frames; ++f)
        for (int c = 0; c < channels; ++c)
            samples.push_back(
                static_cast<float>(0.6 * std::sin(f * 0.031 * (c + 1)) + 0.2 * std::sin(f * 0.4 + c)));
    return samples;
}

void write(const std::string& path, int format, int rate, int channels, const std::vector<float>& samples)
{
    SF_INFO info = {};
    info.format = format;
    info.samplerate = rate;
    info.channels = channels;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) throw std::runtime_error(path + ": " + sf_strerror(nullptr));
    const auto count = static_cast<sf_count_t>(samples.size());
    const bool isWritten = sf_write_float(file, samples.data(), count) == count;
    sf_close(file);
    if (!isWritten) throw std::runtime_error("cannot write " + path);
}

Bytes varyingMp3(const std::string& path)
{
    SF_INFO info = {};
    info.format = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;
    info.samplerate = 44100;
    info.channels = 2;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    int mode = SF_BITRATE_MODE_VARIABLE;
    sf_command(file, SFC_SET_BITRATE_MODE, &mode, sizeof mode);
    std::vector<float> samples;
    std::uint32_t state = 1;
    for (int i = 0; i < 882000; ++i) {
        state = state * 1664525 + 1013904223;
        samples.push_back(i < 441000 ? static_cast<float>(state >> 8) / 33554432.0f - 0.25f : 0.0f);
    }
    sf_write_float(file, samples.data(), 882000);
    sf_close(file);
    return load(path);
}

Decoded decode(const std::string& path)
{
    Decoded result;
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &result.info);
    if (!file) throw std::runtime_error(path + ": " + sf_strerror(nullptr));
    result.samples.resize(static_cast<std::size_t>(result.info.frames * result.info.channels));
    const auto got = sf_readf_float(file, result.samples.data(), result.info.frames);
    sf_close(file);
    result.samples.resize(static_cast<std::size_t>(got * result.info.channels));
    return result;
}

bool isSame(const std::vector<float>& a, const std::vector<float>& b)
{
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0);
}

CFURLRef urlOf(const std::string& path)
{
    return CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                   static_cast<CFIndex>(path.size()), false);
}

OSStatus statusOfOpening(const std::string& path) { return File(path).status; }

File::File(const std::string& path)
{
    const CFURLRef url = urlOf(path);
    status = ExtAudioFileOpenURL(url, &file_);
    CFRelease(url);
}

File::~File()
{
    if (file_) ExtAudioFileDispose(file_);
}

AudioStreamBasicDescription File::format(ExtAudioFilePropertyID property) const
{
    AudioStreamBasicDescription format = {};
    UInt32 size = sizeof format;
    ExtAudioFileGetProperty(file_, property, &size, &format);
    return format;
}

SInt64 File::frames() const
{
    SInt64 frames = -1;
    UInt32 size = sizeof frames;
    ExtAudioFileGetProperty(file_, kExtAudioFileProperty_FileLengthFrames, &size, &frames);
    return frames;
}

KVXSoundFileReport File::report() const
{
    KVXSoundFileReport report = {-1, -1, 0, 0};
    KVXPlatformReportSoundFile(file_, &report);
    return report;
}

SInt64 File::tell() const
{
    SInt64 frame = -1;
    ExtAudioFileTell(file_, &frame);
    return frame;
}

OSStatus File::setClient(const AudioStreamBasicDescription& format) const
{
    return ExtAudioFileSetProperty(file_, kExtAudioFileProperty_ClientDataFormat, sizeof format, &format);
}

OSStatus File::read(UInt32 frames, UInt32 bytesPerFrame, UInt32 channels, Bytes& out) const
{
    out.resize(std::size_t{frames} * bytesPerFrame);
    AudioBufferList list = {1, {{channels, static_cast<UInt32>(out.size()), out.data()}}};
    const OSStatus result = ExtAudioFileRead(file_, &frames, &list);
    if (result == noErr && list.mBuffers[0].mDataByteSize != frames * bytesPerFrame) return -1;
    out.resize(std::size_t{frames} * bytesPerFrame);
    return result;
}

std::vector<float> File::readFloats(UInt32 channels, UInt32 atATime) const
{
    std::vector<float> samples;
    const AudioStreamBasicDescription file = format();
    const AudioStreamBasicDescription client = format(kExtAudioFileProperty_ClientDataFormat);
    const double expected = static_cast<double>(frames()) * client.mSampleRate / file.mSampleRate;
    const auto most = static_cast<UInt32>(std::min<double>(atATime, expected + 2));
    for (Bytes bytes; read(most, 4 * channels, channels, bytes) == noErr && !bytes.empty();) {
        const std::size_t before = samples.size();
        samples.resize(before + bytes.size() / 4);
        std::memcpy(&samples[before], bytes.data(), bytes.size());
    }
    return samples;
}

AudioStreamBasicDescription floats(double rate, UInt32 channels)
{
    return pcm(rate, channels, 32, kAudioFormatFlagsNativeFloatPacked);
}

AudioStreamBasicDescription pcm(double rate, UInt32 channels, UInt32 bits, UInt32 flags)
{
    AudioStreamBasicDescription format = {};
    format.mSampleRate = rate;
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags = flags;
    format.mBitsPerChannel = bits;
    format.mChannelsPerFrame = channels;
    format.mFramesPerPacket = 1;
    format.mBytesPerFrame = format.mBytesPerPacket =
        bits / 8 * (flags & kAudioFormatFlagIsNonInterleaved ? 1 : channels);
    return format;
}

std::string code(std::int64_t value)
{
    std::string name;
    for (int shift = 24; shift >= 0; shift -= 8) name += static_cast<char>(value >> shift & 0xFF);
    const bool isText = std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return isText ? name : std::to_string(value);
}

std::string text(const AudioStreamBasicDescription& f)
{
    char line[200];
    std::snprintf(
        line, sizeof line, "%g Hz %s flags %lx packet %lu bytes %lu frames, frame %lu, %lu ch, %lu bits",
        f.mSampleRate, code(f.mFormatID).c_str(), static_cast<unsigned long>(f.mFormatFlags),
        static_cast<unsigned long>(f.mBytesPerPacket), static_cast<unsigned long>(f.mFramesPerPacket),
        static_cast<unsigned long>(f.mBytesPerFrame), static_cast<unsigned long>(f.mChannelsPerFrame),
        static_cast<unsigned long>(f.mBitsPerChannel));
    return line;
}

unsigned alive()
{
    KVXLiveCount rows[32];
    unsigned count = 0;
    const auto kinds = std::min<std::uint32_t>(KVXPlatformGetLiveCounts(rows, 32), 32);
    for (std::uint32_t i = 0; i < kinds; ++i) count += rows[i].count;
    return count;
}

} // namespace sound
