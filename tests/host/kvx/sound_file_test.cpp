// Decoding, and where a file ends.
#include "host/kvx/failure.h"
#include "host/kvx/sound_file.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <filesystem>
#include <fstream>

namespace {

using kvx::SoundFile;

TEST(SoundFile, TellsWhatIsHeard)
{
    support::TemporaryFolder folder;
    for (int channels : {1, 2, 3, 6}) {
        support::writeSound(support::makeNoise(22050, channels, 33), folder / "a.wav");
        const auto format = SoundFile(folder / "a.wav").format();
        EXPECT_EQ(format.sampleRate, 22050);
        EXPECT_EQ(format.fileChannels, channels);
        EXPECT_EQ(format.channels, channels == 1 ? 1 : 2);
        EXPECT_EQ(format.frames, 33);
    }
}

TEST(SoundFile, GivesTheFirstTwoOfMoreChannels)
{
    support::TemporaryFolder folder;
    support::writeSound({8000, 3, {1, 2, 3, 4, 5, 6}}, folder / "a.wav");
    SoundFile file(folder / "a.wav");
    std::vector<float> samples(8, -1.0f);
    EXPECT_EQ(file.read(samples.data(), 4), 2u);
    EXPECT_EQ(samples, (std::vector<float>{1, 2, 4, 5, -1, -1, -1, -1}));
}

// A writer that cannot go back leaves a length that stands for none: such a file ends where it ends.
TEST(SoundFile, OfAWriterThatCouldNotGoBackIsWhole)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 1, 1000), folder / "a.wav",
                        SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::fstream file(folder / "a.wav", std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(40); // the length of the data chunk
    file.write("\xff\xff\xff\xff", 4);
    file.close();
    SoundFile sound(folder / "a.wav");
    std::vector<float> samples(2000);
    EXPECT_EQ(sound.read(samples.data(), 2000), 1000u);
}

TEST(SoundFile, CutByOneFrameIsRefused)
{
    support::TemporaryFolder folder;
    for (int format : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_WAV | SF_ENDIAN_BIG | SF_FORMAT_PCM_16,
                       SF_FORMAT_AIFF | SF_FORMAT_PCM_16, SF_FORMAT_SVX | SF_FORMAT_PCM_16,
                       SF_FORMAT_CAF | SF_FORMAT_PCM_16, SF_FORMAT_W64 | SF_FORMAT_PCM_16,
                       SF_FORMAT_RF64 | SF_FORMAT_PCM_16, SF_FORMAT_AU | SF_FORMAT_PCM_16,
                       SF_FORMAT_FLAC | SF_FORMAT_PCM_16}) {
        SCOPED_TRACE(format);
        support::writeSound(support::makeNoise(44100, 1, 1000), folder / "a", format);
        EXPECT_NO_THROW(SoundFile(folder / "a"));
        std::filesystem::resize_file(folder / "a", std::filesystem::file_size(folder / "a") - 2);
        EXPECT_THROW(
            {
                SoundFile file(folder / "a");
                std::vector<float> samples(1000);
                file.read(samples.data(), 1000);
            },
            kvx::Failure);
    }
}

} // namespace
