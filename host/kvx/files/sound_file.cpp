#include "host/kvx/files/sound_file.h"

#include "host/kvx/files/file_failure.h"
#include "host/kvx/files/path_lookup.h"
#include "host/kvx/text/failure.h"
#include "host/runtime/support/checked_size.h"

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>

#include <fmt/format.h>

#include <algorithm>
#include <type_traits>
#include <vector>

namespace kvx {
namespace {

struct Release {
    void operator()(const void* object) const { CFRelease(object); }
};
using OwnedURL = std::unique_ptr<std::remove_pointer_t<CFURLRef>, Release>;

ExtAudioFileRef open(const std::string& path)
{
    const auto* bytes = reinterpret_cast<const UInt8*>(path.data());
    const OwnedURL url(CFURLCreateFromFileSystemRepresentation(nullptr, bytes, CFIndex(path.size()), false));
    ExtAudioFileRef file = nullptr;
    const OSStatus status = url ? ExtAudioFileOpenURL(url.get(), &file) : OSStatus{fnfErr};
    if (status != noErr) throw fileFailure(path, status);
    return file;
}

// Native float, interleaved: what the file holds, in its own rate.
AudioStreamBasicDescription floatFormat(double sampleRate, UInt32 channels)
{
    const auto frameBytes = UInt32(channels * sizeof(float));
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

SoundFormat describe(ExtAudioFileRef file, const std::string& path)
{
    AudioStreamBasicDescription stored = {};
    UInt32 size = sizeof stored;
    OSStatus status = ExtAudioFileGetProperty(file, kExtAudioFileProperty_FileDataFormat, &size, &stored);
    KVXSoundFileReport report = {};
    if (status == noErr) status = KVXPlatformReportSoundFile(file, &report);
    if (status != noErr) throw fileFailure(path, status);

    SoundFormat format;
    format.sampleRate = int(stored.mSampleRate);
    format.fileChannels = int(stored.mChannelsPerFrame);
    format.channels = std::min(format.fileChannels, 2);
    format.frames = report.frames;
    format.isCutShort = report.isCutShort;
    format.statedFrames = report.statedFrames;
    format.omittedStreams = report.omittedStreams;
    return format;
}

} // namespace

void SoundFile::Dispose::operator()(OpaqueExtAudioFile* file) const { ExtAudioFileDispose(file); }

SoundFile::SoundFile(const std::string& path)
    : path_(pathOnDisk(path)), file_(open(path_)), format_(describe(file_.get(), path_))
{
    if (format_.frames < 1) throw Failure(fmt::format("{} holds no sound; choose another file", path_));
    const AudioStreamBasicDescription client = floatFormat(format_.sampleRate, UInt32(format_.channels));
    const OSStatus status =
        ExtAudioFileSetProperty(file_.get(), kExtAudioFileProperty_ClientDataFormat, sizeof client, &client);
    if (status != noErr) throw fileFailure(path_, status);
}

std::size_t SoundFile::read(float* out, std::size_t frames)
{
    auto got = UInt32(frames);
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {UInt32(format_.channels),
                        UInt32(host::checkedSize(frames, format_.channels, sizeof(float))), out};
    const OSStatus status = ExtAudioFileRead(file_.get(), &got, &list);
    if (status != noErr) throw fileFailure(path_, status);
    framesRead_ += got;
    if (got < frames && framesRead_ < format_.frames) isDamaged_ = true;
    return got;
}

std::int64_t framesThatDecode(const std::string& path)
{
    constexpr std::size_t blockFrames = 1 << 14;
    SoundFile file(path);
    std::vector<float> block(blockFrames * std::size_t(file.format().channels));
    std::int64_t frames = 0;
    while (const std::size_t got = file.read(block.data(), blockFrames)) frames += std::int64_t(got);
    return frames;
}

} // namespace kvx
