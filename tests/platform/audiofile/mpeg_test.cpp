// MPEG streams: their length when they do not say it.
#include "tests/platform/audiofile/sound_files.h"

#include "platform/audiofile/mpeg_frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

using kvxplatform::audiofile::MpegHeader;
using kvxplatform::audiofile::readMpegHeader;
using sound::Bytes;

TEST(MpegHeaders, AreRead)
{
    const struct {
        std::uint32_t word;
        UInt32 layer, bytes, samples;
        bool isMPEG1, isMono;
        const char* why;
    } facts[] = {
        // clang-format off
        {0xFFFB9000, 3, 417,  1152, true,  false, "128 kbit/s at 44.1 kHz"},
        {0xFFFB9200, 3, 418,  1152, true,  false, "padded"},
        {0xFFFA9000, 3, 417,  1152, true,  false, "with a checksum, which is inside"},
        {0xFFFBE400, 3, 960,  1152, true,  false, "320 kbit/s at 48 kHz"},
        {0xFFFBEAC0, 3, 1441, 1152, true,  true,  "the longest: 320 kbit/s at 32 kHz, padded; mono"},
        {0xFFF38000, 3, 208,  576,  false, false, "MPEG-2: 64 kbit/s at 22.05 kHz"},
        {0xFFE318C0, 3, 72,   576,  false, true,  "MPEG-2.5: 8 kbit/s at 8 kHz"},
        {0xFFFDA000, 2, 626,  1152, true,  false, "layer II: 192 kbit/s"},
        {0xFFFF4000, 1, 136,  384,  true,  false, "layer I: 128 kbit/s, in words"},
        {0xFFFB0000, 0, 0,    0,    false, false, "a rate that only its encoder knows"},
        {0xFFFBF000, 0, 0,    0,    false, false, "no bit rate"},
        {0xFFFB9C00, 0, 0,    0,    false, false, "no sample rate"},
        {0xFFEB9000, 0, 0,    0,    false, false, "no version"},
        {0xFFF99000, 0, 0,    0,    false, false, "no layer"},
        {0xFF7B9000, 0, 0,    0,    false, false, "not in step"},
        {0x00000000, 0, 0,    0,    false, false, "nothing"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        MpegHeader header;
        ASSERT_EQ(readMpegHeader(fact.word, header), fact.bytes != 0);
        if (!fact.bytes) continue;
        EXPECT_EQ(header.layer, fact.layer);
        EXPECT_EQ(header.bytes, fact.bytes);
        EXPECT_EQ(header.samples, fact.samples);
        EXPECT_EQ(header.isMPEG1, fact.isMPEG1);
        EXPECT_EQ(header.isMono, fact.isMono);
    }
}

/// Silent frames of a header each.
Bytes silentFrames(std::initializer_list<std::pair<std::uint32_t, int>> runs)
{
    Bytes bytes;
    for (const auto& [word, count] : runs) {
        MpegHeader header;
        EXPECT_TRUE(readMpegHeader(word, header));
        for (int i = 0; i < count; ++i) {
            const std::size_t start = bytes.size();
            bytes.resize(start + header.bytes);
            for (std::size_t b = 0; b < 4; ++b)
                bytes[start + b] = static_cast<std::uint8_t>(word >> (24 - 8 * b));
        }
    }
    return bytes;
}

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes whole;
    for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

Bytes ofText(const char* text, std::size_t size)
{
    Bytes bytes(text, text + std::strlen(text));
    bytes.resize(size);
    return bytes;
}

constexpr std::uint32_t at128 = 0xFFFB9000, at32 = 0xFFFB1000, at320 = 0xFFFBE000, mono22 = 0xFFF380C0;

TEST(MpegLength, IsThatOfAllFrames)
{
    Bytes tag = ofText("ID3\3", 10 + 300); // its size in four times seven bits
    tag[8] = 300 >> 7, tag[9] = 300 & 127;
    const struct {
        Bytes bytes;
        SInt64 frames;
        UInt32 channels;
        const char* why;
    } facts[] = {
        // clang-format off
        {silentFrames({{at128, 100}}),                                    115200, 2, "one rate"},
        {silentFrames({{at320, 2}, {at32, 500}}),                         578304, 2, "it begins at the highest rate: a guess is far too short"},
        {silentFrames({{at32, 2}, {at320, 200}}),                         232704, 2, "it begins at the lowest: a guess is far too long"},
        {silentFrames({{mono22, 100}}),                                    57600, 1, "frames of half the length"},
        {joined({tag, silentFrames({{at320, 2}, {at32, 98}})}),           115200, 2, "behind a tag"},
        {joined({silentFrames({{at320, 2}, {at32, 98}}), ofText("TAG", 128)}), 115200, 2, "in front of a tag"},
        {joined({silentFrames({{at320, 2}, {at32, 98}}), Bytes(50, 0xFF)}), 115200, 2, "what follows is no frame"},
        {silentFrames({{0xFFFDE000, 2}, {0xFFFD1000, 98}}),                 115200, 2, "layer II"},
        {silentFrames({{at128, 1}, {at32, 2}}),                             3456, 2, "hardly any"},
        // clang-format on
    };
    const sound::Folder folder;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        sound::save(folder / "x.mp3", fact.bytes);
        const sound::File file(folder / "x.mp3");
        ASSERT_EQ(file.status, noErr);
        EXPECT_EQ(file.frames(), fact.frames);
        const UInt32 channels = file.format().mChannelsPerFrame;
        EXPECT_EQ(channels, fact.channels);
        ASSERT_EQ(file.setClient(sound::floats(file.format().mSampleRate, channels)), noErr);
        EXPECT_EQ(file.readFloats(channels).size(), static_cast<std::size_t>(fact.frames) * channels);
        ASSERT_EQ(ExtAudioFileSeek(file, fact.frames - 100), noErr);
        EXPECT_EQ(file.readFloats(channels).size(), 100u * channels) << "to the very end";
    }
}

