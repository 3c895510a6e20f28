// Steps of a load: the file into memory.
#include "auplayer/load_steps.h"

#include "plugin/truncate.h"

#include <algorithm>

namespace auplayer::load_steps {

namespace {

/// 32-bit float, `bytesPerFrame` in each buffer.
AudioStreamBasicDescription floatFormat(double sampleRate, UInt32 flags, UInt32 channels,
                                        UInt32 bytesPerFrame)
{
    return {sampleRate, kAudioFormatLinearPCM, flags, bytesPerFrame, 1, bytesPerFrame, channels, 32, 0};
}

} // namespace

bool openFile(Load& load)
{
    ExtAudioFileRef file = nullptr;
    if (!load.succeeded(ExtAudioFileOpenURL(load.request.url, &file))) return false;
    load.file = file;
    return file != nullptr;
}

bool readFileFormat(Load& load)
{
    UInt32 size = sizeof(AudioStreamBasicDescription);
    AudioStreamBasicDescription* const format = &load.fileFormat;
    return load.succeeded(
        ExtAudioFileGetProperty(load.file, kExtAudioFileProperty_FileDataFormat, &size, format));
}

bool chooseFormats(Load& load)
{
    const double rate = load.fileFormat.mSampleRate;
    const auto inputChannels = static_cast<UInt32>(load.request.inputChannels);
    const auto outputChannels = static_cast<UInt32>(load.request.outputChannels);
    constexpr UInt32 sampleBytes = sizeof(float);
    static_cast<AudioStreamBasicDescription&>(*load.player.clientFormat) =
        floatFormat(rate, kAudioFormatFlagsNativeFloatPacked, inputChannels, sampleBytes * inputChannels);
    static_cast<AudioStreamBasicDescription&>(*load.player.outputFormat) =
        floatFormat(rate, kAudioFormatFlagsNativeFloatPacked | kAudioFormatFlagIsNonInterleaved,
                    outputChannels, sampleBytes);
    storeRelaxed(load.player.position, UInt32{0});
    storeRelaxed(load.player.endFrame, UInt32{0});
    return true;
}

bool readLength(Load& load)
{
    SInt64 length = 0;
    UInt32 size = sizeof length;
    if (!load.succeeded(
            ExtAudioFileGetProperty(load.file, kExtAudioFileProperty_FileLengthFrames, &size, &length)))
        return false;
    const double ratio = load.player.clientFormat->mSampleRate / load.fileFormat.mSampleRate;
    load.frames = static_cast<UInt64>(truncateTo64(static_cast<double>(length) * ratio));
    return true;
}

bool setClientFormat(Load& load)
{
    const AudioStreamBasicDescription* const format = load.player.clientFormat;
    return load.succeeded(
        ExtAudioFileSetProperty(load.file, kExtAudioFileProperty_ClientDataFormat, sizeof *format, format));
}

/// Where there are no frames, or no channels, there are no samples, and no memory is needed.
bool allocateSamples(Load& load)
{
    LoadedAudio& audio = *load.player.loadedAudio;
    const UInt64 channels = load.player.clientFormat->mChannelsPerFrame;
    audio.frameCount = static_cast<UInt32>(load.frames);
    audio.format = *load.player.clientFormat;
    audio.byteSize = static_cast<UInt32>(sizeof(float) * channels * load.frames);
    if (load.frames == 0 || channels == 0) return true;
    if (channels <= static_cast<UInt64>(largestAllocation) / load.frames)
        load.samples = allocateZeroed<float>(static_cast<std::int64_t>(channels * load.frames));
    if (load.samples) return true;
    load.request.isOutOfMemory = true;
    return false;
}

bool describeData(Load& load)
{
    AUPlayerData& player = load.player;
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
    load.request.hasFormats = true;
    return true;
}

/// All of it in one read, and only then for others to see. Its status goes nowhere: the one before it, a
/// success, stays.
bool readSamples(Load& load)
{
    LoadedAudio& audio = *load.player.loadedAudio;
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {load.player.clientFormat->mChannelsPerFrame, audio.byteSize, load.samples.get()};
    auto frames = static_cast<UInt32>(load.frames);
    if (ExtAudioFileRead(load.file, &frames, &list) != noErr) return false;
    storeReleased(audio.samples, load.samples.release());
    audio.frameCount = std::min(frames, static_cast<UInt32>(load.frames));
    storeRelaxed(load.player.endFrame, audio.frameCount);
    storeRelaxed(load.player.loopIn, unset);
    storeRelaxed(load.player.loopOut, unset);
    storeRelaxed(load.player.isLooping, HostBoolean{false});
    return true;
}

/// The handle that is asked for the duration belongs to the file, and is closed all the same, before it.
bool readDuration(Load& load)
{
    AudioFileID handle = nullptr;
    UInt32 size = sizeof handle;
    if (!load.succeeded(ExtAudioFileGetProperty(load.file, kExtAudioFileProperty_AudioFile, &size, &handle)))
        return false;
    double seconds = 0;
    size = sizeof seconds;
    const bool isKnown =
        load.succeeded(AudioFileGetProperty(handle, kAudioFilePropertyEstimatedDuration, &size, &seconds));
    if (isKnown) {
        storeRelaxed(load.player.trackLength, seconds);
        storeRelaxed(load.player.sampleRate, load.fileFormat.mSampleRate);
    }
    giveBack(AudioFileClose, handle);
    load.closeFile();
    return isKnown;
}

} // namespace auplayer::load_steps
