// Every file format: its description is checked, and its samples are compared bit for bit with libsndfile's.
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using sound::Bytes;

constexpr UInt32 sint = kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsPacked;
constexpr UInt32 real = kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked;
constexpr UInt32 uint = kAudioFormatFlagIsPacked;
constexpr UInt32 big = kAudioFormatFlagIsBigEndian;

constexpr int little = SF_ENDIAN_LITTLE;

struct Fact {
    const char* name;
    int format, rate, channels;
    UInt32 type; // expected file type
    UInt32 id, flags, packetFrames, packetBytes, bits;
};

// The packet bytes in this table count one channel.
constexpr Fact facts[] = {
    // clang-format off
    // name        libsndfile's format                                rate ch  type    id      flags       frames bytes bits
    {"8.wav",      SF_FORMAT_WAV  | SF_FORMAT_PCM_U8,                44100, 2, 'WAVE', 'lpcm', uint,            1,  1,  8},
    {"16.wav",     SF_FORMAT_WAV  | SF_FORMAT_PCM_16,                44100, 2, 'WAVE', 'lpcm', sint,            1,  2, 16},
    {"24.wav",     SF_FORMAT_WAV  | SF_FORMAT_PCM_24,                48000, 2, 'WAVE', 'lpcm', sint,            1,  3, 24},
    {"32.wav",     SF_FORMAT_WAV  | SF_FORMAT_PCM_32,                48000, 2, 'WAVE', 'lpcm', sint,            1,  4, 32},
    {"f.wav",      SF_FORMAT_WAV  | SF_FORMAT_FLOAT,                 96000, 2, 'WAVE', 'lpcm', real,            1,  4, 32},
    {"d.wav",      SF_FORMAT_WAV  | SF_FORMAT_DOUBLE,               192000, 2, 'WAVE', 'lpcm', real,            1,  8, 64},
    {"1.wav",      SF_FORMAT_WAV  | SF_FORMAT_PCM_16,                 8000, 1, 'WAVE', 'lpcm', sint,            1,  2, 16},
    {"6.wav",      SF_FORMAT_WAVEX| SF_FORMAT_PCM_24,                44100, 6, 'WAVE', 'lpcm', sint,            1,  3, 24},
    {"64.wav",     SF_FORMAT_WAV  | SF_FORMAT_FLOAT,                 44100,64, 'WAVE', 'lpcm', real,            1,  4, 32},
    {"rifx.wav",   SF_FORMAT_WAV  | SF_FORMAT_PCM_24 | SF_ENDIAN_BIG,44100, 2, 'WAVE', 'lpcm', sint | big,      1,  3, 24},
    {"ulaw.wav",   SF_FORMAT_WAV  | SF_FORMAT_ULAW,                   8000, 2, 'WAVE', 'ulaw', 0,               1,  1,  8},
    {"alaw.wav",   SF_FORMAT_WAV  | SF_FORMAT_ALAW,                   8000, 1, 'WAVE', 'alaw', 0,               1,  1,  8},
    {"ima.wav",    SF_FORMAT_WAV  | SF_FORMAT_IMA_ADPCM,             44100, 2, 'WAVE', 0x6D730011, 0,           0,  0,  0},
    {"ms.wav",     SF_FORMAT_WAV  | SF_FORMAT_MS_ADPCM,              44100, 2, 'WAVE', 0x6D730002, 0,           0,  0,  0},
    {"gsm.wav",    SF_FORMAT_WAV  | SF_FORMAT_GSM610,                 8000, 1, 'WAVE', 0x6D730031, 0,         320, 65,  0},
    {"8.aiff",     SF_FORMAT_AIFF | SF_FORMAT_PCM_S8,                44100, 2, 'AIFF', 'lpcm', sint,            1,  1,  8},
    {"16.aiff",    SF_FORMAT_AIFF | SF_FORMAT_PCM_16,                44100, 2, 'AIFF', 'lpcm', sint | big,      1,  2, 16},
    {"24.aiff",    SF_FORMAT_AIFF | SF_FORMAT_PCM_24,                44100, 2, 'AIFF', 'lpcm', sint | big,      1,  3, 24},
    {"32.aiff",    SF_FORMAT_AIFF | SF_FORMAT_PCM_32,                44100, 2, 'AIFF', 'lpcm', sint | big,      1,  4, 32},
    {"8.aifc",     SF_FORMAT_AIFF | SF_FORMAT_PCM_U8,                44100, 2, 'AIFC', 'lpcm', uint,            1,  1,  8},
    {"sowt.aifc",  SF_FORMAT_AIFF | SF_FORMAT_PCM_16 | little,       44100, 2, 'AIFC', 'lpcm', sint,            1,  2, 16},
    {"f.aifc",     SF_FORMAT_AIFF | SF_FORMAT_FLOAT,                 44100, 2, 'AIFC', 'lpcm', real | big,      1,  4, 32},
    {"d.aifc",     SF_FORMAT_AIFF | SF_FORMAT_DOUBLE,                44100, 2, 'AIFC', 'lpcm', real | big,      1,  8, 64},
    {"ima.aifc",   SF_FORMAT_AIFF | SF_FORMAT_IMA_ADPCM,             44100, 2, 'AIFC', 'ima4', 0,              64, 34,  0},
    {"dwvw.aifc",  SF_FORMAT_AIFF | SF_FORMAT_DWVW_16,               44100, 1, 'AIFC', 'DWVW', 0,               0,  0,  0},
    {"be.caf",     SF_FORMAT_CAF  | SF_FORMAT_PCM_24 | SF_ENDIAN_BIG,44100, 2, 'caff', 'lpcm', sint | big,      1,  3, 24},
    {"le.caf",     SF_FORMAT_CAF  | SF_FORMAT_PCM_24 | little,       44100, 2, 'caff', 'lpcm', sint,            1,  3, 24},
    {"f.caf",      SF_FORMAT_CAF  | SF_FORMAT_FLOAT | little,        44100, 2, 'caff', 'lpcm', real,            1,  4, 32},
    {"alac16.caf", SF_FORMAT_CAF  | SF_FORMAT_ALAC_16,               44100, 2, 'caff', 'alac', 1,            4096,  0,  0},
    {"alac24.caf", SF_FORMAT_CAF  | SF_FORMAT_ALAC_24,               44100, 2, 'caff', 'alac', 3,            4096,  0,  0},
    {"16.au",      SF_FORMAT_AU   | SF_FORMAT_PCM_16,                44100, 2, 'NeXT', 'lpcm', sint | big,      1,  2, 16},
    {"le.au",      SF_FORMAT_AU   | SF_FORMAT_PCM_24 | little,       44100, 2, 'NeXT', 'lpcm', sint,            1,  3, 24},
    {"g721.au",    SF_FORMAT_AU   | SF_FORMAT_G721_32,                8000, 1, 'NeXT', 0x6D730040, 0,           0,  0,  0},
    {"16.w64",     SF_FORMAT_W64  | SF_FORMAT_PCM_16,                44100, 2, 0,      'lpcm', sint,            1,  2, 16},
    {"24.rf64",    SF_FORMAT_RF64 | SF_FORMAT_PCM_24,                44100, 2, 0,      'lpcm', sint,            1,  3, 24},
    {"16.nist",    SF_FORMAT_NIST | SF_FORMAT_PCM_16,                44100, 2, 0,      'lpcm', sint,            1,  2, 16},
    {"f.ircam",    SF_FORMAT_IRCAM| SF_FORMAT_FLOAT,                 44100, 2, 0,      'lpcm', real,            1,  4, 32},
    {"16.voc",     SF_FORMAT_VOC  | SF_FORMAT_PCM_16,                44100, 1, 0,      'lpcm', sint,            1,  2, 16},
    {"16.mat4",    SF_FORMAT_MAT4 | SF_FORMAT_PCM_16,                44100, 2, 0,      'lpcm', sint,            1,  2, 16},
    {"d.mat5",     SF_FORMAT_MAT5 | SF_FORMAT_DOUBLE,                44100, 2, 0,      'lpcm', real,            1,  8, 64},
    {"16.svx",     SF_FORMAT_SVX  | SF_FORMAT_PCM_16,                44100, 1, 0,      'lpcm', sint | big,      1,  2, 16},
    {"16.avr",     SF_FORMAT_AVR  | SF_FORMAT_PCM_16,                44100, 2, 0,      'lpcm', sint | big,      1,  2, 16},
    {"16.mpc",     SF_FORMAT_MPC2K| SF_FORMAT_PCM_16,                44100, 2, 0,      'lpcm', sint,            1,  2, 16},
    {"24.paf",     SF_FORMAT_PAF  | SF_FORMAT_PCM_24,                44100, 2, 0,      'lpcm', sint,            1,  3, 24},
    {"16.xi",      SF_FORMAT_XI   | SF_FORMAT_DPCM_16,               44100, 1, 0,      'dpcm', 0,               1,  2, 16},
    {"16.flac",    SF_FORMAT_FLAC | SF_FORMAT_PCM_16,                44100, 2, 0,      'flac', 1,               0,  0,  0},
    {"24.flac",    SF_FORMAT_FLAC | SF_FORMAT_PCM_24,                96000, 6, 0,      'flac', 3,               0,  0,  0},
    {"v.ogg",      SF_FORMAT_OGG  | SF_FORMAT_VORBIS,                44100, 2, 0,      'vorb', 0,               0,  0,  0},
    {"o.opus",     SF_FORMAT_OGG  | SF_FORMAT_OPUS,                  48000, 2, 0,      'opus', 0,               0,  0,  0},
    {"3.mp3",      SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III,        44100, 2, 'MPG3', '.mp3', 0,            1152,  0,  0},
    {"half.mp3",   SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III,        22050, 1, 'MPG3', '.mp3', 0,             576,  0,  0},
    // clang-format on
};