TEST(MpegLength, OfMusicWithoutItsNoteIsTheSameMusic)
{
    const sound::Folder folder;
    const Bytes whole = sound::varyingMp3(folder / "v.mp3");
    const sound::Decoded expected = sound::decode(folder / "v.mp3");
    ASSERT_EQ(expected.info.frames, 441000);

    MpegHeader note;
    ASSERT_TRUE(
        readMpegHeader(std::uint32_t{whole[0]} << 24 | whole[1] << 16 | whole[2] << 8 | whole[3], note));
    ASSERT_EQ(std::memcmp(&whole[kvxplatform::audiofile::infoPlace(note)], "Xing", 4), 0);
    sound::save(folder / "x.mp3", Bytes(whole.begin() + static_cast<long>(note.bytes), whole.end()));
    const std::vector<float> guessed = sound::decode(folder / "x.mp3").samples;
    ASSERT_LT(guessed.size(), 441000u) << "a guess by the first frame";

    const sound::File file(folder / "x.mp3");
    EXPECT_EQ(file.frames() % 1152, 0) << "all frames, with what the encoder put in front and behind";
    EXPECT_GT(file.frames(), 441000);
    EXPECT_LT(file.frames(), 441000 + 4 * 1152);
    ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    const std::vector<float> samples = file.readFloats(2);
    ASSERT_EQ(samples.size(), static_cast<std::size_t>(file.frames()) * 2);
    EXPECT_EQ(std::memcmp(samples.data(), guessed.data(), guessed.size() * sizeof(float)), 0)
        << "as far as the guess goes, the very samples";
    // Behind the encoder's delay and the decoder's, the same samples.
    bool isFound = false;
    for (std::size_t shift = 0; shift < 4000 && !isFound; ++shift)
        isFound = std::memcmp(&samples[(20000 + shift) * 2], &expected.samples[40000], 300000 * 8) == 0;
    EXPECT_TRUE(isFound);
}

} // namespace
