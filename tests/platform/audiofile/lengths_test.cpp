// Files that were cut off, joined or never finished: what decodes is read, and its length is exact.
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using sound::Bytes;
using sound::firstOf;
using sound::joined;

constexpr int vorbis = SF_FORMAT_OGG | SF_FORMAT_VORBIS, opus = SF_FORMAT_OGG | SF_FORMAT_OPUS;
constexpr int oggFlac = -1 /* not written by libsndfile */, flac16 = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
constexpr int wav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16, caf16 = SF_FORMAT_CAF | SF_FORMAT_PCM_16;
constexpr int aiff16 = SF_FORMAT_AIFF | SF_FORMAT_PCM_16, w64 = SF_FORMAT_W64 | SF_FORMAT_PCM_16;
constexpr int au16 = SF_FORMAT_AU | SF_FORMAT_PCM_16, rf64 = SF_FORMAT_RF64 | SF_FORMAT_PCM_16;
constexpr int cafFloat = SF_FORMAT_CAF | SF_FORMAT_FLOAT, caf8 = SF_FORMAT_CAF | SF_FORMAT_ULAW;
constexpr int wavIma = SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM, svx16 = SF_FORMAT_SVX | SF_FORMAT_PCM_16;

/// The same FLAC file in Ogg pages. Nothing checks their sums.
Bytes inOggPages(const Bytes& flac)
{
    constexpr std::size_t streamInfo = 4 + 4 + 34, pageBytes = 20 * 255;
    Bytes file;
    const auto addPage = [&](const Bytes& body, std::uint8_t flags) {
        Bytes header(27 + body.size() / 255 + 1);
        std::memcpy(header.data(), "OggS", 4);
        header[5] = flags;
        header[26] = static_cast<std::uint8_t>(header.size() - 27);
        std::fill(header.begin() + 27, header.end() - 1, 255);
        header.back() = static_cast<std::uint8_t>(body.size() % 255);
        file = joined({file, header, body});
    };
    const Bytes mapping = {0x7F, 'F', 'L', 'A', 'C', 1, 0, 0, 1};
    addPage(joined({mapping, firstOf(flac, streamInfo)}), 2);
    for (std::size_t at = streamInfo; at < flac.size(); at += pageBytes)
        addPage(firstOf(Bytes(flac.begin() + static_cast<std::ptrdiff_t>(at), flac.end()), pageBytes), 0);
    return file;
}

Bytes fileOf(const sound::Folder& folder, int format, int rate, int channels, int frames)
{
    const std::string path = folder / "written";
    if (format == oggFlac) return inOggPages(fileOf(folder, flac16, rate, channels, frames));
    sound::write(path, format, rate, channels, sound::music(channels, frames));
    return sound::load(path);
}

/// Everything that says a length says the same, and a reader reads just as much, from anywhere.
void expectExact(const sound::File& file)
{
    const UInt32 channels = file.format().mChannelsPerFrame;
    const SInt64 frames = file.frames();
    EXPECT_EQ(file.report().frames, frames);
    AudioFileID facts = nullptr;
    UInt32 size = sizeof facts;
    ASSERT_EQ(ExtAudioFileGetProperty(file, kExtAudioFileProperty_AudioFile, &size, &facts), noErr);
    Float64 seconds = -1;
    size = sizeof seconds;
    ASSERT_EQ(AudioFileGetProperty(facts, kAudioFilePropertyEstimatedDuration, &size, &seconds), noErr);
    EXPECT_EQ(seconds, static_cast<double>(frames) / file.format().mSampleRate);
    UInt64 packets = 0;
    size = sizeof packets;
    if (AudioFileGetProperty(facts, kAudioFilePropertyAudioDataPacketCount, &size, &packets) == noErr) {
        EXPECT_EQ(packets, static_cast<UInt64>(frames));
    }
    ASSERT_EQ(file.setClient(sound::floats(file.format().mSampleRate, channels)), noErr);
    EXPECT_EQ(file.readFloats(channels).size(), static_cast<std::size_t>(frames) * channels);
    if (frames < 10) return;
    ASSERT_EQ(ExtAudioFileSeek(file, frames - 10), noErr);
    EXPECT_EQ(file.readFloats(channels).size(), 10u * channels);
    ASSERT_EQ(ExtAudioFileSeek(file, frames), noErr);
    EXPECT_EQ(file.readFloats(channels).size(), 0u);
}

