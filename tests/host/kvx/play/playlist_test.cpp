#include "host/kvx/play/playlist.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>

namespace {

struct Playlist : testing::Test {
    support::TemporaryFolder folder;

    std::string write(const std::string& name, int rate, int channels, std::size_t frames, unsigned seed = 1)
    {
        support::writeSound(support::makeNoise(rate, channels, frames, seed), folder / name);
        return folder / name;
    }
};

TEST_F(Playlist, GroupsConsecutiveFilesOfOneFormat)
{
    const kvx::Playlist groups = kvx::planPlaylist(
        {write("a.wav", 44100, 2, 10), write("b.wav", 44100, 6, 20), write("c.wav", 44100, 1, 30),
         write("d.wav", 48000, 1, 40), write("e.wav", 44100, 2, 50)});
    ASSERT_EQ(groups.size(), 4u);
    EXPECT_EQ(groups[0].files.size(), 2u) << "two of six channels play, as in the stereo file";
    EXPECT_EQ(groups[0].frames(), 30);
    EXPECT_EQ(groups[0].channels(), 2);
    EXPECT_EQ(groups[1].channels(), 1);
    EXPECT_EQ(groups[2].sampleRate(), 48000);
    EXPECT_EQ(groups[3].frames(), 50);
}

TEST_F(Playlist, FindsTheFileAtAFrame)
{
    const kvx::Playlist groups =
        kvx::planPlaylist({write("a.wav", 44100, 1, 10), write("b.wav", 44100, 1, 20)});
    ASSERT_EQ(groups.size(), 1u);
    const struct {
        std::int64_t frame;
        std::size_t file;
        std::int64_t first;
    } facts[] = {{0, 0, 0}, {9, 0, 0}, {10, 1, 10}, {29, 1, 10}, {30, 1, 10}, {1000, 1, 10}};
    for (const auto& fact : facts) {
        const kvx::PlaylistFile& file = groups[0].fileAt(fact.frame);
        EXPECT_EQ(&file, &groups[0].files[fact.file]) << fact.frame;
        EXPECT_EQ(groups[0].firstFrameOf(file), fact.first) << fact.frame;
    }
}

TEST_F(Playlist, ReadsAGroupAsOneSound)
{
    const kvx::Playlist groups = kvx::planPlaylist(
        {write("a.wav", 44100, 2, 100, 1), write("b.wav", 44100, 2, 1, 2), write("c.wav", 44100, 2, 57, 3)});
    std::vector<float> expected;
    for (const char* name : {"a.wav", "b.wav", "c.wav"}) {
        const std::vector<float> file = support::readSound(folder / name).samples;
        expected.insert(expected.end(), file.begin(), file.end());
    }
    for (std::size_t blockFrames : {1u, 7u, 100u, 158u, 159u, 1000u}) {
        kvx::GroupReader reader(groups[0]);
        std::vector<float> all, samples(blockFrames * 2);
        for (std::size_t got = blockFrames; got == blockFrames;) {
            got = reader.read(samples.data(), blockFrames);
            all.insert(all.end(), samples.begin(), samples.begin() + std::ptrdiff_t(got * 2));
        }
        EXPECT_EQ(all, expected) << blockFrames;
        EXPECT_EQ(reader.read(samples.data(), blockFrames), 0u) << "after the end";
    }
}

TEST_F(Playlist, GroupsFromAnyFileOn)
{
    const std::vector<kvx::PlaylistFile> files = kvx::filesOf(kvx::planPlaylist(
        {write("a.wav", 44100, 2, 10), write("b.wav", 44100, 2, 20), write("c.wav", 44100, 1, 30)}));
    const std::size_t sizes[] = {2, 1, 1};
    for (std::size_t first = 0; first < 3; ++first) {
        const kvx::FormatGroup group = kvx::groupFrom(files, first);
        EXPECT_EQ(group.files.size(), sizes[first]);
        EXPECT_EQ(group.files[0].path, files[first].path);
    }
}

TEST_F(Playlist, ReadsAGroupFromAnyFrameOn)
{
    const kvx::Playlist groups =
        kvx::planPlaylist({write("a.wav", 44100, 1, 100, 1), write("b.wav", 44100, 1, 57, 2)});
    std::vector<float> sound = support::readSound(folder / "a.wav").samples;
    const std::vector<float> second = support::readSound(folder / "b.wav").samples;
    sound.insert(sound.end(), second.begin(), second.end());
    kvx::GroupReader reader(groups[0]);
    for (const int frame : {50, 0, 99, 100, 156, 157, 7}) {
        reader.seek(frame);
        std::vector<float> samples(200);
        const std::size_t got = reader.read(samples.data(), samples.size());
        samples.resize(got);
        EXPECT_EQ(samples, std::vector<float>(sound.begin() + frame, sound.end())) << frame;
    }
    EXPECT_TRUE(reader.damagedFiles().empty());
}

TEST_F(Playlist, LeavesOutFilesThatCannotBeRead)
{
    kvx::Progress progress(kvx::Verbosity::quiet, stdout);
    kvx::SpooledInputs inputs([] { return false; });
    testing::internal::CaptureStderr();
    const kvx::Playlist groups =
        kvx::planPlaylist({folder / "missing.wav", write("a.wav", 44100, 1, 10), folder / "missing.m3u"},
                          false, inputs, progress);
    EXPECT_EQ(kvx::pathsOf(groups), std::vector<std::string>({folder / "a.wav"}));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "kvx: " + (folder / "missing.wav") + " does not exist; check the name and the folder\n" +
                  "kvx: " + (folder / "missing.m3u") + " does not exist; check the name and the folder\n");
    EXPECT_EQ(progress.exitCode(), 1);
}

