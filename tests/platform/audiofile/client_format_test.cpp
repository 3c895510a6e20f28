// Reading in the client format: channels, sample widths, rates, positions, buffers.
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

namespace {

using sound::Bytes;

constexpr int wav32 = SF_FORMAT_WAV | SF_FORMAT_FLOAT;

/// Write a file whose samples are channel + 1 + frame % 4096 / 4096, which a float holds exactly. Returns its
/// path.
std::string numbered(const sound::Folder& folder, int channels, int frames)
{
    std::vector<float> samples;
    for (int f = 0; f < frames; ++f)
        for (int c = 0; c < channels; ++c)
            samples.push_back(static_cast<float>(c + 1) + static_cast<float>(f % 4096) / 4096);
    const std::string path = folder / (std::to_string(channels) + ".wav");
    sound::write(path, wav32, 44100, channels, samples);
    return path;
}

TEST(ClientFormat, MapsChannels)
{
    const struct {
        int from;
        std::vector<int> to; // file channel, from 1, that each client channel plays; 0: silence
        const char* why;
    } facts[] = {
        // clang-format off
        {1, {1},                   "one to one"},
        {1, {1, 1},                "one channel plays on two"},
        {1, {1, 1, 0, 0, 0, 0},    "further channels are silent"},
        {2, {1},                   "the first channel"},
        {2, {1, 2},                "unchanged"},
        {2, {1, 2, 0},             "the third is silent"},
        {2, {1, 2, 0, 0, 0, 0},    "four are silent"},
        {6, {1, 2},                "four are dropped"},
        {6, {1},                   "five are dropped"},
        {6, {1, 2, 3, 4, 5, 6, 0}, "the seventh is silent"},
        {64, {1, 2},               "62 are dropped"},
        // clang-format on
    };
    const sound::Folder folder;
    constexpr int frames = 10000; // more frames than the reader decodes at a time
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.from) + " to " + std::to_string(fact.to.size()) + ": " + fact.why);
        const sound::File file(numbered(folder, fact.from, frames));
        const auto channels = static_cast<UInt32>(fact.to.size());
        ASSERT_EQ(file.setClient(sound::floats(44100, channels)), noErr);
        std::vector<float> expected;
        for (int f = 0; f < frames; ++f)
            for (const int source : fact.to)
                expected.push_back(source ? static_cast<float>(source) + static_cast<float>(f % 4096) / 4096
                                          : 0.0f);
        EXPECT_TRUE(sound::isSame(file.readFloats(channels), expected));
    }
}

TEST(ClientFormat, MapsChannelsAtAnotherRate)
{
    const sound::Folder folder;
    const std::string path = folder / "mono.wav";
    sound::write(path, wav32, 22050, 1, std::vector<float>(5000, 0.25f));
    const sound::File file(path);
    ASSERT_EQ(file.setClient(sound::floats(44100, 3)), noErr);
    const std::vector<float> samples = file.readFloats(3);
    ASSERT_EQ(samples.size(), 30000u);
    for (std::size_t f = 2000; f < 8000; ++f) {
        EXPECT_NEAR(samples[f * 3], 0.25, 1e-3) << f;
        EXPECT_EQ(samples[f * 3], samples[f * 3 + 1]) << f;
        EXPECT_EQ(samples[f * 3 + 2], 0.0f) << f;
    }
}

TEST(ClientFormat, ConvertsToEverySampleWidth)
{
    constexpr UInt32 sint = kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsPacked;
    const struct {
        UInt32 bits, flags;
        Bytes expected; // expected bytes of the samples 0.5, -0.25, 1.5, -1.5
        const char* why;
    } facts[] = {
        // clang-format off
        {16, sint,                               {0x00, 0x40, 0x00, 0xE0, 0xFF, 0x7F, 0x00, 0x80}, "clips at full scale"},
        {16, sint | kAudioFormatFlagIsBigEndian, {0x40, 0x00, 0xE0, 0x00, 0x7F, 0xFF, 0x80, 0x00}, "big-endian"},
        {8,  kAudioFormatFlagIsPacked,           {0xC0, 0x60, 0xFF, 0x00},                         "unsigned"},
        {24, sint,                               {0, 0, 0x40, 0, 0, 0xE0, 0xFF, 0xFF, 0x7F, 0, 0, 0x80}, "three bytes"},
        {32, kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked | kAudioFormatFlagIsBigEndian,
             {0x3F, 0, 0, 0, 0xBE, 0x80, 0, 0, 0x3F, 0xC0, 0, 0, 0xBF, 0xC0, 0, 0},                "not clipped"},
        // clang-format on
    };
    const sound::Folder folder;
    sound::write(folder / "x.wav", wav32, 44100, 1, {0.5f, -0.25f, 1.5f, -1.5f});
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.bits) + " bits: " + fact.why);
        const sound::File file(folder / "x.wav");
        ASSERT_EQ(file.setClient(sound::pcm(44100, 1, fact.bits, fact.flags)), noErr);
        Bytes bytes;
        ASSERT_EQ(file.read(9, fact.bits / 8, 1, bytes), noErr);
        EXPECT_EQ(bytes, fact.expected);
    }
}

