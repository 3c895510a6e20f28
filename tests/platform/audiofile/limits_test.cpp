// Limits of sample rate and channel count. A file at or beyond a limit does not make the reader allocate
// much memory.
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

namespace {

using sound::Bytes;

void put(Bytes& bytes, std::size_t at, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> 8 * i);
}

/// Make a 16-bit WAV file of ten frames.
Bytes waveOf(std::uint32_t rate, std::uint32_t channels)
{
    const sound::Folder folder;
    sound::write(folder / "x.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 1, sound::music(1, 1));
    Bytes bytes = sound::load(folder / "x.wav");
    bytes.resize(44 + 10 * 2 * channels);
    put(bytes, 4, static_cast<std::uint32_t>(bytes.size()) - 8, 4);
    put(bytes, 22, channels, 2);
    put(bytes, 24, rate, 4);
    put(bytes, 28, rate * channels * 2, 4);
    put(bytes, 32, channels * 2, 2);
    put(bytes, 40, static_cast<std::uint32_t>(bytes.size()) - 44, 4);
    return bytes;
}

TEST(Limits, RateAndChannelsAreBounded)
{
    const std::uint32_t good[] = {1000, 44100, 768000};
    const std::uint32_t bad[] = {1,        999,       768001,     800000,      10000000,
                                 10000001, 178956971, 0x10000040, 0x40000000u, 0x7FFFFFFFu};
    const sound::Folder folder;
    const auto expect = [&](std::uint32_t rate, std::uint32_t channels, OSStatus status) {
        SCOPED_TRACE(std::to_string(rate) + " Hz, " + std::to_string(channels) + " channels");
        sound::save(folder / "x.wav", waveOf(rate, channels));
        const sound::File file(folder / "x.wav");
        ASSERT_EQ(file.status, status);
        if (status != noErr) return;
        EXPECT_EQ(file.format().mSampleRate, rate);
        EXPECT_EQ(file.frames(), 10);
        ASSERT_EQ(file.setClient(sound::floats(rate, channels)), noErr);
        EXPECT_EQ(file.readFloats(channels, 10).size(), 10u * channels);
        ASSERT_EQ(file.setClient(sound::floats(rate, 2)), noErr) << "another channel count";
        ASSERT_EQ(ExtAudioFileSeek(file, 0), noErr);
        EXPECT_EQ(file.readFloats(2, 10).size(), 20u);
    };
    for (const std::uint32_t channels : {1u, 2u, 3u, 64u, 1024u}) {
        for (const std::uint32_t rate : good) expect(rate, channels, noErr);
        for (const std::uint32_t rate : bad) expect(rate, channels, kAudioFileUnsupportedDataFormatError);
    }
    for (const std::uint32_t channels : {1025u, 65535u})
        expect(44100, channels, kAudioFileUnsupportedDataFormatError);
}

} // namespace
