// `kvx play --buffered`: the captured sound equals the file if both have the device rate, and the output of
// the reference player at other rates.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/command/pty_child.h"
#include "tests/endtoend/expected_samples.h"
#include "tests/endtoend/reference_output.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace endtoend;
using support::Sound;

// kvx queues blocks of four seconds, and the simulated device has slices of 512 frames.
constexpr int blockSeconds = 4;
constexpr std::size_t sliceFrames = 512;

struct PlayBuffered : KvxTest {
    Sound play(const Arguments& files, int deviceRate, const Arguments& more = {"--fast"})
    {
        const Arguments options = {"play",      "--buffered",          "--device",
                                   "simulated", "--device-rate",       std::to_string(deviceRate),
                                   "--capture", folder / "capture.wav"};
        const auto result = runKvx(joined(joined(options, more), files));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return support::readSound(folder / "capture.wav");
    }

    std::string write(const Sound& sound, const std::string& name = "sound.wav")
    {
        support::writeSound(sound, folder / name);
        return folder / name;
    }
};

/// Return the output of a stereo device that plays the sound. A mono sound plays on both channels.
std::vector<float> onTwoChannels(const Sound& sound)
{
    if (sound.channels == 2) return sound.samples;
    std::vector<float> both;
    for (float sample : sound.samples) both.insert(both.end(), 2, sample);
    return both;
}

