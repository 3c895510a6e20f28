// The properties of AudioFile and ExtAudioFile: sizes, access, values, misuse.
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>

namespace {

constexpr int wav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

/// A file of two seconds, opened through both AudioFile and ExtAudioFile.
struct Opened {
    explicit Opened(int format, const char* name = "x", int channels = 2)
        : path(write(folder, format, name, channels)), file(path)
    {
        const CFURLRef url = sound::urlOf(path);
        EXPECT_EQ(AudioFileOpenURL(url, kAudioFileReadPermission, 0, &audioFile), noErr);
        CFRelease(url);
    }
    ~Opened() { EXPECT_EQ(AudioFileClose(audioFile), noErr); }

    static std::string write(const sound::Folder& folder, int format, const char* name, int channels)
    {
        sound::write(folder / name, format, 8000, channels, sound::music(channels, 16000));
        return folder / name;
    }

    sound::Folder folder;
    std::string path;
    sound::File file;
    AudioFileID audioFile = nullptr;
};

TEST(ExtendedProperties, SizesAccessAndMisuse)
{
    const struct {
        ExtAudioFilePropertyID property;
        UInt32 bytes;
        bool isWritable;
    } facts[] = {
        {kExtAudioFileProperty_FileDataFormat, 40, false},
        {kExtAudioFileProperty_ClientDataFormat, 40, true},
        {kExtAudioFileProperty_AudioFile, sizeof(void*), false},
        {kExtAudioFileProperty_FileMaxPacketSize, 4, false},
        {kExtAudioFileProperty_ClientMaxPacketSize, 4, false},
        {kExtAudioFileProperty_FileLengthFrames, 8, false},
    };
    Opened wav(wav16);
    for (const auto& fact : facts) {
        SCOPED_TRACE(sound::code(fact.property));
        UInt32 size = 77;
        Boolean isWritable = 2;
        EXPECT_EQ(ExtAudioFileGetPropertyInfo(wav.file, fact.property, &size, &isWritable), noErr);
        EXPECT_EQ(size, fact.bytes);
        EXPECT_EQ(isWritable, fact.isWritable ? 1 : 0);
        EXPECT_EQ(ExtAudioFileGetPropertyInfo(wav.file, fact.property, nullptr, nullptr), noErr)
            << "either out-pointer may be null";

        std::uint8_t value[48];
        std::memset(value, 0x55, sizeof value);
        size = fact.bytes;
        EXPECT_EQ(ExtAudioFileGetProperty(wav.file, fact.property, nullptr, value), paramErr);
        EXPECT_EQ(ExtAudioFileGetProperty(wav.file, fact.property, &size, nullptr), paramErr);
        size = fact.bytes - 1;
        EXPECT_EQ(ExtAudioFileGetProperty(wav.file, fact.property, &size, value),
                  kExtAudioFileError_InvalidPropertySize);
        EXPECT_EQ(size, fact.bytes - 1);
        EXPECT_EQ(value[0], 0x55) << "nothing is written";
        size = sizeof value;
        EXPECT_EQ(ExtAudioFileGetProperty(wav.file, fact.property, &size, value), noErr);
        EXPECT_EQ(size, fact.bytes) << "a larger buffer is accepted";
        EXPECT_EQ(value[fact.bytes], 0x55);

        EXPECT_EQ(ExtAudioFileSetProperty(wav.file, fact.property, fact.bytes, nullptr), paramErr);
        const OSStatus wrong = fact.isWritable ? OSStatus{kExtAudioFileError_InvalidPropertySize}
                                               : OSStatus{kExtAudioFileError_InvalidProperty};
        EXPECT_EQ(ExtAudioFileSetProperty(wav.file, fact.property, fact.bytes - 1, value), wrong);
        EXPECT_EQ(ExtAudioFileSetProperty(wav.file, fact.property, fact.bytes + 1, value), wrong);
        if (!fact.isWritable) {
            EXPECT_EQ(ExtAudioFileSetProperty(wav.file, fact.property, fact.bytes, value), wrong);
        }
    }
    UInt32 size = 4, value = 0;
    for (const ExtAudioFilePropertyID unknown : {'acnv', 'fclo', 'iobs', 'dfmt', 0}) {
        EXPECT_EQ(ExtAudioFileGetPropertyInfo(wav.file, unknown, &size, nullptr),
                  kExtAudioFileError_InvalidProperty);
        EXPECT_EQ(ExtAudioFileGetProperty(wav.file, unknown, &size, &value),
                  kExtAudioFileError_InvalidProperty);
        EXPECT_EQ(ExtAudioFileSetProperty(wav.file, unknown, size, &value),
                  kExtAudioFileError_InvalidProperty);
    }
    EXPECT_EQ(ExtAudioFileTell(wav.file, nullptr), paramErr);
}

TEST(ExtendedProperties, Values)
{
    const auto packetSize = [](ExtAudioFileRef file, ExtAudioFilePropertyID property, OSStatus expected) {
        UInt32 size = 4, value = 0;
        EXPECT_EQ(ExtAudioFileGetProperty(file, property, &size, &value), expected);
        return value;
    };
    constexpr auto ofFile = kExtAudioFileProperty_FileMaxPacketSize;
    constexpr auto ofClient = kExtAudioFileProperty_ClientMaxPacketSize;
    Opened wav(wav16);
    EXPECT_EQ(wav.file.frames(), 16000);
    EXPECT_EQ(packetSize(wav.file, ofFile, noErr), 4u);
    EXPECT_EQ(packetSize(wav.file, ofClient, noErr), 4u);
    ASSERT_EQ(wav.file.setClient(sound::floats(8000, 6)), noErr);
    EXPECT_EQ(packetSize(wav.file, ofFile, noErr), 4u);
    EXPECT_EQ(packetSize(wav.file, ofClient, noErr), 24u);

    Opened flac(SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    packetSize(flac.file, ofFile, kExtAudioFileError_MaxPacketSizeUnknown);
    packetSize(flac.file, ofClient, kExtAudioFileError_MaxPacketSizeUnknown);
    ASSERT_EQ(flac.file.setClient(sound::floats(8000, 2)), noErr);
    EXPECT_EQ(packetSize(flac.file, ofClient, noErr), 8u);

    Opened mp3(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
    EXPECT_EQ(packetSize(mp3.file, ofFile, noErr), 1441u);
}

// ---- properties of AudioFile ----

TEST(AudioFileProperties, SizesAccessAndMisuse)
{
    const struct {
        AudioFilePropertyID property;
        UInt32 bytes;
    } facts[] = {
        {kAudioFilePropertyFileFormat, 4},         {kAudioFilePropertyDataFormat, 40},
        {kAudioFilePropertyAudioDataByteCount, 8}, {kAudioFilePropertyAudioDataPacketCount, 8},
        {kAudioFilePropertyMaximumPacketSize, 4},  {kAudioFilePropertyBitRate, 4},
        {kAudioFilePropertySourceBitDepth, 4},     {kAudioFilePropertyEstimatedDuration, 8},
    };
    Opened wav(wav16);
    for (const auto& fact : facts) {
        SCOPED_TRACE(sound::code(fact.property));
        UInt32 size = 77, isWritable = 77;
        EXPECT_EQ(AudioFileGetPropertyInfo(wav.audioFile, fact.property, &size, &isWritable), noErr);
        EXPECT_EQ(size, fact.bytes);
        EXPECT_EQ(isWritable, 0u);
        EXPECT_EQ(AudioFileGetPropertyInfo(wav.audioFile, fact.property, nullptr, nullptr), noErr);

        std::uint8_t value[48];
        std::memset(value, 0x55, sizeof value);
        EXPECT_EQ(AudioFileGetProperty(wav.audioFile, fact.property, nullptr, value), paramErr);
        EXPECT_EQ(AudioFileGetProperty(wav.audioFile, fact.property, &size, nullptr), paramErr);
        size = fact.bytes - 1;
        EXPECT_EQ(AudioFileGetProperty(wav.audioFile, fact.property, &size, value),
                  kAudioFileBadPropertySizeError);
        EXPECT_EQ(value[0], 0x55);
        size = sizeof value;
        EXPECT_EQ(AudioFileGetProperty(wav.audioFile, fact.property, &size, value), noErr);
        EXPECT_EQ(size, fact.bytes);
        EXPECT_EQ(value[fact.bytes], 0x55);
    }
    UInt32 size = 4, value = 0;
    for (const AudioFilePropertyID unknown : {'#frm', 'cmap', 'info', 0}) {
        EXPECT_EQ(AudioFileGetPropertyInfo(wav.audioFile, unknown, &size, nullptr),
                  kAudioFileUnsupportedPropertyError);
        EXPECT_EQ(AudioFileGetProperty(wav.audioFile, unknown, &size, &value),
                  kAudioFileUnsupportedPropertyError);
    }
}

template <class Value>
std::optional<Value> get(AudioFileID file, AudioFilePropertyID property)
{
    Value value{};
    UInt32 size = sizeof value;
    const OSStatus status = AudioFileGetProperty(file, property, &size, &value);
    if (status == noErr) return value;
    EXPECT_EQ(status, kAudioFileUnsupportedPropertyError);
    return {};
}

TEST(AudioFileProperties, Values)
{
    const std::optional<UInt64> no64;
    const std::optional<UInt32> no32;
    const std::optional<SInt32> noBits;
    const struct {
        const char* name;
        int format;
        std::optional<UInt64> bytes, packets;
        std::optional<UInt32> largest;
        std::optional<SInt32> bits;
        UInt32 bitRate; // expected bit rate; 0: the average over the whole file
    } facts[] = {
        // clang-format off
        {"16-bit WAV", wav16,                                       64000, 16000,    4,    16, 256000},
        {"24-bit WAV", SF_FORMAT_WAV  | SF_FORMAT_PCM_24,           96000, 16000,    6,    24, 384000},
        {"float AIFC", SF_FORMAT_AIFF | SF_FORMAT_FLOAT,           128000, 16000,    8,    32, 512000},
        {"u-law WAV",  SF_FORMAT_WAV  | SF_FORMAT_ULAW,             32000, 16000,    2, noBits, 128000},
        {"FLAC",       SF_FORMAT_FLAC | SF_FORMAT_PCM_24,            no64,  no64, no32,    24, 0},
        {"ALAC",       SF_FORMAT_CAF  | SF_FORMAT_ALAC_16,           no64,  no64, no32,    16, 0},
        {"Vorbis",     SF_FORMAT_OGG  | SF_FORMAT_VORBIS,            no64,  no64, no32, noBits, 0},
        {"MP3",        SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III,    no64,  no64, 1441, noBits, 0},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        Opened opened(fact.format);
        EXPECT_EQ(get<UInt64>(opened.audioFile, kAudioFilePropertyAudioDataByteCount), fact.bytes);
        EXPECT_EQ(get<UInt64>(opened.audioFile, kAudioFilePropertyAudioDataPacketCount), fact.packets);
        EXPECT_EQ(get<UInt32>(opened.audioFile, kAudioFilePropertyMaximumPacketSize), fact.largest);
        EXPECT_EQ(get<SInt32>(opened.audioFile, kAudioFilePropertySourceBitDepth), fact.bits);
        EXPECT_EQ(get<Float64>(opened.audioFile, kAudioFilePropertyEstimatedDuration), 2.0);
        // Bits per second over two seconds.
        const auto whole = static_cast<UInt32>(sound::load(opened.path).size() * 4);
        EXPECT_EQ(get<UInt32>(opened.audioFile, kAudioFilePropertyBitRate),
                  fact.bitRate ? fact.bitRate : whole);
        AudioStreamBasicDescription format = {};
        UInt32 size = sizeof format;
        EXPECT_EQ(AudioFileGetProperty(opened.audioFile, kAudioFilePropertyDataFormat, &size, &format),
                  noErr);
        EXPECT_EQ(sound::text(format), sound::text(opened.file.format()));
    }
}

} // namespace
