// Several files, gathered into runs of one format and read as one.
#include "host/kvx/play/programme.h"
#include "host/kvx/text/failure.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

namespace {

struct Programme : testing::Test {
    support::TemporaryFolder folder;

    std::string write(const std::string& name, int rate, int channels, std::size_t frames, unsigned seed = 1)
    {
        support::writeSound(support::makeNoise(rate, channels, frames, seed), folder / name);
        return folder / name;
    }
};

TEST_F(Programme, GathersNeighboursOfOneFormat)
{
    const auto runs = kvx::planProgramme({write("a.wav", 44100, 2, 10), write("b.wav", 44100, 6, 20),
                                          write("c.wav", 44100, 1, 30), write("d.wav", 48000, 1, 40),
                                          write("e.wav", 44100, 2, 50)});
    ASSERT_EQ(runs.size(), 4u);
    EXPECT_EQ(runs[0].files.size(), 2u) << "six channels are heard as two";
    EXPECT_EQ(runs[0].frames(), 30);
    EXPECT_EQ(runs[0].channels(), 2);
    EXPECT_EQ(runs[1].channels(), 1);
    EXPECT_EQ(runs[2].sampleRate(), 48000);
    EXPECT_EQ(runs[3].frames(), 50);
}

TEST_F(Programme, KnowsTheFileThatSounds)
{
    const auto runs = kvx::planProgramme({write("a.wav", 44100, 1, 10), write("b.wav", 44100, 1, 20)});
    ASSERT_EQ(runs.size(), 1u);
    const struct {
        std::int64_t frame;
        std::size_t file;
        std::int64_t first;
    } facts[] = {{0, 0, 0}, {9, 0, 0}, {10, 1, 10}, {29, 1, 10}, {30, 1, 10}, {1000, 1, 10}};
    for (const auto& fact : facts) {
        const auto& file = runs[0].fileAt(fact.frame);
        EXPECT_EQ(&file, &runs[0].files[fact.file]) << fact.frame;
        EXPECT_EQ(runs[0].firstFrameOf(file), fact.first) << fact.frame;
    }
}

TEST_F(Programme, ReadsAcrossTheSeams)
{
    const auto runs = kvx::planProgramme(
        {write("a.wav", 44100, 2, 100, 1), write("b.wav", 44100, 2, 1, 2), write("c.wav", 44100, 2, 57, 3)});
    std::vector<float> expected;
    for (const char* name : {"a.wav", "b.wav", "c.wav"}) {
        const auto samples = support::readSound(folder / name).samples;
        expected.insert(expected.end(), samples.begin(), samples.end());
    }
    for (std::size_t block : {1u, 7u, 100u, 158u, 159u, 1000u}) {
        kvx::RunReader reader(runs[0]);
        std::vector<float> all, some(block * 2);
        for (std::size_t got = block; got == block;) {
            got = reader.read(some.data(), block);
            all.insert(all.end(), some.begin(), some.begin() + std::ptrdiff_t(got * 2));
        }
        EXPECT_EQ(all, expected) << block;
        EXPECT_EQ(reader.read(some.data(), block), 0u) << "the end stays the end";
    }
}

TEST_F(Programme, IsRefusedForOneUnfitFile)
{
    EXPECT_THROW(kvx::planProgramme({write("a.wav", 44100, 1, 10), folder / "missing.wav"}), kvx::Failure);
}

} // namespace