constexpr int frames = 9000;

struct Written {
    sound::Folder folder;
    std::string path;
    sound::Decoded expected;

    explicit Written(const Fact& fact) : path(folder / fact.name)
    {
        sound::write(path, fact.format, fact.rate, fact.channels, sound::music(fact.channels, frames));
        expected = sound::decode(path);
    }
};

bool isInteger(const AudioStreamBasicDescription& format)
{
    return !(format.mFormatFlags & kAudioFormatFlagIsFloat);
}

/// Decode one PCM sample, independently of the platform.
float sampleOf(const AudioStreamBasicDescription& format, const std::uint8_t* at)
{
    const UInt32 bytes = format.mBitsPerChannel / 8;
    std::uint64_t bits = 0;
    for (UInt32 i = 0; i < bytes; ++i)
        bits |= std::uint64_t{at[format.mFormatFlags & big ? bytes - 1 - i : i]} << 8 * i;
    if (!isInteger(format)) {
        if (bytes == 8) {
            double value;
            std::memcpy(&value, &bits, 8);
            return static_cast<float>(value);
        }
        const auto low = static_cast<std::uint32_t>(bits);
        float value;
        std::memcpy(&value, &low, 4);
        return value;
    }
    const std::int64_t middle = std::int64_t{1} << (format.mBitsPerChannel - 1);
    auto value = static_cast<std::int64_t>(bits);
    if (!(format.mFormatFlags & kAudioFormatFlagIsSignedInteger))
        value -= middle;
    else if (value >= middle)
        value -= 2 * middle;
    return static_cast<float>(static_cast<double>(value) / static_cast<double>(middle));
}

