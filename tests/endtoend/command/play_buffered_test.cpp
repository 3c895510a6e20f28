// A file through `kvx play --buffered`, captured, against the file: bit for bit at the device's own rate, and
// bit for bit what the reference computes at others.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/reference_output.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace endtoend;
using support::Sound;

// `kvx play --buffered` queues blocks of four seconds, and the simulated device has slices of 512 frames.
constexpr int blockSeconds = 4;
constexpr std::size_t sliceFrames = 512;

struct Capture : testing::Test {
    support::TemporaryFolder folder;

    Sound play(const std::vector<std::string>& files, int deviceRate,
               std::vector<std::string> more = {"--fast"})
    {
        std::vector<std::string> arguments = {"play",      "--buffered",          "--device",
                                              "simulated", "--device-rate",       std::to_string(deviceRate),
                                              "--capture", folder / "capture.wav"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        arguments.insert(arguments.end(), files.begin(), files.end());
        const auto result = runKvx(arguments);
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

/// The sound as a device of two channels plays it: mono on both.
std::vector<float> onTwoChannels(const Sound& sound)
{
    if (sound.channels == 2) return sound.samples;
    std::vector<float> both;
    for (float sample : sound.samples) both.insert(both.end(), 2, sample);
    return both;
}

/// What is captured: silence, then exactly `expected`, then silence.
void expectExactly(const Sound& captured, const std::vector<float>& expected)
{
    ASSERT_EQ(captured.channels, 2);
    const std::size_t first = support::leadingSilence(captured) * 2;
    ASSERT_LE(first + expected.size(), captured.samples.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (!(captured.samples[first + i] == expected[i])) {
            FAIL() << "sample " << i << " of " << expected.size() << " is " << captured.samples[first + i]
                   << ", not " << expected[i];
        }
    for (std::size_t i = first + expected.size(); i < captured.samples.size(); ++i)
        ASSERT_EQ(captured.samples[i], 0.0f) << "after the end";
}

TEST_F(Capture, AtTheDevicesRateEqualsTheFile)
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
        {1, 44100 * 30 + 17, "several blocks, queued while it plays"},
        {2, 44100 * 30 + 17, "several blocks, queued while it plays"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Sound sound = support::makeNoise(44100, fact.channels, fact.frames);
        expectExactly(play({write(sound)}, 44100), onTwoChannels(sound));
    }
}

TEST_F(Capture, InRealTimeEqualsTheFileAsWell)
{
    for (int channels : {1, 2}) {
        const Sound sound = support::makeNoise(44100, channels, 44100 * 5);
        expectExactly(play({write(sound)}, 44100, {}), onTwoChannels(sound));
    }
}

TEST_F(Capture, AtOtherRatesEqualsTheReference)
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

            std::vector<float> expected = reference.playToTheEnd(sliceFrames, 2);
            while (!expected.empty() && expected.back() == 0.0f) expected.pop_back();
            if (expected.size() % 2) expected.push_back(0.0f);
            expectExactly(captured, expected);
        }
}

TEST_F(Capture, OfEveryFormatEqualsWhatTheDecoderGives)
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
        Sound heard = decoded;
        heard.samples.erase(heard.samples.begin(), heard.samples.begin() + std::ptrdiff_t(silence));
        expectExactly(play({folder / fact.name}, 44100), heard.samples);
    }
}

TEST_F(Capture, OfMoreChannelsHasTheFirstTwo)
{
    const Sound six = support::makeNoise(44100, 6, 44100);
    std::vector<float> firstTwo;
    for (std::size_t frame = 0; frame < six.frames(); ++frame)
        firstTwo.insert(firstTwo.end(), {six.samples[frame * 6], six.samples[frame * 6 + 1]});
    expectExactly(play({write(six)}, 44100), firstTwo);
}

TEST_F(Capture, OfFilesOfOneFormatHasNoGapBetweenThem)
{
    const Sound one = support::makeNoise(44100, 2, 30001, 1), two = support::makeNoise(44100, 2, 200003, 2),
                three = support::makeNoise(44100, 2, 7, 3);
    std::vector<float> all = one.samples;
    all.insert(all.end(), two.samples.begin(), two.samples.end());
    all.insert(all.end(), three.samples.begin(), three.samples.end());
    expectExactly(play({write(one, "1.wav"), write(two, "2.wav"), write(three, "3.wav")}, 44100), all);
}

TEST_F(Capture, OfFilesOfSeveralFormatsHasOneAfterTheOther)
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

TEST_F(Capture, IsSofterByTheGain)
{
    const Sound sound = support::makeNoise(44100, 2, 5000);
    const Sound captured = play({write(sound)}, 44100, {"--fast", "--gain", "-6"});
    const float factor = float(std::pow(10.0, -6 / 20.0));
    std::vector<float> expected;
    for (float sample : sound.samples) expected.push_back(sample * factor);
    expectExactly(captured, expected);
    expectExactly(play({write(sound)}, 44100, {"--fast", "--gain", "0"}), sound.samples);
}

} // namespace
