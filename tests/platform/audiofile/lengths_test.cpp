// Truncated, joined and unfinished files: all decodable frames are read, and the length is exact.
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using sound::afterFirst;
using sound::Bytes;
using sound::firstOf;
using sound::joined;
using sound::ofText;

constexpr int vorbis = SF_FORMAT_OGG | SF_FORMAT_VORBIS, opus = SF_FORMAT_OGG | SF_FORMAT_OPUS;
constexpr int oggFlac = -1 /* not written by libsndfile */, flac16 = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
constexpr int wav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16, caf16 = SF_FORMAT_CAF | SF_FORMAT_PCM_16;
constexpr int aiff16 = SF_FORMAT_AIFF | SF_FORMAT_PCM_16, w64 = SF_FORMAT_W64 | SF_FORMAT_PCM_16;
constexpr int au16 = SF_FORMAT_AU | SF_FORMAT_PCM_16, rf64 = SF_FORMAT_RF64 | SF_FORMAT_PCM_16;
constexpr int cafFloat = SF_FORMAT_CAF | SF_FORMAT_FLOAT, caf8 = SF_FORMAT_CAF | SF_FORMAT_ULAW;
constexpr int wavIma = SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM, svx16 = SF_FORMAT_SVX | SF_FORMAT_PCM_16;

constexpr std::size_t mostPageBody = 20 * 255;
constexpr std::uint8_t firstPage = 2; // page flag of the first page of a stream

/// Make an Ogg page with a body of at most mostPageBody bytes. The page has no checksum, because the platform
/// does not check checksums.
Bytes oggPage(const Bytes& body, std::uint8_t flags)
{
    Bytes header(27 + body.size() / 255 + 1);
    std::memcpy(header.data(), "OggS", 4);
    header[5] = flags;
    header[26] = static_cast<std::uint8_t>(header.size() - 27);
    std::fill(header.begin() + 27, header.end() - 1, 255);
    header.back() = static_cast<std::uint8_t>(body.size() % 255);
    return joined({header, body});
}

Bytes inOggPages(const Bytes& flac)
{
    constexpr std::size_t streamInfo = 4 + 4 + 34;
    const Bytes mapping = {0x7F, 'F', 'L', 'A', 'C', 1, 0, 0, 1};
    Bytes file = oggPage(joined({mapping, firstOf(flac, streamInfo)}), firstPage);
    for (std::size_t at = streamInfo; at < flac.size(); at += mostPageBody)
        file = joined({file, oggPage(firstOf(afterFirst(flac, at), mostPageBody), 0)});
    return file;
}

Bytes fileOf(const sound::Folder& folder, int format, int rate, int channels, int frames)
{
    const std::string path = folder / "written";
    if (format == oggFlac) return inOggPages(fileOf(folder, flac16, rate, channels, frames));
    sound::write(path, format, rate, channels, sound::music(channels, frames));
    return sound::load(path);
}

/// Expect that all properties state one length, and that exactly that number of frames can be read.
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

// In this file a seek to the last frame fails, but all frames decode.
TEST(Lengths, FlacFileFollowedByAnother)
{
    const sound::Folder folder;
    sound::save(folder / "x",
                joined({fileOf(folder, flac16, 44100, 2, 100000), fileOf(folder, flac16, 44100, 2, 50000)}));
    const sound::File file(folder / "x");
    ASSERT_EQ(file.status, noErr);
    EXPECT_EQ(file.frames(), 100000);
    EXPECT_EQ(file.report().statedFrames, 100000);
    EXPECT_FALSE(file.report().isCutShort);
    expectExact(file);
}

TEST(Lengths, TruncatedFiles)
{
    const struct {
        int format, rate, channels;
        SInt64 stated; // number of frames that the truncated file states; 0: not stated
        bool isCutShort;
        const char* why;
    } facts[] = {
        // clang-format off
        {wav16,    44100, 2, 100000, true,  "WAV"},
        {rf64,     44100, 2, 100000, true,  "RF64"},
        {w64,      44100, 2, 100000, true,  "W64"},
        {wavIma,   44100, 2, 0,      true,  "compressed WAV states bytes, not frames"},
        {aiff16,   44100, 2, 100000, true,  "AIFF"},
        {svx16,    44100, 1, 100000, true,  "16SV"},
        {caf16,    44100, 2, 100000, true,  "CAF"},
        {cafFloat, 44100, 1, 100000, true,  "float CAF"},
        {caf8,     44100, 2, 100000, true,  "u-law CAF"},
        {au16,     44100, 2, 100000, true,  "AU"},
        {flac16,   44100, 2, 100000, true,  "FLAC"},
        {oggFlac,  44100, 2, 100000, true,  "Ogg FLAC"},
        {vorbis,   44100, 2, 0,      false, "Ogg without a last page is a recorded stream"},
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
        // The frames read must be the first frames of the whole file.
        ASSERT_EQ(before.setClient(sound::floats(fact.rate, static_cast<UInt32>(fact.channels))), noErr);
        ASSERT_EQ(ExtAudioFileSeek(file, 0), noErr);
        const std::vector<float> all = before.readFloats(static_cast<UInt32>(fact.channels));
        const std::vector<float> part = file.readFloats(static_cast<UInt32>(fact.channels));
        ASSERT_LE(part.size(), all.size());
        // Without the end, because the last block of a coding may differ.
        const std::size_t compared = part.size() * 9 / 10;
        EXPECT_EQ(std::memcmp(part.data(), all.data(), compared * sizeof(float)), 0);
    }
}