TEST(ClientFormat, NonInterleavedHasOneBufferPerChannel)
{
    const sound::Folder folder;
    const sound::File file(numbered(folder, 2, 10000));
    ASSERT_EQ(file.setClient(sound::pcm(44100, 2, 32, kAudioFormatFlagsAudioUnitCanonical)), noErr);
    std::vector<float> left(9000), right(8000); // the buffer with the smaller capacity limits the read
    struct {
        AudioBufferList list;
        AudioBuffer second;
    } two = {{2, {{1, 36000, left.data()}}}, {1, 32000, right.data()}};
    UInt32 frames = 20000;
    ASSERT_EQ(ExtAudioFileRead(file, &frames, &two.list), noErr);
    EXPECT_EQ(frames, 8000u);
    EXPECT_EQ(two.list.mBuffers[0].mDataByteSize, 32000u);
    EXPECT_EQ(two.second.mDataByteSize, 32000u);
    EXPECT_EQ(left[7999], 1 + (7999 % 4096) / 4096.0f);
    EXPECT_EQ(right[7999], 2 + (7999 % 4096) / 4096.0f);
    EXPECT_EQ(left[8000], 0) << "unchanged";
    EXPECT_EQ(file.tell(), 8000);
}

TEST(ClientFormat, NonInterleavedMonoIsDecodedUnchanged)
{
    const sound::Folder folder;
    const sound::File file(numbered(folder, 1, 5000));
    ASSERT_EQ(file.setClient(sound::pcm(44100, 1, 32, kAudioFormatFlagsAudioUnitCanonical)), noErr);
    EXPECT_TRUE(sound::isSame(file.readFloats(1), sound::decode(folder / "1.wav").samples));
}

TEST(ClientFormat, InvalidFormatsAreRefused)
{
    const auto changed = [](auto change) {
        AudioStreamBasicDescription format = sound::floats(44100, 2);
        change(format);
        return format;
    };
    using Format = AudioStreamBasicDescription;
    const struct {
        Format format;
        OSStatus status;
        const char* why;
    } facts[] = {
        // clang-format off
        {changed([](Format& f) { f.mFormatID = 'alac'; }),          kExtAudioFileError_NonPCMClientFormat, "not PCM"},
        {changed([](Format& f) { f.mFormatID = 0; }),               kExtAudioFileError_NonPCMClientFormat, "no format ID"},
        {changed([](Format& f) { f.mSampleRate = 0; }),             kExtAudioFileError_NonPCMClientFormat, "no rate"},
        {changed([](Format& f) { f.mSampleRate = std::nan(""); }),  kExtAudioFileError_NonPCMClientFormat, "NaN rate"},
        {changed([](Format& f) { f.mSampleRate = -44100; }),        kExtAudioFileError_NonPCMClientFormat, "negative rate"},
        {changed([](Format& f) { f.mChannelsPerFrame = 0; }),       kExtAudioFileError_NonPCMClientFormat, "no channels"},
        {changed([](Format& f) { f.mBytesPerFrame = 7; }),          kExtAudioFileError_NonPCMClientFormat, "7 bytes per frame"},
        {changed([](Format& f) { f.mFramesPerPacket = 2; }),        kExtAudioFileError_NonPCMClientFormat, "2 frames per packet"},
        {changed([](Format& f) { f.mBitsPerChannel = 31; }),        kExtAudioFileError_NonPCMClientFormat, "31-bit float"},
        {sound::floats(44100.0 * 257, 2),                           kExtAudioFileError_InvalidDataFormat,  "257 times the rate"},
        {sound::floats(44100.0 / 257, 2),                           kExtAudioFileError_InvalidDataFormat,  "1/257 of the rate"},
        {sound::floats(44100.0 * 256, 2),                           noErr,                                 "256 times the rate"},
        {sound::floats(44100, 2),                                   noErr,                                 "a valid format"},
        // clang-format on
    };
    const sound::Folder folder;
    const std::string path = numbered(folder, 2, 100);
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const sound::File file(path);
        ASSERT_EQ(file.setClient(sound::floats(48000, 1)), noErr);
        EXPECT_EQ(file.setClient(fact.format), fact.status);
        const auto now = file.format(kExtAudioFileProperty_ClientDataFormat);
        EXPECT_EQ(sound::text(now), sound::text(fact.status ? sound::floats(48000, 1) : fact.format))
            << "after a refusal the former format stays";
    }
}

