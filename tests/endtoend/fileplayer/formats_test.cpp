// Files of every format: the device renders exactly the samples that libsndfile decodes.
#include "tests/endtoend/fileplayer/file_player.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace endtoend;

using FilePlayerFormats = FilePlayerTest;
using support::Sound;

constexpr int wav = SF_FORMAT_WAV, wavex = SF_FORMAT_WAVEX, aiff = SF_FORMAT_AIFF, caf = SF_FORMAT_CAF;
constexpr int flac = SF_FORMAT_FLAC, u8 = SF_FORMAT_PCM_U8, s8 = SF_FORMAT_PCM_S8, s16 = SF_FORMAT_PCM_16;
constexpr int s24 = SF_FORMAT_PCM_24, s32 = SF_FORMAT_PCM_32, real = SF_FORMAT_FLOAT;
constexpr int vorbis = SF_FORMAT_OGG | SF_FORMAT_VORBIS, opus = SF_FORMAT_OGG | SF_FORMAT_OPUS;
constexpr int mp3 = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;

const struct {
    const char* name;
    int format, rate, channels;
} files[] = {
    // clang-format off
    // name            format           rate  ch
    {"u8.wav",         wav | u8,        44100, 1},
    {"u8-2.wav",       wav | u8,        44100, 2},
    {"u8-6.wav",       wav | u8,         8000, 6},
    {"16.wav",         wav | s16,       44100, 1},
    {"16-2.wav",       wav | s16,       44100, 2},
    {"16-6.wav",       wav | s16,       44100, 6},
    {"16-8k.wav",      wav | s16,        8000, 1},
    {"16-11k.wav",     wav | s16,       11025, 2},
    {"16-22k.wav",     wav | s16,       22050, 2},
    {"16-88k.wav",     wav | s16,       88200, 2},
    {"16-176k.wav",    wav | s16,      176400, 2},
    {"24.wav",         wav | s24,       48000, 1},
    {"24-2.wav",       wav | s24,       48000, 2},
    {"24-6.wav",       wavex | s24,     96000, 6},
    {"24-192k.wav",    wav | s24,      192000, 2},
    {"32.wav",         wav | s32,       48000, 1},
    {"32-2.wav",       wav | s32,       96000, 2},
    {"32-6.wav",       wav | s32,       48000, 6},
    {"float.wav",      wav | real,       8000, 1},
    {"float-2.wav",    wav | real,     192000, 2},
    {"float-6.wav",    wav | real,     192000, 6},
    {"s8.aiff",        aiff | s8,       44100, 2},
    {"16.aiff",        aiff | s16,      44100, 1},
    {"16-2.aiff",      aiff | s16,       8000, 2},
    {"24-6.aiff",      aiff | s24,      48000, 6},
    {"32-2.aiff",      aiff | s32,     192000, 2},
    {"float-2.aifc",   aiff | real,     44100, 2},
    {"16.caf",         caf | s16,        8000, 1},
    {"24-2.caf",       caf | s24,       44100, 2},
    {"32-6.caf",       caf | s32,       48000, 6},
    {"float-2.caf",    caf | real,     192000, 2},
    {"alac-2.caf",     caf | SF_FORMAT_ALAC_16, 44100, 2},
    {"16.flac",        flac | s16,       8000, 1},
    {"16-2.flac",      flac | s16,      44100, 2},
    {"16-6.flac",      flac | s16,      48000, 6},
    {"24-2.flac",      flac | s24,      96000, 2},
    {"24-192k.flac",   flac | s24,     192000, 2},
    {"1.ogg",          vorbis,           8000, 1},
    {"2.ogg",          vorbis,          44100, 2},
    {"6.ogg",          vorbis,          48000, 6},
    {"192k.ogg",       vorbis,         192000, 2},
    {"1.opus",         opus,            48000, 1},
    {"2.opus",         opus,            48000, 2},
    {"6.opus",         opus,            48000, 6},
    {"8k.opus",        opus,             8000, 1},
    {"1.mp3",          mp3,              8000, 1},
    {"2.mp3",          mp3,             44100, 2},
    {"48k.mp3",        mp3,             48000, 2},
    {"22k.mp3",        mp3,             22050, 1},
    // clang-format on
};

