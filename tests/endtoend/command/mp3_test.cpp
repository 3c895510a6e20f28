// MP3 files without a stated length: every command plays all frames.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/support/sound_samples.h"
#include <sndfile.h>

#include <algorithm>
#include <cstdint>
#include <fstream>

namespace {

using namespace endtoend;
using support::Sound;

constexpr std::size_t framesPerMpegFrame = 1152;

/// Return the size of the MPEG-1 layer 3 frame at offset `at`, in bytes. The sample rate must be 44100 Hz.
std::size_t frameBytes(const std::string& bytes, std::size_t at)
{
    constexpr int kilobits[] = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
    const auto third = std::uint8_t(bytes.at(at + 2));
    return std::size_t(144000 * kilobits[third >> 4] / 44100 + (third >> 1 & 1));
}

/// Return an MP3 stream with a variable bit rate, without the Xing frame that states the length.
std::string streamWithoutLength(const std::string& path, std::size_t& mpegFrames)
{
    Sound sound = support::makeNoise(44100, 2, 44100 * 4);
    std::fill(sound.samples.begin() + 44100, sound.samples.end() - 44100, 0.0f);
    support::writeSound(sound, path, SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
    std::string bytes = bytesOf(path);
    bytes.erase(0, bytes.find("\xff\xfb"));
    EXPECT_NE(bytes.substr(0, frameBytes(bytes, 0)).find("Xing"), bytes.npos);
    bytes.erase(0, frameBytes(bytes, 0));
    mpegFrames = 0;
    std::size_t at = 0, shortest = bytes.size(), longest = 0;
    for (; at + 4 < bytes.size() && bytes.compare(at, 2, "\xff\xfb") == 0; ++mpegFrames) {
        const std::size_t length = frameBytes(bytes, at);
        shortest = std::min(shortest, length);
        longest = std::max(longest, length);
        at += length;
    }
    EXPECT_EQ(at, bytes.size());
    EXPECT_GT(longest, 2 * shortest) << "the bit rate varies";
    return bytes;
}

struct Mp3 : KvxTest {
    void expectPlaysWhole(const std::string& bytes, std::size_t frames)
    {
        std::ofstream(folder / "a.mp3", std::ios::binary) << bytes;
        const auto rendered = run({"render", "a.mp3", "rendered.wav"});
        ASSERT_EQ(rendered.exitCode, 0) << rendered.err;
        EXPECT_EQ(rendered.err, "");
        const Sound whole = support::readSound(folder / "rendered.wav");
        ASSERT_EQ(whole.frames(), frames);
        const auto lastQuarter = whole.samples.begin() + 44100 * 2 * 15 / 4;
        EXPECT_GT(*std::max_element(lastQuarter, whole.samples.end()), 0.1f) << "the noise at the end";
        const Arguments commands[] = {
            {"play", "--fast", "a.mp3", "--capture", "out.wav"},
            {"play", "--fast", "--buffered", "a.mp3", "--capture", "out.wav"},
        };
        for (const auto& command : commands) {
            SCOPED_TRACE(testing::PrintToString(command));
            const auto result = run(command);
            ASSERT_EQ(result.exitCode, 0) << result.err;
            EXPECT_EQ(result.err, "");
            const Sound played = support::readSound(folder / "out.wav");
            ASSERT_GE(played.frames(), frames);
            EXPECT_TRUE(std::equal(whole.samples.begin(), whole.samples.end(), played.samples.begin()));
        }
        const auto classic = run({"soundstream", "--fast", "a.mp3"});
        EXPECT_EQ(classic.exitCode, 0) << classic.err;
    }
};

TEST_F(Mp3, WithoutAStatedLengthPlaysAllFrames)
{
    std::size_t mpegFrames = 0;
    const std::string bytes = streamWithoutLength(folder / "in.mp3", mpegFrames);
    expectPlaysWhole(bytes, mpegFrames * framesPerMpegFrame);
}

TEST_F(Mp3, AfterOtherBytesPlaysAllFrames)
{
    std::size_t mpegFrames = 0;
    const std::string bytes = streamWithoutLength(folder / "in.mp3", mpegFrames);
    expectPlaysWhole(std::string(3000, 'x') + bytes, mpegFrames * framesPerMpegFrame);
}

} // namespace