TEST(SoundFormats, DescriptionIsTheFiles)
{
    for (const Fact& fact : facts) {
        SCOPED_TRACE(fact.name);
        const Written written(fact);
        const sound::File file(written.path);
        ASSERT_EQ(file.status, noErr);

        const auto channels = static_cast<UInt32>(fact.channels);
        AudioStreamBasicDescription expected = {};
        expected.mSampleRate = fact.rate;
        expected.mFormatID = fact.id;
        expected.mFormatFlags = fact.flags;
        expected.mFramesPerPacket = fact.packetFrames;
        expected.mBytesPerPacket = fact.packetBytes * channels;
        expected.mBytesPerFrame = fact.packetFrames == 1 ? expected.mBytesPerPacket : 0;
        expected.mChannelsPerFrame = channels;
        expected.mBitsPerChannel = fact.bits;
        EXPECT_EQ(sound::text(file.format()), sound::text(expected));
        EXPECT_EQ(file.format().mReserved, 0u);
        EXPECT_EQ(sound::text(file.format(kExtAudioFileProperty_ClientDataFormat)), sound::text(expected))
            << "before it is set";
        EXPECT_EQ(file.frames(), written.expected.info.frames);

        AudioFileID audioFile = nullptr;
        UInt32 size = sizeof audioFile, type = 1;
        ASSERT_EQ(ExtAudioFileGetProperty(file, kExtAudioFileProperty_AudioFile, &size, &audioFile), noErr);
        size = sizeof type;
        ASSERT_EQ(AudioFileGetProperty(audioFile, kAudioFilePropertyFileFormat, &size, &type), noErr);
        EXPECT_EQ(sound::code(type), sound::code(fact.type));

        Float64 seconds = 0;
        size = sizeof seconds;
        ASSERT_EQ(AudioFileGetProperty(audioFile, kAudioFilePropertyEstimatedDuration, &size, &seconds),
                  noErr);
        EXPECT_EQ(seconds, static_cast<double>(written.expected.info.frames) / fact.rate);
    }
    EXPECT_EQ(sound::alive(), 0u);
}