TEST_F(PlayBuffered, AtTheDeviceRateEqualsTheFile)
{
    const struct {
        int channels;
        std::size_t frames;
        const char* why;
    } facts[] = {
        {1, 1, "one frame"},
        {2, 1, "one frame"},
        {1, 512, "one slice"},
        {1, 44100 * 4, "one block"},
        {2, 44100 * 4 + 1, "one block and a frame"},
        {1, 44100 * 30 + 17, "several blocks, queued during playback"},
        {2, 44100 * 30 + 17, "several blocks, queued during playback"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Sound sound = support::makeNoise(44100, fact.channels, fact.frames);
        expectAfterSilence(play({write(sound)}, 44100), onTwoChannels(sound));
    }
}

TEST_F(PlayBuffered, InRealTimeEqualsTheFile)
{
    for (int channels : {1, 2}) {
        const Sound sound = support::makeNoise(44100, channels, 44100 * 5);
        expectAfterSilence(play({write(sound)}, 44100, {}), onTwoChannels(sound));
    }
}

TEST_F(PlayBuffered, AtOtherRatesEqualsTheReferencePlayer)
{
    const struct {
        int fileRate, deviceRate;
    } facts[] = {{22050, 44100}, {44100, 48000}, {48000, 44100}, {8000, 44100}};
    for (const auto& fact : facts)
        for (int channels : {1, 2}) {
            SCOPED_TRACE(std::to_string(fact.fileRate) + " to " + std::to_string(fact.deviceRate) + ", " +
                         std::to_string(channels));
            const Sound sound =
                support::makeNoise(fact.fileRate, channels, std::size_t(fact.fileRate) * 9 + 5);
            ReferenceOutput reference(channels, float(fact.fileRate), float(fact.deviceRate));
            const std::size_t block = std::size_t(fact.fileRate * blockSeconds * channels);
            for (std::size_t at = 0; at < sound.samples.size(); at += block)
                reference.add(
                    {sound.samples.begin() + std::ptrdiff_t(at),
                     sound.samples.begin() + std::ptrdiff_t(std::min(at + block, sound.samples.size()))});
            const Sound captured = play({write(sound)}, fact.deviceRate);
            EXPECT_EQ(captured.sampleRate, fact.deviceRate);

            std::vector<float> expected = reference.playToEnd(sliceFrames, 2);
            while (!expected.empty() && expected.back() == 0.0f) expected.pop_back();
            if (expected.size() % 2) expected.push_back(0.0f);
            expectAfterSilence(captured, expected);
        }
}

TEST_F(PlayBuffered, OfEveryFormatEqualsTheDecodedSamples)
{
    const struct {
        const char* name;
        int format;
    } facts[] = {
        {"a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16}, {"a.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24},
        {"a.caf", SF_FORMAT_CAF | SF_FORMAT_FLOAT},  {"a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
        {"a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS}, {"a.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III},
        {"a.au", SF_FORMAT_AU | SF_FORMAT_ULAW},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        support::writeSound(support::makeSweep(44100, 2, 44100), folder / fact.name, fact.format);
        const Sound decoded = support::readSound(folder / fact.name);
        const std::size_t silence = support::leadingSilence(decoded) * 2;
        Sound expected = decoded;
        expected.samples.erase(expected.samples.begin(), expected.samples.begin() + std::ptrdiff_t(silence));
        expectAfterSilence(play({folder / fact.name}, 44100), expected.samples);
    }
}

TEST_F(PlayBuffered, OfMoreChannelsPlaysTheFirstTwo)
{
    const Sound six = support::makeNoise(44100, 6, 44100);
    std::vector<float> firstTwo;
    for (std::size_t frame = 0; frame < six.frames(); ++frame)
        firstTwo.insert(firstTwo.end(), {six.samples[frame * 6], six.samples[frame * 6 + 1]});
    expectAfterSilence(play({write(six)}, 44100), firstTwo);
}

TEST_F(PlayBuffered, OfFilesOfOneFormatHasNoGaps)
{
    const Sound one = support::makeNoise(44100, 2, 30001, 1), two = support::makeNoise(44100, 2, 200003, 2),
                three = support::makeNoise(44100, 2, 7, 3);
    std::vector<float> all = one.samples;
    all.insert(all.end(), two.samples.begin(), two.samples.end());
    all.insert(all.end(), three.samples.begin(), three.samples.end());
    expectAfterSilence(play({write(one, "1.wav"), write(two, "2.wav"), write(three, "3.wav")}, 44100), all);
}

TEST_F(PlayBuffered, OfFilesOfSeveralFormatsPlaysThemInOrder)
{
    const Sound mono = support::makeNoise(44100, 1, 3000, 1), stereo = support::makeNoise(44100, 2, 2000, 2);
    const Sound captured = play({write(mono, "1.wav"), write(stereo, "2.wav")}, 44100);
    const auto first = onTwoChannels(mono);
    const auto begin = captured.samples.begin();
    ASSERT_GE(captured.samples.size(), first.size() + stereo.samples.size());
    EXPECT_TRUE(std::equal(first.begin(), first.end(), begin));
    EXPECT_NE(std::search(begin + std::ptrdiff_t(first.size()), captured.samples.end(),
                          stereo.samples.begin(), stereo.samples.end()),
              captured.samples.end());
}

TEST_F(PlayBuffered, AppliesTheGain)
{
    const Sound sound = support::makeNoise(44100, 2, 5000);
    const Sound captured = play({write(sound)}, 44100, {"--fast", "--gain", "-6"});
    const float factor = float(std::pow(10.0, -6 / 20.0));
    std::vector<float> expected;
    for (float sample : sound.samples) expected.push_back(sample * factor);
    expectAfterSilence(captured, expected);
    expectAfterSilence(play({write(sound)}, 44100, {"--fast", "--gain", "0"}), sound.samples);
}

TEST_F(PlayBuffered, PauseKeyLosesNoFrames)
{
    const Sound sound = support::makeNoise(44100, 2, 44100 * 3);
    PtyChild child(kvxCommand({"play", "--buffered", "--device", "simulated", "--device-rate", "44100",
                               "--capture", folder / "capture.wav", write(sound)}));
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(child.waitFor(" dB")) << child.shown();
        child.type(" ");
        EXPECT_TRUE(child.waitFor("paused")) << child.shown();
        child.type(" ");
    }
    EXPECT_TRUE(child.waitFor("Done.")) << child.shown();
    EXPECT_EQ(child.wait(), 0) << child.shown();

    // No sample of the file is zero, so every zero in the capture belongs to a pause.
    const Sound captured = support::readSound(folder / "capture.wav");
    std::vector<float> played;
    for (const float sample : captured.samples)
        if (sample != 0) played.push_back(sample);
    EXPECT_EQ(played == sound.samples, true) << played.size() << " samples of " << sound.samples.size();
}

} // namespace