TEST_F(Playlist, OpensNoFileAfterASignal)
{
    const kvx::InterruptGuard guard;
    std::raise(SIGINT);
    kvx::Progress progress(kvx::Verbosity::quiet, stdout);
    kvx::SpooledInputs inputs(kvx::isInterrupted);
    const std::string good = write("a.wav", 44100, 1, 10);
    EXPECT_TRUE(kvx::planPlaylist({folder / "missing.wav", good}, false, inputs, progress).empty());
    EXPECT_EQ(progress.exitCode(), 130);
}

std::string announced(int fileChannels, int channels)
{
    kvx::PlaylistFile file = {"dir/a.wav", {}};
    file.format.sampleRate = 44100;
    file.format.fileChannels = fileChannels;
    file.format.frames = 44100;
    std::FILE* const out = std::tmpfile();
    kvx::Progress progress(kvx::Verbosity::plain, out);
    kvx::announce(file, channels, progress);
    std::rewind(out);
    std::string text;
    for (int c; (c = std::fgetc(out)) != EOF;) text += char(c);
    std::fclose(out);
    return text.substr(text.find('\n') + 1);
}

TEST(Announce, NamesTheDroppedChannelsAndAMapThatPlaysThem)
{
    const struct {
        int fileChannels, channels;
        const char* line;
    } facts[] = {
        {2, 2, ""},
        {1, 2, ""},
        {2, 1,
         "  It plays channel 0 of its 2, and drops channel 1. To hear channel 1: `kvx play --channel-map 1 "
         "dir/a.wav`\n"},
        {3, 2,
         "  It plays channels 0 and 1 of its 3, and drops channel 2. To hear channel 2: `kvx play "
         "--channel-map 2,2 dir/a.wav`\n"},
        {4, 2,
         "  It plays channels 0 and 1 of its 4, and drops channels 2 and 3. To hear channels 2 and 3: `kvx "
         "play "
         "--channel-map 2,3 dir/a.wav`\n"},
        {6, 2,
         "  It plays channels 0 and 1 of its 6, and drops channels 2 to 5. To hear channels 2 and 3: `kvx "
         "play "
         "--channel-map 2,3 dir/a.wav`, and so on\n"},
        {8, 6,
         "  It plays channels 0 to 5 of its 8, and drops channels 6 and 7. To hear channels 6 and 7: `kvx "
         "play "
         "--channel-map 6,7,7,7,7,7 dir/a.wav`\n"},
    };
    for (const auto& fact : facts) EXPECT_EQ(announced(fact.fileChannels, fact.channels), fact.line);
}

TEST_F(Playlist, IsRefusedIfOneFileIsMissing)
{
    EXPECT_THROW(kvx::planPlaylist({write("a.wav", 44100, 1, 10), folder / "missing.wav"}), kvx::Failure);
}

} // namespace