// ---- rates ----

TEST(ClientRate, LengthIsExact)
{
    const struct {
        int from;
        double to;
        int frames;
        std::size_t expected; // expected number of frames: frames * to / from, rounded up
    } facts[] = {
        {44100, 88200, 1000, 2000}, {44100, 22050, 1000, 500},    {44100, 22050, 1001, 501},
        {44100, 48000, 441, 480},   {44100, 48000, 442, 482},     {44100, 48000, 1, 2},
        {48000, 44100, 480, 441},   {48000, 44100, 1, 1},         {8000, 192000, 100, 2400},
        {192000, 8000, 2400, 100},  {192000, 8000, 2401, 101},    {44100, 44100.5, 44100, 44101},
        {44100, 48000, 0, 0},       {44100, 48000, 30000, 32654},
    };
    const sound::Folder folder;
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.from) + " to " + std::to_string(fact.to) + ", " +
                     std::to_string(fact.frames));
        sound::write(folder / "x.wav", wav32, fact.from, 2, sound::music(2, fact.frames));
        for (const UInt32 atATime : {1u << 30, 333u, 1u}) {
            if (atATime == 1 && fact.frames > 2500) continue;
            const sound::File file(folder / "x.wav");
            ASSERT_EQ(file.setClient(sound::floats(fact.to, 2)), noErr);
            EXPECT_EQ(file.readFloats(2, atATime).size(), fact.expected * 2) << atATime;
            EXPECT_EQ(file.tell(), fact.frames);
        }
    }
}

std::vector<float> tone(double rate, int frames, double first = 0)
{
    std::vector<float> samples;
    for (int i = 0; i < frames; ++i)
        samples.push_back(
            static_cast<float>(0.5 * std::sin(2 * 3.14159265358979 * 997 * (first + i) / rate)));
    return samples;
}

TEST(ClientRate, FramesKeepTheirTime)
{
    const sound::Folder folder;
    for (const double rate : {22050.0, 48000.0, 96000.0}) {
        SCOPED_TRACE(rate);
        sound::write(folder / "x.wav", wav32, 44100, 1, tone(44100, 44100));
        const sound::File file(folder / "x.wav");
        ASSERT_EQ(file.setClient(sound::floats(rate, 1)), noErr);
        const std::vector<float> samples = file.readFloats(1, 1000);
        const std::vector<float> expected = tone(rate, static_cast<int>(samples.size()));
        for (std::size_t i = 3000; i + 3000 < samples.size(); ++i)
            ASSERT_NEAR(samples[i], expected[i], 1e-4) << i;

        // After a seek the tone continues from the frame that was sought.
        ASSERT_EQ(ExtAudioFileSeek(file, 22050), noErr);
        EXPECT_EQ(file.tell(), 22050);
        const std::vector<float> rest = file.readFloats(1, 1000);
        EXPECT_EQ(rest.size(), static_cast<std::size_t>(std::ceil(22050 * rate / 44100)));
        const std::vector<float> there = tone(rate, static_cast<int>(rest.size()), 22050 * rate / 44100);
        for (std::size_t i = 3000; i + 3000 < rest.size(); ++i) ASSERT_NEAR(rest[i], there[i], 1e-4) << i;
    }
}

