#include "host/kvx/files/sound_file.h"

#include "host/kvx/text/codes.h"
#include "host/kvx/text/failure.h"
#include "host/runtime/support/checked_size.h"

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>

#include <fmt/core.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <sys/stat.h>
#include <type_traits>

namespace kvx {
namespace {

#define READABLE_TYPES                                                                                       \
    "; kvx plays WAV, AIFF, CAF, FLAC, Ogg Vorbis, Opus, MP3 and the other formats that libsndfile reads"

// Error messages by status of the platform. The path of the file precedes each text.
constexpr struct {
    OSStatus status;
    const char* text;
} facts[] = {
    {fnfErr, " does not exist; check the name and the folder"},
    {dirNFErr, " does not exist; check the name and the folder"},
    {errFSNameTooLong, " has too long a name; check the name and the folder"},
    {permErr, " cannot be read: permission denied; change its permissions or copy it"},
    {tmfoErr, " cannot be opened: too many files are open; raise the limit with `ulimit -n 4096`"},
    {memFullErr, " cannot be opened: there is not enough memory; close other programs"},
    {ioErr, " cannot be read from its disk; check the disk, or get the file again"},
    {kAudioFileUnsupportedFileTypeError, " cannot be decoded (it is not a sound file)" READABLE_TYPES},
    {kAudioFileInvalidFileError, " cannot be decoded (it is damaged, or is not a sound file)" READABLE_TYPES},
};

/// Describe why the item at a path is not a sound file. The platform reports folders and empty files as
/// damaged.
/// Returns  null if the item looks like a readable file or does not exist.
const char* problemOfItem(const std::string& path)
{
    struct stat item = {};
    if (stat(path.c_str(), &item) != 0) return nullptr;
    if (S_ISDIR(item.st_mode)) return " is a folder; name the sound files in it";
    if (!S_ISREG(item.st_mode)) return " is not a plain file; copy it into a file first";
    if (item.st_size == 0) return " is empty; get the file again";
    return nullptr;
}

/// Make the error for a file that the platform refused with `status`.
Failure fileFailure(const std::string& path, OSStatus status)
{
    if (const char* problem = problemOfItem(path)) return Failure(path + problem);
    const auto* fact = std::find_if(std::begin(facts), std::end(facts),
                                    [status](const auto& each) { return each.status == status; });
    if (fact != std::end(facts)) return Failure(path + fact->text);
    if (status == kAudioFileUnsupportedDataFormatError)
        return Failure(
            fmt::format("{} has a coding, sample rate or number of channels that kvx does not play; "
                        "convert it to WAV, of {} to {} Hz and up to {} channels",
                        path, int{KVXLowestFileRate}, int{KVXHighestFileRate}, int{KVXMostFileChannels}));
    return Failure(fmt::format("{} cannot be read: {}; get the file again", path, formatStatus(status)));
}

struct Release {
    void operator()(const void* object) const { CFRelease(object); }
};
using OwnedURL = std::unique_ptr<std::remove_pointer_t<CFURLRef>, Release>;

ExtAudioFileRef open(const std::string& path)
{
    const auto* bytes = reinterpret_cast<const UInt8*>(path.data());
    const OwnedURL url(
        CFURLCreateFromFileSystemRepresentation(nullptr, bytes, static_cast<CFIndex>(path.size()), false));
    ExtAudioFileRef file = nullptr;
    const OSStatus status = url ? ExtAudioFileOpenURL(url.get(), &file) : OSStatus{fnfErr};
    if (status != noErr) throw fileFailure(path, status);
    return file;
}

/// The format of the samples that SoundFile::read() returns: interleaved native 32-bit float.
AudioStreamBasicDescription floatFormat(double sampleRate, UInt32 channels)
{
    const auto frameBytes = static_cast<UInt32>(channels * sizeof(float));
    return {sampleRate,
            kAudioFormatLinearPCM,
            kAudioFormatFlagsNativeFloatPacked,
            frameBytes,
            1,
            frameBytes,
            channels,
            8 * sizeof(float),
            0};
}

SoundFormat describe(ExtAudioFileRef file, const std::string& path, int mostChannels)
{
    AudioStreamBasicDescription stored = {};
    UInt32 size = sizeof stored;
    OSStatus status = ExtAudioFileGetProperty(file, kExtAudioFileProperty_FileDataFormat, &size, &stored);
    KVXSoundFileReport report = {};
    if (status == noErr) status = KVXPlatformReportSoundFile(file, &report);
    if (status != noErr) throw fileFailure(path, status);

    SoundFormat format;
    format.sampleRate = static_cast<int>(stored.mSampleRate);
    format.fileChannels = static_cast<int>(stored.mChannelsPerFrame);
    format.channels = std::min(format.fileChannels, mostChannels);
    format.frames = report.frames;
    format.isCutShort = report.isCutShort;
    format.statedFrames = report.statedFrames;
    format.omittedStreams = report.omittedStreams;
    return format;
}

} // namespace

std::string formatChannels(int channels)
{
    return channels == 1 ? "mono" : channels == 2 ? "stereo" : fmt::format("{} channels", channels);
}

void SoundFile::Dispose::operator()(OpaqueExtAudioFile* file) const { ExtAudioFileDispose(file); }

SoundFile::SoundFile(const std::string& path, int mostChannels)
    : path_(pathOnDisk(path)), file_(open(path_)), format_(describe(file_.get(), path_, mostChannels))
{
    if (format_.frames < 1) throw Failure(fmt::format("{} holds no sound; choose another file", path_));
    const AudioStreamBasicDescription client =
        floatFormat(format_.sampleRate, static_cast<UInt32>(format_.channels));
    const OSStatus status =
        ExtAudioFileSetProperty(file_.get(), kExtAudioFileProperty_ClientDataFormat, sizeof client, &client);
    if (status != noErr) throw fileFailure(path_, status);
}

std::size_t SoundFile::read(float* out, std::size_t frames)
{
    auto got = static_cast<UInt32>(frames);
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {static_cast<UInt32>(format_.channels),
                        static_cast<UInt32>(host::checkedSize(frames, format_.channels, sizeof(float))), out};
    const OSStatus status = ExtAudioFileRead(file_.get(), &got, &list);
    if (status != noErr) throw fileFailure(path_, status);
    position_ += got;
    if (got < frames && position_ < format_.frames) isDamaged_ = true;
    return got;
}

void SoundFile::seek(std::int64_t frame)
{
    const std::int64_t target = std::clamp(frame, std::int64_t{0}, format_.frames);
    if (target == position_) return;
    if (const OSStatus status = ExtAudioFileSeek(file_.get(), target); status != noErr)
        throw fileFailure(path_, status);
    position_ = target;
}

std::int16_t toPcm16(float sample)
{
    if (std::isnan(sample)) return 0;
    return static_cast<std::int16_t>(std::lrint(std::clamp(sample * 32768.0f, -32768.0f, 32767.0f)));
}

std::size_t Pcm16Reader::read(std::int16_t* out, std::size_t frames)
{
    const auto channels = static_cast<std::size_t>(file_.format().channels);
    decoded_.resize(host::checkedSize(frames, channels));
    const std::size_t got = file_.read(decoded_.data(), frames);
    for (std::size_t frame = 0; frame < got; ++frame)
        for (std::size_t channel = 0; channel < 2; ++channel)
            out[frame * 2 + channel] =
                toPcm16(decoded_[frame * channels + std::min(channel, channels - 1)] * gain_);
    return got;
}

std::int64_t countDecodedFrames(const std::string& path)
{
    constexpr std::size_t blockFrames = 1 << 14;
    SoundFile file(path);
    std::vector<float> block(blockFrames * static_cast<std::size_t>(file.format().channels));
    std::int64_t frames = 0;
    while (const std::size_t got = file.read(block.data(), blockFrames))
        frames += static_cast<std::int64_t>(got);
    return frames;
}

std::string pathOnDisk(const std::string& path)
{
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored)) return path;
    FSRef item;
    UInt8 found[PATH_MAX];
    const bool isFound =
        FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &item, nullptr) == noErr &&
        FSRefMakePath(&item, found, sizeof found) == noErr;
    return isFound ? reinterpret_cast<const char*>(found) : path;
}

std::vector<std::string> missingParts(const std::string& path, const SoundFormat& format)
{
    std::vector<std::string> messages;
    if (format.isCutShort && format.statedFrames > format.frames)
        messages.push_back(
            fmt::format("{} is cut short: it holds {} of the {} frames that its header states; get "
                        "the file again",
                        path, format.frames, format.statedFrames));
    else if (format.isCutShort)
        messages.push_back(fmt::format(
            "{} is cut short: it ends before the length that its header states; get the file again", path));
    if (format.omittedStreams > 0)
        messages.push_back(fmt::format("{} plays in part: {} of its chained streams cannot be decoded or {} "
                                       "another sample rate or number of channels; split it into files",
                                       path, format.omittedStreams,
                                       format.omittedStreams == 1 ? "has" : "have"));
    return messages;
}

std::string formatDamage(const std::string& path)
{
    return fmt::format("{} is damaged: not all of its frames decode; get the file again", path);
}

} // namespace kvx