TEST(Lengths, PlaceholderLengths)
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
        {4036,       4000,       1000, 1000, false, "unchanged"},
        {0xFFFFFFFF, 0xFFFFFFFF, 1000, 0,    false, "written as a stream"},
        {0x7FFFFFFF, 0x7FFFFFFF, 1000, 0,    false, "the same with another placeholder"},
        {0x7FFFF024, 0x7FFFF000, 1000, 0,    false, "the same with a third placeholder"},
        {0,          0,          1000, 0,    false, "unfinished"},
        {36,         0,          1000, 0,    false, "unfinished, with the length of the header"},
        {4036,       0,          0,    0,    false, "no data, but a chunk after it"},
        {8036,       8000,       1000, 2000, true,  "half of the frames are missing"},
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

TEST(Lengths, TrailingBytesAreIgnored)
{
    const sound::Folder folder;
    for (const int format : {wav16, aiff16, svx16, w64, caf16, au16, rf64}) {
        SCOPED_TRACE(format);
        const Bytes whole = fileOf(folder, format, 44100, 1, 1000);
        sound::save(folder / "x", joined({whole, Bytes(1, 'x')}));
        const sound::File file(folder / "x");
        ASSERT_EQ(file.status, noErr);
        EXPECT_GE(file.frames(), 1000);
        EXPECT_LE(file.frames(), 1001) << "if the file's length counts";
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

// Given the whole file, libsndfile would loop for a long time.
TEST(Lengths, FilesWithManyTinyChunks)
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
        {joined({before, few, sound}), noErr, "some before the data"},
        {joined({before, many, sound}), kAudioFileInvalidFileError, "many before the data"},
        {joined({before, sound, many}), noErr, "many after the data"},
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

TEST(Lengths, JoinedOggFiles)
{
    const sound::Folder folder;
    const auto of = [&](int format, int rate, int channels, int frames) {
        return fileOf(folder, format, rate, channels, frames);
    };
    const Bytes first = of(vorbis, 48000, 2, 50000), second = of(vorbis, 48000, 2, 30000);
    const Bytes slow = of(vorbis, 44100, 2, 10000), mono = of(vorbis, 48000, 1, 10000);
    const Bytes inOpus = of(opus, 48000, 2, 20000), inFlac = of(oggFlac, 48000, 2, 40000);
    const Bytes unknown =
        joined({oggPage(ofText("an unknown coding", 100), firstPage), oggPage(Bytes(1000), 0)});
    Bytes noSetup = first;
    std::fill(noSetup.begin() + 200, noSetup.begin() + 2000, 0);
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
        {joined({first, inOpus, inFlac}),        50000 + 20000 + 40000, 0, "three codings"},
        {joined({first, slow}),                  50000,                 1, "another rate"},
        {joined({first, mono}),                  50000,                 1, "another number of channels"},
        {joined({first, slow, mono, second}),    50000 + 30000,         2, "two other streams between"},
        {joined({first, Bytes(100, 'x'), first}), 50000 + 50000,        0, "other bytes between"},
        {joined({inFlac, Bytes(100, 'x'), inFlac}), 40000 + 40000,      0, "the same in FLAC"},
        {joined({first, noSetup, second}),       50000 + 30000,         1, "the second without its set-up header"},
        {joined({noSetup, second}),              30000,                 1, "the first without its set-up header"},
        {joined({first, unknown, second}),       50000 + 30000,         1, "an unknown coding"},
        {joined({unknown, slow, first}),         10000,                 2, "the first that opens sets the rate"},
        {joined({firstOf(first, 40), second}),   30000,                 1, "the first truncated in its first page"},
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

TEST(Lengths, JoinedOggFilesAfterATruncatedOne)
{
    const sound::Folder folder;
    for (const int format : {vorbis, opus, oggFlac}) {
        const Bytes first = fileOf(folder, format, 48000, 2, 200000);
        const Bytes second = fileOf(folder, format, 48000, 2, 30000);
        sound::save(folder / "second", second);
        const sound::File alone(folder / "second");
        ASSERT_EQ(alone.setClient(sound::floats(48000, 2)), noErr);
        const std::vector<float> expected = alone.readFloats(2);
        ASSERT_EQ(expected.size(), 30000u * 2);
        for (std::size_t part = 5; part < 16; ++part) {
            const Bytes cut = firstOf(first, first.size() * part / 16);
            SCOPED_TRACE(std::to_string(format) + ", truncated after " + std::to_string(cut.size()));
            sound::save(folder / "cut", cut);
            const sound::File before(folder / "cut");
            ASSERT_EQ(before.status, noErr);
            sound::save(folder / "both", joined({cut, second}));
            const sound::File both(folder / "both");
            ASSERT_EQ(both.status, noErr);
            EXPECT_EQ(both.frames(), before.frames() + 30000);
            EXPECT_EQ(both.report().omittedStreams, 0u);
            EXPECT_EQ(both.report().isCutShort, before.report().isCutShort);
            expectExact(both);
            ASSERT_EQ(ExtAudioFileSeek(both, before.frames()), noErr);
            EXPECT_TRUE(sound::isSame(both.readFloats(2), expected));
        }
    }
}

// A link is one of several joined Ogg files. The length of a Vorbis link is exact. A FLAC link only states a
// length, so the stated length is checked.
TEST(Lengths, TruncatedFlacAfterVorbis)
{
    const sound::Folder folder;
    const Bytes first = fileOf(folder, vorbis, 48000, 2, 50000);
    const Bytes flac = fileOf(folder, oggFlac, 48000, 2, 40000);
    const Bytes cut = firstOf(flac, flac.size() / 2);
    sound::save(folder / "cut", cut);
    const SInt64 left = sound::File(folder / "cut").frames();
    ASSERT_GT(left, 10000);
    sound::save(folder / "both", joined({first, cut}));
    const sound::File file(folder / "both");
    ASSERT_EQ(file.status, noErr);
    EXPECT_EQ(file.frames(), 50000 + left);
    EXPECT_TRUE(file.report().isCutShort);
    EXPECT_EQ(file.report().statedFrames, 0) << "not all links state a length";
    expectExact(file);
}

TEST(Lengths, LinksAfterThe1024thAreOmitted)
{
    const sound::Folder folder;
    const Bytes link = fileOf(folder, oggFlac, 48000, 1, 100);
    Bytes bytes;
    for (int i = 0; i < 1030; ++i) bytes.insert(bytes.end(), link.begin(), link.end());
    sound::save(folder / "x.ogg", bytes);
    const sound::File file(folder / "x.ogg");
    ASSERT_EQ(file.status, noErr);
    EXPECT_EQ(file.frames(), 1024 * 100);
    EXPECT_EQ(file.report().omittedStreams, 6u);
    EXPECT_FALSE(file.report().isCutShort);
    expectExact(file);
}

// In a damaged link (one of several joined Ogg files) the frames after the damage are skipped. The next link
// is read from its first frame.
TEST(Lengths, LinksAfterADamagedOneAreRead)
{
    const sound::Folder folder;
    for (const int format : {vorbis, opus, oggFlac}) {
        SCOPED_TRACE(format);
        const Bytes second = fileOf(folder, format, 48000, 2, 30000);
        sound::save(folder / "second", second);
        const sound::File alone(folder / "second");
        ASSERT_EQ(alone.setClient(sound::floats(48000, 2)), noErr);
        const std::vector<float> expected = alone.readFloats(2);
        Bytes damaged = fileOf(folder, format, 48000, 2, 200000);
        const auto middle = damaged.begin() + static_cast<std::ptrdiff_t>(damaged.size() / 2);
        std::fill(middle, middle + 3000, 0);
        sound::save(folder / "both", joined({damaged, second}));
        const sound::File file(folder / "both");
        ASSERT_EQ(file.status, noErr);
        ASSERT_EQ(file.frames(), 230000);
        ASSERT_EQ(file.setClient(sound::floats(48000, 2)), noErr);
        for (const UInt32 atATime : {1u << 20, 700u}) {
            ASSERT_EQ(ExtAudioFileSeek(file, 0), noErr);
            const std::vector<float> samples = file.readFloats(2, atATime);
            ASSERT_GT(samples.size(), expected.size());
            EXPECT_LT(samples.size(), 230000u * 2) << "the damage";
            EXPECT_TRUE(sound::isSame({samples.end() - 60000, samples.end()}, expected));
            EXPECT_EQ(file.tell(), 230000);
        }
        ASSERT_EQ(ExtAudioFileSeek(file, 200000), noErr);
        EXPECT_TRUE(sound::isSame(file.readFloats(2), expected));

        ASSERT_EQ(file.setClient(sound::floats(24000, 2)), noErr);
        ASSERT_EQ(ExtAudioFileSeek(file, 0), noErr);
        EXPECT_LT(file.readFloats(2, 700).size(), 115000u * 2) << "the damage";
        EXPECT_EQ(file.tell(), 230000);
    }
}

TEST(Lengths, JoinedOggFilesSeek)
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

TEST(Lengths, ReportNeedsAnOpenFile)
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