TEST(Lengths, OfFilesThatWereCutOff)
{
    const struct {
        int format, rate, channels;
        SInt64 stated; // by the cut file; 0: none
        bool isCutShort;
        const char* why;
    } facts[] = {
        // clang-format off
        {wav16,    44100, 2, 100000, true,  "WAV"},
        {rf64,     44100, 2, 100000, true,  "RF64"},
        {w64,      44100, 2, 100000, true,  "W64"},
        {wavIma,   44100, 2, 0,      true,  "coded WAV states bytes, not frames"},
        {aiff16,   44100, 2, 100000, true,  "AIFF"},
        {svx16,    44100, 1, 100000, true,  "16SV"},
        {caf16,    44100, 2, 100000, true,  "CAF"},
        {cafFloat, 44100, 1, 100000, true,  "CAF of floats"},
        {caf8,     44100, 2, 100000, true,  "CAF of u-law"},
        {au16,     44100, 2, 100000, true,  "AU"},
        {flac16,   44100, 2, 100000, true,  "FLAC"},
        {oggFlac,  44100, 2, 100000, true,  "Ogg FLAC"},
        {vorbis,   44100, 2, 0,      false, "Ogg without an end mark is a stream that was recorded"},
        {opus,     48000, 2, 0,      false, "the same"},
        // clang-format on
    };
    const sound::Folder folder;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Bytes whole = fileOf(folder, fact.format, fact.rate, fact.channels, 100000);
        sound::save(folder / "whole", whole);
        const sound::File before(folder / "whole");
        ASSERT_EQ(before.status, noErr);
        EXPECT_FALSE(before.report().isCutShort);
        sound::save(folder / "cut", firstOf(whole, whole.size() * 2 / 3 + 1));
        const sound::File file(folder / "cut");
        ASSERT_EQ(file.status, noErr);
        EXPECT_GT(file.frames(), 30000);
        EXPECT_LT(file.frames(), 80000);
        EXPECT_EQ(file.report().statedFrames, fact.stated);
        EXPECT_EQ(file.report().isCutShort, fact.isCutShort);
        expectExact(file);
        // What is there is the beginning of the whole.
        ASSERT_EQ(before.setClient(sound::floats(fact.rate, static_cast<UInt32>(fact.channels))), noErr);
        ASSERT_EQ(ExtAudioFileSeek(file, 0), noErr);
        const std::vector<float> all = before.readFloats(static_cast<UInt32>(fact.channels));
        const std::vector<float> part = file.readFloats(static_cast<UInt32>(fact.channels));
        ASSERT_LE(part.size(), all.size());
        const std::size_t sure = part.size() * 9 / 10; // a coder's last block may fade
        EXPECT_EQ(std::memcmp(part.data(), all.data(), sure * sizeof(float)), 0);
    }
}

TEST(Lengths, OfFilesWithPlaceholders)
{
    const sound::Folder folder;
    const Bytes whole = fileOf(folder, wav16, 44100, 2, 1000);
    ASSERT_EQ(whole.size(), 4044u);
    const auto stating = [&](std::uint32_t form, std::uint32_t data) {
        Bytes bytes = whole;
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[4 + i] = static_cast<std::uint8_t>(form >> 8 * i);
            bytes[40 + i] = static_cast<std::uint8_t>(data >> 8 * i);
        }
        return bytes;
    };
    const struct {
        std::uint32_t form, data;
        SInt64 frames, stated;
        bool isCutShort;
        const char* why;
    } facts[] = {
        // clang-format off
        {4036,       4000,       1000, 1000, false, "as it was written"},
        {0xFFFFFFFF, 0xFFFFFFFF, 1000, 0,    false, "written as a stream"},
        {0x7FFFFFFF, 0x7FFFFFFF, 1000, 0,    false, "the same, by another program"},
        {0x7FFFF024, 0x7FFFF000, 1000, 0,    false, "the same, by a third"},
        {0,          0,          1000, 0,    false, "never finished"},
        {36,         0,          1000, 0,    false, "never finished, with an empty beginning"},
        {4036,       0,          0,    0,    false, "no sound, and something after it"},
        {8036,       8000,       1000, 2000, true,  "half of it is missing"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        sound::save(folder / "x.wav", stating(fact.form, fact.data));
        const sound::File file(folder / "x.wav");
        ASSERT_EQ(file.status, noErr);
        EXPECT_EQ(file.frames(), fact.frames);
        EXPECT_EQ(file.report().statedFrames, fact.stated);
        EXPECT_EQ(file.report().isCutShort, fact.isCutShort);
        expectExact(file);
    }
}

TEST(Lengths, OfFormsWithOtherBytesAfterThem)
{
    const sound::Folder folder;
    for (const int format : {wav16, aiff16, svx16, w64, caf16, au16, rf64}) {
        SCOPED_TRACE(format);
        const Bytes whole = fileOf(folder, format, 44100, 1, 1000);
        sound::save(folder / "x", joined({whole, Bytes(1, 'x')}));
        const sound::File file(folder / "x");
        ASSERT_EQ(file.status, noErr);
        EXPECT_GE(file.frames(), 1000);
        EXPECT_LE(file.frames(), 1001) << "where the length is that of the file";
        expectExact(file);
    }
    for (const int format : {wav16, aiff16, svx16, w64}) {
        SCOPED_TRACE(format);
        const Bytes whole = fileOf(folder, format, 44100, 1, 1000);
        sound::save(folder / "x", joined({whole, whole}));
        const sound::File file(folder / "x");
        ASSERT_EQ(file.status, noErr);
        EXPECT_EQ(file.frames(), 1000);
        expectExact(file);
    }
}

