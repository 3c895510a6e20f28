// Opens and reads a sound file of arbitrary bytes. The last byte of the input is not part of the file: it
// selects the client format, either the file's own format or floats with other channels, byte order or rate.
#include "fuzz/file_in_memory.h"
#include "fuzz/require.h"

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace {

// Frames read per file at most, because a few bytes may describe hours of sound.
constexpr SInt64 mostFrames = 1 << 16;
constexpr UInt32 framesPerRead = 1000;

/// What to do with the file, as selected by the last byte of the input.
struct Choice {
    explicit Choice(std::uint8_t byte) : bits(byte) {}
    bool hasClientFormat() const { return bits & 1; }
    bool isBigEndian() const { return bits & 2; }
    bool hasOtherRate() const { return bits & 4; }
    UInt32 channels(UInt32 ofFile) const { return bits & 8 ? 1 + (bits >> 5) : ofFile; }
    bool seeksBack() const { return bits & 16; }
    const std::uint8_t bits;
};

AudioStreamBasicDescription clientFormat(const AudioStreamBasicDescription& file, Choice choice)
{
    AudioStreamBasicDescription format = {};
    format.mSampleRate = choice.hasOtherRate() ? 22050 : file.mSampleRate;
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags =
        kAudioFormatFlagsNativeFloatPacked | (choice.isBigEndian() ? UInt32{kAudioFormatFlagIsBigEndian} : 0);
    format.mChannelsPerFrame = choice.channels(file.mChannelsPerFrame);
    format.mBytesPerPacket = format.mBytesPerFrame = 4 * format.mChannelsPerFrame;
    format.mFramesPerPacket = 1;
    format.mBitsPerChannel = 32;
    return format;
}

template <class Value>
Value get(ExtAudioFileRef file, ExtAudioFilePropertyID property)
{
    Value value{};
    UInt32 size = sizeof value;
    require(ExtAudioFileGetProperty(file, property, &size, &value) == noErr,
            "an open sound file has this property");
    return value;
}

void readProperties(ExtAudioFileRef file)
{
    const auto format = get<AudioStreamBasicDescription>(file, kExtAudioFileProperty_FileDataFormat);
    require(format.mChannelsPerFrame >= 1 && format.mChannelsPerFrame <= 1024,
            "a sound file has 1 to 1024 channels");
    require(format.mSampleRate >= 1, "a sound file has a sample rate");
    const auto audioFile = get<AudioFileID>(file, kExtAudioFileProperty_AudioFile);
    Float64 seconds = -1;
    UInt32 size = sizeof seconds;
    require(AudioFileGetProperty(audioFile, kAudioFilePropertyEstimatedDuration, &size, &seconds) == noErr &&
                seconds >= 0 && std::isfinite(seconds),
            "a sound file has a finite duration");
    for (const AudioFilePropertyID property : {'ffmt', 'dfmt', 'bcnt', 'pcnt', 'psze', 'brat', 'sbtd'}) {
        std::uint8_t value[64];
        size = sizeof value;
        (void)AudioFileGetProperty(audioFile, property, &size, value);
    }
    require(AudioFileClose(audioFile) == noErr, "the AudioFileID of an ExtAudioFileRef can be closed");
}

SInt64 readAll(ExtAudioFileRef file, UInt32 bytesPerFrame, UInt32 channels)
{
    std::vector<std::uint8_t> memory(std::size_t{framesPerRead} * bytesPerFrame);
    SInt64 frames = 0;
    while (frames < mostFrames) {
        UInt32 got = framesPerRead;
        AudioBufferList list = {1, {{channels, static_cast<UInt32>(memory.size()), memory.data()}}};
        const OSStatus status = ExtAudioFileRead(file, &got, &list);
        if (status != noErr || got == 0) break;
        require(got <= framesPerRead, "a read returns at most the requested number of frames");
        require(list.mBuffers[0].mDataByteSize == got * bytesPerFrame,
                "a read sets the byte count to that of the frames");
        frames += got;
    }
    return frames;
}

void use(ExtAudioFileRef file, Choice choice)
{
    readProperties(file);
    const auto format = get<AudioStreamBasicDescription>(file, kExtAudioFileProperty_FileDataFormat);
    const auto length = get<SInt64>(file, kExtAudioFileProperty_FileLengthFrames);
    require(length >= 0, "the length of a sound file is never negative");
    if (choice.hasClientFormat()) {
        const AudioStreamBasicDescription client = clientFormat(format, choice);
        (void)ExtAudioFileSetProperty(file, kExtAudioFileProperty_ClientDataFormat, sizeof client, &client);
    }
    const auto client = get<AudioStreamBasicDescription>(file, kExtAudioFileProperty_ClientDataFormat);
    if (client.mFormatID != kAudioFormatLinearPCM) return;
    const SInt64 frames = readAll(file, client.mBytesPerFrame, client.mChannelsPerFrame);
    if (client.mSampleRate == format.mSampleRate)
        require(frames <= length, "a sound file has at most as many frames as its length says");
    if (choice.seeksBack() && ExtAudioFileSeek(file, length / 2) == noErr)
        readAll(file, client.mBytesPerFrame, client.mChannelsPerFrame);
    SInt64 position = -1;
    require(ExtAudioFileTell(file, &position) == noErr && position >= 0 && position <= length,
            "the position lies in the sound file");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) return 0;
    const FileInMemory memory(bytes, size - 1);
    const CFURLRef url = memory.createUrl();
    ExtAudioFileRef file = nullptr;
    const OSStatus status = ExtAudioFileOpenURL(url, &file);
    require((status == noErr) == (file != nullptr), "opening returns a file, or a status without a file");
    CFRelease(url);
    if (file) {
        use(file, Choice(bytes[size - 1]));
        require(ExtAudioFileDispose(file) == noErr, "an open sound file can be disposed");
    }
    require(KVXPlatformGetLiveCounts(nullptr, 0) == 0, "every platform object is released");
    return 0;
}