TEST(SoundFormats, SamplesAreBitIdentical)
{
    for (const Fact& fact : facts) {
        SCOPED_TRACE(fact.name);
        const Written written(fact);
        const auto channels = static_cast<UInt32>(fact.channels);
        const sound::File file(written.path);
        ASSERT_EQ(file.setClient(sound::floats(fact.rate, channels)), noErr);
        EXPECT_TRUE(sound::isSame(file.readFloats(channels), written.expected.samples));
    }
}

// A decoder's samples may depend on the read size, so libsndfile reads in the same sizes as the platform.
TEST(SoundFormats, SmallReadsAreBitIdentical)
{
    for (const Fact& fact : facts) {
        SCOPED_TRACE(fact.name);
        const Written written(fact);
        const auto channels = static_cast<UInt32>(fact.channels);
        for (const sf_count_t atATime : {1000, 7}) {
            std::vector<float> expected;
            SF_INFO info = {};
            SNDFILE* theirs = sf_open(written.path.c_str(), SFM_READ, &info);
            std::vector<float> block(static_cast<std::size_t>(atATime) * channels);
            for (sf_count_t got; (got = sf_readf_float(theirs, block.data(), atATime)) > 0;)
                expected.insert(expected.end(), block.begin(),
                                block.begin() + static_cast<long>(got * info.channels));
            sf_close(theirs);

            const sound::File file(written.path);
            ASSERT_EQ(file.setClient(sound::floats(fact.rate, channels)), noErr);
            EXPECT_TRUE(sound::isSame(file.readFloats(channels, static_cast<UInt32>(atATime)), expected))
                << atATime;
        }
    }
}

TEST(SoundFormats, PcmIsReadUnchangedWithoutAClientFormat)
{
    int plain = 0;
    for (const Fact& fact : facts) {
        if (fact.id != 'lpcm') continue;
        SCOPED_TRACE(fact.name);
        const Written written(fact);
        const sound::File file(written.path);
        const AudioStreamBasicDescription format = file.format();
        Bytes bytes;
        ASSERT_EQ(file.read(frames + 100, format.mBytesPerFrame, format.mChannelsPerFrame, bytes), noErr);
        ASSERT_EQ(bytes.size(), std::size_t{frames} * format.mBytesPerFrame);
        std::vector<float> samples;
        for (std::size_t at = 0; at < bytes.size(); at += format.mBitsPerChannel / 8)
            samples.push_back(sampleOf(format, &bytes[at]));
        EXPECT_TRUE(sound::isSame(samples, written.expected.samples));
        ++plain;

        ASSERT_EQ(file.read(1, format.mBytesPerFrame, format.mChannelsPerFrame, bytes), noErr);
        EXPECT_TRUE(bytes.empty()) << "at the end";
    }
    EXPECT_GT(plain, 20);
}

TEST(SoundFormats, CompressedFilesNeedAClientFormat)
{
    int coded = 0;
    for (const Fact& fact : facts) {
        if (fact.id == 'lpcm') continue;
        SCOPED_TRACE(fact.name);
        const Written written(fact);
        const sound::File file(written.path);
        Bytes bytes;
        EXPECT_EQ(file.read(10, 4, static_cast<UInt32>(fact.channels), bytes),
                  kExtAudioFileError_InvalidOperationOrder);
        ++coded;
    }
    EXPECT_GT(coded, 10);
}

} // namespace