// The decoder does not return from such files.
TEST(Lengths, OfFilesWithManyTinyChunks)
{
    const sound::Folder folder;
    const Bytes whole = fileOf(folder, svx16, 44100, 1, 1000);
    const std::uint8_t name[] = {'B', 'O', 'D', 'Y'};
    const auto body = std::search(whole.begin(), whole.end(), name, name + 4);
    ASSERT_NE(body, whole.end());
    const Bytes before(whole.begin(), body), sound(body, whole.end());
    Bytes few, many;
    for (int i = 0; i < 20000; ++i) {
        many.insert(many.end(), {'J', 'U', 'N', 'K', 0, 0, 0, 0});
        if (i < 100) few = many;
    }
    const struct {
        Bytes bytes;
        OSStatus status;
        const char* why;
    } facts[] = {
        {joined({before, few, sound}), noErr, "some before the sound"},
        {joined({before, many, sound}), kAudioFileInvalidFileError, "many before the sound"},
        {joined({before, sound, many}), noErr, "many after the sound"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        sound::save(folder / "x", fact.bytes);
        const sound::File file(folder / "x");
        ASSERT_EQ(file.status, fact.status);
        if (fact.status != noErr) continue;
        EXPECT_EQ(file.frames(), 1000);
        EXPECT_FALSE(file.report().isCutShort);
        expectExact(file);
    }
}

TEST(Lengths, OfJoinedOggFiles)
{
    const sound::Folder folder;
    const auto of = [&](int format, int rate, int channels, int frames) {
        return fileOf(folder, format, rate, channels, frames);
    };
    const Bytes first = of(vorbis, 48000, 2, 50000), second = of(vorbis, 48000, 2, 30000);
    const Bytes slow = of(vorbis, 44100, 2, 10000), mono = of(vorbis, 48000, 1, 10000);
    const Bytes inOpus = of(opus, 48000, 2, 20000), inFlac = of(oggFlac, 48000, 2, 40000);
    const struct {
        Bytes bytes;
        SInt64 frames;
        UInt32 omitted;
        const char* why;
    } facts[] = {
        // clang-format off
        {joined({first, second}),                50000 + 30000,         0, "two"},
        {joined({first, first}),                 50000 + 50000,         0, "twice the same stream"},
        {joined({first, second, first}),         50000 + 30000 + 50000, 0, "three"},
        {joined({inOpus, inOpus}),               20000 + 20000,         0, "Opus"},
        {joined({inFlac, inFlac}),               40000 + 40000,         0, "FLAC"},
        {joined({first, inOpus, inFlac}),        50000 + 20000 + 40000, 0, "of three codings"},
        {joined({first, slow}),                  50000,                 1, "another rate"},
        {joined({first, mono}),                  50000,                 1, "another number of channels"},
        {joined({first, slow, mono, second}),    50000 + 30000,         2, "two others between"},
        {joined({first, Bytes(100, 'x'), first}), 50000 + 50000,        0, "with bytes between that are no page"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        sound::save(folder / "x.ogg", fact.bytes);
        const sound::File file(folder / "x.ogg");
        ASSERT_EQ(file.status, noErr);
        EXPECT_EQ(file.frames(), fact.frames);
        EXPECT_EQ(file.report().omittedStreams, fact.omitted);
        EXPECT_FALSE(file.report().isCutShort);
        expectExact(file);
    }
}

TEST(Lengths, OfJoinedOggFilesSeek)
{
    const sound::Folder folder;
    const Bytes first = fileOf(folder, vorbis, 44100, 2, 50000);
    const std::vector<float> a = sound::decode(folder / "written").samples;
    const Bytes second = fileOf(folder, vorbis, 44100, 2, 30000);
    const std::vector<float> b = sound::decode(folder / "written").samples;
    std::vector<float> both = a;
    both.insert(both.end(), b.begin(), b.end());
    sound::save(folder / "x.ogg", joined({first, second}));
    const sound::File file(folder / "x.ogg");
    ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    EXPECT_TRUE(sound::isSame(file.readFloats(2), both));
    EXPECT_EQ(file.tell(), 80000);
    for (const SInt64 frame : {60000, 50000, 49999, 0, 79999, 100}) {
        SCOPED_TRACE(frame);
        ASSERT_EQ(ExtAudioFileSeek(file, frame), noErr);
        EXPECT_EQ(file.tell(), frame);
        const std::vector<float> rest(both.begin() + static_cast<std::ptrdiff_t>(frame) * 2, both.end());
        EXPECT_TRUE(sound::isSame(file.readFloats(2, 700), rest));
    }
}

TEST(Lengths, AreReportedOfOpenFilesOnly)
{
    const sound::Folder folder;
    sound::save(folder / "x.wav", fileOf(folder, wav16, 44100, 2, 10));
    const sound::File file(folder / "x.wav");
    KVXSoundFileReport report = {};
    EXPECT_EQ(KVXPlatformReportSoundFile(file, nullptr), paramErr);
    EXPECT_EQ(KVXPlatformReportSoundFile(nullptr, &report), paramErr);
    EXPECT_EQ(KVXPlatformReportSoundFile(file, &report), noErr);
    EXPECT_EQ(report.frames, 10);
}

} // namespace