bool isLossless(int format)
{
    return (format & SF_FORMAT_TYPEMASK) != SF_FORMAT_OGG && (format & SF_FORMAT_TYPEMASK) != SF_FORMAT_MPEG;
}

TEST_F(FilePlayerFormats, EveryFormatPlaysExactlyTheDecodedSamples)
{
    for (const auto& file : files) {
        SCOPED_TRACE(file.name);
        const std::string path = folder / file.name;
        const auto frames = std::size_t(file.rate) * 3 / 10 + 7;
        const Sound written = isLossless(file.format) ? support::makeNoise(file.rate, file.channels, frames)
                                                      : support::makeSweep(file.rate, file.channels, frames);
        support::writeSound(written, path, file.format);
        const Sound decoded = support::readSound(path);
        if (isLossless(file.format)) ASSERT_EQ(decoded.frames(), frames);
        ASSERT_TRUE(std::any_of(decoded.samples.begin(), decoded.samples.end(),
                                [](float sample) { return std::fabs(sample) > 0.1f; }));

        FilePlayer player(loaded, path);
        EXPECT_EQ(player.get("SampleRate"), decoded.sampleRate);
        EXPECT_EQ(player.get("TrackLength"), double(decoded.frames()) / decoded.sampleRate);
        EXPECT_EQ(player.get("DataNumberChannels"), decoded.channels);
        player.play();
        expectThenSilence(player.render(decoded.frames() + 1000), decoded.samples);
        EXPECT_EQ(player.get("CurrentTime"), player.get("TrackLength"));
        EXPECT_TRUE(player.isPlaying()) << "the graph runs on after the end of the file";
    }
}

TEST_F(FilePlayerFormats, DataHoldsTheDecodedSamples)
{
    for (const auto& file : files) {
        if (file.channels != 2) continue;
        SCOPED_TRACE(file.name);
        const std::string path = folder / file.name;
        support::writeSound(support::makeSweep(file.rate, 2, 4000), path, file.format);
        const Sound decoded = support::readSound(path);
        const host::Object player = loadFile(loaded.host, path, 2);
        const host::MemoryBlock data = player.call("Data").memoryBlock();
        ASSERT_EQ(data.size(), decoded.samples.size() * sizeof(float));
        EXPECT_TRUE(std::equal(decoded.samples.begin(), decoded.samples.end(), data.as<const float>()));
    }
}

TEST_F(FilePlayerFormats, RequestedChannelsComeFromTheFileChannels)
{
    const struct {
        int file, requested;      ///< channel counts
        std::vector<int> sources; ///< number of the file channel on each device channel; -1: silence
        const char* why;
    } facts[] = {
        {1, 2, {0, 0}, "a mono file plays on both channels"},
        {2, 1, {0}, "only the first channel plays"},
        {6, 2, {0, 1}, "only the first two channels play"},
        {2, 4, {0, 1, -1, -1}, "channels that the file lacks are silent"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Sound sound = support::makeNoise(44100, fact.file, 4410);
        support::writeSound(sound, folder / "x.wav");
        FilePlayer::Setup setup;
        setup.channels = fact.requested;
        setup.deviceChannels = std::uint32_t(fact.requested);
        FilePlayer player(loaded, folder / "x.wav", setup);
        player.play();
        const Samples rendered = player.render(5000);
        for (int channel = 0; channel < fact.requested; ++channel) {
            const int from = fact.sources[std::size_t(channel)];
            expectThenSilence(channelOf(rendered, fact.requested, channel),
                              from < 0 ? Samples() : channelOf(sound.samples, fact.file, from));
        }
    }
}

} // namespace