TEST(ClientRate, ReadSizeDoesNotChangeSamples)
{
    const sound::Folder folder;
    sound::write(folder / "x.wav", wav32, 44100, 2, sound::music(2, 20000));
    std::vector<float> whole;
    for (const UInt32 atATime : {1u << 30, 4096u, 777u, 50u}) {
        const sound::File file(folder / "x.wav");
        ASSERT_EQ(file.setClient(sound::floats(48000, 2)), noErr);
        const std::vector<float> samples = file.readFloats(2, atATime);
        if (whole.empty()) whole = samples;
        ASSERT_EQ(samples.size(), whole.size());
        for (std::size_t i = 0; i < samples.size(); ++i) ASSERT_NEAR(samples[i], whole[i], 1e-6) << atATime;
    }
}

TEST(ClientRate, ChangeContinuesAtTheSamePosition)
{
    const sound::Folder folder;
    const std::string path = numbered(folder, 1, 4000);
    const sound::File file(path);
    Bytes bytes;
    ASSERT_EQ(file.setClient(sound::floats(88200, 1)), noErr);
    ASSERT_EQ(file.read(201, 4, 1, bytes), noErr);
    EXPECT_EQ(file.tell(), 100) << "between 100 and 101: the earlier frame";
    ASSERT_EQ(file.setClient(sound::floats(44100, 1)), noErr);
    EXPECT_EQ(file.tell(), 100);
    ASSERT_EQ(file.read(1, 4, 1, bytes), noErr);
    float sample;
    std::memcpy(&sample, bytes.data(), 4);
    EXPECT_EQ(sample, 1 + 100 / 4096.0f) << "frames decoded ahead are read again";
}

// ---- positions ----

TEST(Positions, CountFramesOfTheFile)
{
    const sound::Folder folder;
    const sound::File file(numbered(folder, 2, 3000));
    ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    const struct {
        SInt64 frame;
        OSStatus status;
    } facts[] = {
        {0, noErr},
        {1, noErr},
        {2999, noErr},
        {3000, noErr},
        {3001, kExtAudioFileError_InvalidSeek},
        {1500, noErr},
        {-1, kExtAudioFileError_InvalidSeek},
        {std::numeric_limits<SInt64>::min(), kExtAudioFileError_InvalidSeek},
        {std::numeric_limits<SInt64>::max(), kExtAudioFileError_InvalidSeek},
    };
    SInt64 before = 0;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.frame);
        EXPECT_EQ(ExtAudioFileSeek(file, fact.frame), fact.status);
        EXPECT_EQ(file.tell(), fact.status ? before : fact.frame) << "a refused seek keeps the position";
        before = file.tell();
        Bytes bytes;
        ASSERT_EQ(file.read(1, 8, 2, bytes), noErr);
        if (before == 3000) {
            EXPECT_TRUE(bytes.empty());
        } else {
            float sample;
            std::memcpy(&sample, bytes.data(), 4);
            EXPECT_EQ(sample, 1 + static_cast<float>(before) / 4096);
        }
        before = file.tell();
    }
}

// At these rates, 3,709 is the least number of input frames that lasts a whole number of output frames.
TEST(ClientFormat, SeekRepeatsTheSamplesAtRatesWithALongPeriod)
{
    const sound::Folder folder;
    const std::string path = folder / "x.wav";
    sound::write(path, wav32, 11127, 1, sound::music(1, 5000));
    const sound::File file(path);
    ASSERT_EQ(file.setClient(sound::floats(44100, 1)), noErr);
    Bytes first, again;
    ASSERT_EQ(file.read(2000, 4, 1, first), noErr);
    ASSERT_EQ(first.size(), 8000u);
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(ExtAudioFileSeek(file, 0), noErr);
        ASSERT_EQ(file.read(2000, 4, 1, again), noErr);
        EXPECT_TRUE(again == first) << i;
    }
}

