#include "auplayer/decode_file.h"

#include "plugin/release.h"
#include "plugin/truncate.h"
#include "plugin/zeroed.h"

#include <algorithm>
#include <memory>

namespace auplayer {

namespace {

using OwnedFile = std::unique_ptr<std::remove_pointer_t<ExtAudioFileRef>, Releases<ExtAudioFileDispose>>;

/// The state while a file is being decoded.
struct Decoding {
    LoadRequest& request;
    AUPlayerData& player;
    Zeroed<float> samples; ///< samples, owned here until they have been read
    /// Declared after `samples`, so that the file is closed before the samples are freed.
    OwnedFile file;
    AudioStreamBasicDescription fileFormat;
    UInt64 frames; ///< number of frames in the file, at the file's own sample rate

    bool succeeded(OSStatus status) const { return keepStatus(player, status); }
};

/// Return a format of 32-bit float samples with `bytesPerFrame` bytes per frame in each buffer.
AudioStreamBasicDescription floatFormat(double sampleRate, UInt32 flags, UInt32 channels,
                                        UInt32 bytesPerFrame)
{
    return {sampleRate, kAudioFormatLinearPCM, flags, bytesPerFrame, 1, bytesPerFrame, channels, 32, 0};
}

bool openFile(Decoding& decoding)
{
    ExtAudioFileRef file = nullptr;
    if (!decoding.succeeded(ExtAudioFileOpenURL(decoding.request.url, &file))) return false;
    decoding.file.reset(file);
    return file != nullptr;
}

bool readFileFormat(Decoding& decoding)
{
    UInt32 size = sizeof decoding.fileFormat;
    return decoding.succeeded(ExtAudioFileGetProperty(
        decoding.file.get(), kExtAudioFileProperty_FileDataFormat, &size, &decoding.fileFormat));
}

void chooseFormats(const Decoding& decoding)
{
    const double rate = decoding.fileFormat.mSampleRate;
    const auto inputChannels = static_cast<UInt32>(decoding.request.inputChannels);
    const auto outputChannels = static_cast<UInt32>(decoding.request.outputChannels);
    constexpr UInt32 sampleBytes = sizeof(float);
    AUPlayerData& player = decoding.player;
    static_cast<AudioStreamBasicDescription&>(*player.clientFormat) =
        floatFormat(rate, kAudioFormatFlagsNativeFloatPacked, inputChannels, sampleBytes * inputChannels);
    static_cast<AudioStreamBasicDescription&>(*player.outputFormat) =
        floatFormat(rate, kAudioFormatFlagsNativeFloatPacked | kAudioFormatFlagIsNonInterleaved,
                    outputChannels, sampleBytes);
    storeRelaxed(player.position, UInt32{0});
    storeRelaxed(player.endFrame, UInt32{0});
}

bool readLength(Decoding& decoding)
{
    SInt64 length = 0;
    UInt32 size = sizeof length;
    if (!decoding.succeeded(ExtAudioFileGetProperty(decoding.file.get(),
                                                    kExtAudioFileProperty_FileLengthFrames, &size, &length)))
        return false;
    const double ratio = decoding.player.clientFormat->mSampleRate / decoding.fileFormat.mSampleRate;
    decoding.frames = static_cast<UInt64>(truncateTo64(static_cast<double>(length) * ratio));
    return true;
}

bool setClientFormat(const Decoding& decoding)
{
    const AudioStreamBasicDescription* const format = decoding.player.clientFormat;
    return decoding.succeeded(ExtAudioFileSetProperty(
        decoding.file.get(), kExtAudioFileProperty_ClientDataFormat, sizeof *format, format));
}

/// Allocate memory for the samples. A file without frames or channels needs no memory. Returns false if
/// memory is missing.
bool allocateSamples(Decoding& decoding)
{
    LoadedAudio& audio = *decoding.player.loadedAudio;
    const UInt64 channels = decoding.player.clientFormat->mChannelsPerFrame;
    const UInt64 frames = decoding.frames;
    audio.frameCount = static_cast<UInt32>(frames);
    audio.format = *decoding.player.clientFormat;
    audio.byteSize = static_cast<UInt32>(sizeof(float) * channels * frames);
    if (frames == 0 || channels == 0) return true;
    if (channels <= static_cast<UInt64>(largestAllocation) / frames)
        decoding.samples = allocateZeroed<float>(static_cast<std::int64_t>(channels * frames));
    if (decoding.samples) return true;
    decoding.request.isOutOfMemory = true;
    return false;
}

void describeData(const Decoding& decoding)
{
    AUPlayerData& player = decoding.player;
    const CAStreamBasicDescription& format = *player.clientFormat;
    const auto keep = [](HostBoolean& field, bool value) { storeRelaxed(field, HostBoolean{value}); };
    const auto count = [](HostInteger& field, UInt32 value) {
        storeRelaxed(field, static_cast<HostInteger>(value));
    };
    keep(player.dataIsPCM, format.isPCM());
    keep(player.dataIsInterleaved, format.isInterleaved());
    keep(player.dataIsFloat, format.isFloat());
    keep(player.dataIsNativeEndian, format.isNativeEndian());
    keep(player.dataIsSignedInteger, format.isSignedInteger());
    count(player.dataNumberInterleavedChannels, format.numberInterleavedChannels());
    count(player.dataNumberChannelStreams, format.numberChannelStreams());
    count(player.dataNumberChannels, format.numberChannels());
    count(player.dataSampleWordSize, format.sampleWordSize());
    decoding.request.hasFormats = true;
}

/// Read all samples in one call, then store their address in the record. A failed read returns false, but
/// intentionally does not store its status, so `Lasterror` stays 0.
bool readSamples(Decoding& decoding)
{
    AUPlayerData& player = decoding.player;
    LoadedAudio& audio = *player.loadedAudio;
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {player.clientFormat->mChannelsPerFrame, audio.byteSize, decoding.samples.get()};
    auto frames = static_cast<UInt32>(decoding.frames);
    if (ExtAudioFileRead(decoding.file.get(), &frames, &list) != noErr) return false;
    storeReleased(audio.samples, decoding.samples.release());
    audio.frameCount = std::min(frames, static_cast<UInt32>(decoding.frames));
    storeRelaxed(player.endFrame, audio.frameCount);
    storeRelaxed(player.loopIn, unset);
    storeRelaxed(player.loopOut, unset);
    storeRelaxed(player.isLooping, HostBoolean{false});
    return true;
}

/// Read the file's estimated duration. The inner audio file belongs to the extended audio file, but is
/// intentionally closed here.
bool readDuration(const Decoding& decoding)
{
    AudioFileID handle = nullptr;
    UInt32 size = sizeof handle;
    if (!decoding.succeeded(
            ExtAudioFileGetProperty(decoding.file.get(), kExtAudioFileProperty_AudioFile, &size, &handle)))
        return false;
    double seconds = 0;
    size = sizeof seconds;
    const bool isKnown = decoding.succeeded(
        AudioFileGetProperty(handle, kAudioFilePropertyEstimatedDuration, &size, &seconds));
    if (isKnown) {
        storeRelaxed(decoding.player.trackLength, seconds);
        storeRelaxed(decoding.player.sampleRate, decoding.fileFormat.mSampleRate);
    }
    release(AudioFileClose, handle);
    return isKnown;
}

} // namespace

bool decodeFile(LoadRequest& request)
{
    Decoding decoding = {request, *request.player, nullptr, nullptr, {}, 0};
    if (!openFile(decoding) || !readFileFormat(decoding)) return false;
    chooseFormats(decoding);
    if (!readLength(decoding) || !setClientFormat(decoding) || !allocateSamples(decoding)) return false;
    describeData(decoding);
    return readSamples(decoding) && readDuration(decoding);
}

} // namespace auplayer