// Seeking works in every coding, including codings whose decoder cannot seek.
TEST(Positions, AreReachedInEveryCoding)
{
    const struct {
        const char* name;
        int format, rate, channels;
    } facts[] = {
        {"x.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 2},
        {"x.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 44100, 2},
        {"x.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 2},
        {"x.caf", SF_FORMAT_CAF | SF_FORMAT_ALAC_16, 44100, 2},
        {"gsm.wav", SF_FORMAT_WAV | SF_FORMAT_GSM610, 8000, 1},
        {"g.au", SF_FORMAT_AU | SF_FORMAT_G721_32, 8000, 1},
        {"x.opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000, 2},
        {"x.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, 2},
        {"ms.wav", SF_FORMAT_WAV | SF_FORMAT_MS_ADPCM, 44100, 2},
        {"x.xi", SF_FORMAT_XI | SF_FORMAT_DPCM_16, 44100, 1},
    };
    const sound::Folder folder;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        const auto channels = static_cast<UInt32>(fact.channels);
        sound::write(folder / fact.name, fact.format, fact.rate, fact.channels,
                     sound::music(fact.channels, 20000));
        const sound::Decoded whole = sound::decode(folder / fact.name);
        const sound::File file(folder / fact.name);
        ASSERT_EQ(file.setClient(sound::floats(fact.rate, channels)), noErr);
        for (const SInt64 frame : {15000, 100, 0, 9999, 3000, 19000, 12345, 10000}) {
            ASSERT_EQ(ExtAudioFileSeek(file, frame), noErr) << frame;
            EXPECT_EQ(file.tell(), frame);
            Bytes bytes;
            ASSERT_EQ(file.read(500, 4 * channels, channels, bytes), noErr);
            ASSERT_EQ(bytes.size(), 2000u * channels);
            std::vector<float> samples(500 * channels);
            std::memcpy(samples.data(), bytes.data(), bytes.size());
            const auto* there = &whole.samples[static_cast<std::size_t>(frame) * channels];
            for (std::size_t i = 0; i < samples.size(); ++i)
                ASSERT_NEAR(samples[i], there[i], 1e-4) << frame << " + " << i;
        }
    }
}

// ---- buffers ----

TEST(ReadBuffers, SmallBuffersShortenTheRead)
{
    const sound::Folder folder;
    const std::string path = numbered(folder, 2, 100);
    const struct {
        UInt32 frames, bytes; // frames requested and capacity of the buffer in bytes
        OSStatus status;
        UInt32 expected;
        const char* why;
    } facts[] = {
        {100, 800, noErr, 100, "capacity for all"},
        {100, 799, noErr, 99, "a byte less: a frame less"},
        {100, 8, noErr, 1, "capacity for one"},
        {100, 7, paramErr, 100, "0 frames would mean the end"},
        {100, 0, paramErr, 100, "no capacity"},
        {0, 800, noErr, 0, "no request"},
        {0, 0, noErr, 0, "no request, no capacity"},
        {101, 808, noErr, 100, "past the end"},
        {0xFFFFFFFF, 4000, noErr, 100, "far past the end"},
    };
    for (const bool isConverted : {false, true})
        for (const auto& fact : facts) {
            SCOPED_TRACE(fact.why);
            const sound::File file(path);
            const UInt32 flags =
                kAudioFormatFlagsNativeFloatPacked | (isConverted ? kAudioFormatFlagIsBigEndian : 0);
            ASSERT_EQ(file.setClient(sound::pcm(44100, 2, 32, flags)), noErr);
            const std::unique_ptr<std::uint8_t[]> memory(
                new std::uint8_t[4000]); // on the heap, so that a sanitizer detects writes past the end
            std::memset(memory.get(), 0x55, 4000);
            AudioBufferList list = {1, {{2, fact.bytes, memory.get()}}};
            UInt32 frames = fact.frames;
            EXPECT_EQ(ExtAudioFileRead(file, &frames, &list), fact.status);
            EXPECT_EQ(frames, fact.expected);
            EXPECT_EQ(list.mBuffers[0].mDataByteSize, fact.status ? fact.bytes : fact.expected * 8);
            const std::size_t end = fact.status ? 0 : fact.expected * 8;
            EXPECT_TRUE(std::all_of(&memory[end], &memory[4000], [](auto byte) { return byte == 0x55; }))
                << "bytes after the frames are unchanged";
        }
}

TEST(ReadBuffers, MismatchedListsAreRefused)
{
    const sound::Folder folder;
    const sound::File file(numbered(folder, 2, 100));
    ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    float memory[200];
    UInt32 frames = 100;
    AudioBufferList none = {1, {{2, 800, nullptr}}}, mono = {1, {{1, 800, memory}}},
                    zero = {0, {{2, 800, memory}}};
    for (AudioBufferList* list : {&none, &mono, &zero})
        EXPECT_EQ(ExtAudioFileRead(file, &frames, list), paramErr);
    EXPECT_EQ(ExtAudioFileRead(file, nullptr, &none), paramErr);
    EXPECT_EQ(ExtAudioFileRead(file, &frames, nullptr), paramErr);
    EXPECT_EQ(frames, 100u);
    EXPECT_EQ(file.tell(), 0);
}

} // namespace
