// `kvx soundstream`: captured sound, byte order, messages, keys and signals.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/command/pty_child.h"
#include "tests/endtoend/expected_samples.h"

#include <sndfile.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <thread>

namespace {

using namespace endtoend;
using support::Sound;

/// Return 16-bit noise over the whole range, without zero samples.
Sound makeNoise16(int channels, std::size_t frames)
{
    Sound sound = support::makeNoise(44100, channels, frames);
    for (float& sample : sound.samples) sample = float(int(std::floor(sample * 32767.5f)) | 1) / 32768.0f;
    sound.samples.back() = -1;
    return sound;
}

/// Write a PCM16 file from integers, because a conversion from float would scale the samples.
void writeSound16(const Sound& sound, const std::string& path)
{
    std::vector<short> samples;
    for (const float sample : sound.samples) samples.push_back(short(std::lrint(sample * 32768.0f)));
    SF_INFO info = {};
    info.samplerate = sound.sampleRate;
    info.channels = sound.channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr);
    const auto count = sf_count_t(samples.size());
    EXPECT_EQ(sf_write_short(file, samples.data(), count), count);
    sf_close(file);
}

/// Return a 16-bit sample with its two bytes swapped.
float swapped(float sample)
{
    const auto bits = static_cast<std::uint16_t>(std::int16_t(sample * 32768.0f));
    return float(std::int16_t(std::uint16_t(bits << 8 | bits >> 8))) / 32768.0f;
}

struct SoundStream : KvxTest {
    std::string write(const Sound& sound)
    {
        writeSound16(sound, folder / "sound.wav");
        return folder / "sound.wav";
    }

    Sound play(const std::string& file, const Arguments& more = {"--fast"})
    {
        const auto result = runKvx(joined(
            {"soundstream", "--device", "simulated", file, "--capture", folder / "captured.wav"}, more));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return support::readSound(folder / "captured.wav");
    }
};

TEST_F(SoundStream, PlaysAFileExactly)
{
    // These lengths lie around the 1024 frames that the mixer renders at a time, and around the client's
    // buffer of 1 s.
    for (const std::size_t frames : {1, 2, 511, 512, 1023, 1024, 1025, 44099, 44100, 44101, 88200, 100000}) {
        SCOPED_TRACE(frames);
        const Sound sound = makeNoise16(2, frames);
        const Sound captured = play(write(sound));
        EXPECT_EQ(captured.sampleRate, 44100);
        expectAfterSilence(captured, sound.samples);
    }
}

TEST_F(SoundStream, InRealTimePlaysAFileExactly)
{
    const Sound sound = makeNoise16(2, 110250); // longer than two buffers of the client
    expectAfterSilence(play(write(sound), {}), sound.samples);
}

TEST_F(SoundStream, PlaysCorrectlyLabelledBuffersByteSwapped)
{
    for (const std::size_t frames : {1, 1025, 100000}) {
        const Sound sound = makeNoise16(2, frames);
        const std::string file = write(sound);
        std::vector<float> noise = sound.samples;
        std::transform(noise.begin(), noise.end(), noise.begin(), swapped);
        for (const char* buffers : {"sowt", "twos"}) {
            SCOPED_TRACE(testing::Message() << frames << " " << buffers);
            expectAfterSilence(play(file, {"--fast", "--buffers", buffers}), noise);
        }
        expectAfterSilence(play(file, {"--fast", "--buffers", "swapped"}), sound.samples);
    }
}

TEST_F(SoundStream, ConvertsSampleSizesAndChannels)
{
    const struct {
        int format, channels;
    } facts[] = {
        {SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 2}, {SF_FORMAT_WAV | SF_FORMAT_PCM_24, 2},
        {SF_FORMAT_WAV | SF_FORMAT_PCM_32, 2}, {SF_FORMAT_WAV | SF_FORMAT_FLOAT, 2},
        {SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1}, {SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 2},
        {SF_FORMAT_WAV | SF_FORMAT_FLOAT, 6},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << std::hex << fact.format << " " << fact.channels);
        Sound sound = support::makeNoise(44100, fact.channels, 50000);
        std::fill_n(sound.samples.begin(), fact.channels,
                    0.5f); // the first frame is not silent in any sample size
        support::writeSound(sound, folder / "sound.wav", fact.format);
        const Sound stored = support::readSound(folder / "sound.wav");
        std::vector<float> expected;
        for (std::size_t frame = 0; frame < stored.frames(); ++frame)
            for (int channel = 0; channel < 2; ++channel) {
                const double sample = stored.samples[frame * std::size_t(fact.channels) +
                                                     std::size_t(std::min(channel, fact.channels - 1))];
                expected.push_back(
                    float(std::clamp(std::nearbyint(sample * 32768.0), -32768.0, 32767.0) / 32768.0));
            }
        expectAfterSilence(play(folder / "sound.wav"), expected);
    }
}

TEST_F(SoundStream, AppliesAGain)
{
    Sound sound = makeNoise16(2, 5000);
    sound.samples[0] = 0.5f;
    std::vector<float> expected;
    const auto gain = float(std::pow(10.0, -20.0 / 20.0));
    for (const float sample : sound.samples)
        expected.push_back(float(std::nearbyint(double(sample * gain * 32768.0f)) / 32768.0));
    expectAfterSilence(play(write(sound), {"--fast", "--gain", "-20"}), expected);
}

// The output unit converts the sound to the device rate without loss of energy.
TEST_F(SoundStream, PlaysOnDevicesOfOtherRates)
{
    Sound sound{44100, 2, {}};
    for (int i = 0; i < 44100 * 2; ++i)
        sound.samples.insert(sound.samples.end(), 2,
                             float(0.5 * std::sin(2 * M_PI * 100 * (i + 0.5) / 44100)));
    const std::string file = write(sound);
    for (const int rate : {1000, 8000, 48000, 192000}) {
        SCOPED_TRACE(rate);
        const Sound captured = play(file, {"--fast", "--device-rate", std::to_string(rate)});
        EXPECT_EQ(captured.sampleRate, rate);
        double energy = 0;
        for (const float sample : captured.samples) energy += double(sample) * sample;
        // The expected energy is 2 channels × 2 seconds × 0.125, the mean square of a sine of amplitude 0.5.
        EXPECT_NEAR(energy / rate, 2 * 2 * 0.125, 0.005);
    }
}

TEST_F(SoundStream, RefusesOtherRatesWithAdvice)
{
    const Sound sound = support::makeSweep(48000, 2, 48000);
    write(sound);
    const auto refused = run({"soundstream", "--fast", "--capture", "captured.wav", "sound.wav"});
    EXPECT_EQ(refused.exitCode, 1);
    expectMessage(refused, "soundstream");
    EXPECT_NE(refused.err.find("`kvx render sound.wav OUT.wav --device-rate 44100`"), std::string::npos)
        << refused.err;
    EXPECT_EQ(folder.count(), 1u) << "no capture is left";
    EXPECT_EQ(run({"render", "sound.wav", "OUT.wav", "--device-rate", "44100"}).exitCode, 0);
    EXPECT_EQ(run({"soundstream", "--fast", "OUT.wav"}).exitCode, 0);
}

TEST_F(SoundStream, RefusesTheDevelopmentEnvironment)
{
    write(makeNoise16(2, 1000));
    const auto result = run({"soundstream", "--development", "--capture", "captured.wav", "sound.wav"});
    EXPECT_EQ(result.exitCode, 1);
    expectMessage(result, "soundstream");
    EXPECT_NE(result.err.find("built programs only; leave out --development"), std::string::npos)
        << result.err;
    EXPECT_EQ(folder.count(), 1u);
}

TEST_F(SoundStream, PrintsPlainLines)
{
    write(support::makeNoise(44100, 6, 44100));
    const auto result = run({"soundstream", "--fast", "sound.wav"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_NE(
        result.out.find("Playing sound.wav: 44100 Hz, 6 channels, 0:01.0\n"
                        "  It plays channels 0 and 1 of its 6, and drops channels 2 to 5. To hear channels 2 "
                        "and 3: `kvx play --channel-map 2,3 sound.wav`, and so on\n"
                        "Done.\n"),
        std::string::npos)
        << result.out;
    EXPECT_EQ(result.out.find('\r'), std::string::npos);
    const auto quiet = run({"soundstream", "--fast", "--quiet", "sound.wav"});
    EXPECT_EQ(quiet.exitCode, 0);
    EXPECT_EQ(quiet.out + quiet.err, "");
    const auto noise = run({"soundstream", "--fast", "--buffers", "twos", "sound.wav"});
    EXPECT_NE(noise.out.find("byte-swapped"), std::string::npos) << noise.out;
}

TEST_F(SoundStream, HelpExplainsTheByteOrder)
{
    const auto result = runKvx({"soundstream", "--help"});
    EXPECT_EQ(result.exitCode, 0);
    for (const char* part : {"requests little-endian samples", "reads the result as big-endian",
                             "big-endian samples and labels them \"sowt\"", "noise"}) {
        std::string text = result.out;
        std::replace(text.begin(), text.end(), '\n', ' ');
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
}

TEST_F(SoundStream, RefusesWrongArguments)
{
    write(makeNoise16(2, 100));
    const struct {
        Arguments arguments;
        int exitCode;
        const char* text;
    } facts[] = {
        {{}, 2, "FILE"},
        {{"none.wav"}, 1, "none.wav"},
        {{"sound.wav", "--buffers", "big"}, 2, "big is not one of swapped, sowt, twos"},
        {{"sound.wav", "--capture", "sound.wav"}, 1, "--capture"},
        {{"sound.wav", "--capture", "none/captured.wav"}, 1, "none/captured.wav"},
        {{"sound.wav", "--device", "no such device"}, 1, "--device"},
        {{"sound.wav", "--gain", "41"}, 2, "--gain"},
        {{"sound.wav", "--library", "none.so"}, 1, "none.so"},
    };
    for (const auto& fact : facts) {
        const auto result = run(joined({"soundstream", "--fast"}, fact.arguments));
        EXPECT_EQ(result.exitCode, fact.exitCode) << fact.text;
        expectMessage(result, "soundstream");
        EXPECT_NE(result.err.find(fact.text), std::string::npos) << fact.text << ": " << result.err;
        EXPECT_EQ(folder.count(), 1u) << fact.text;
    }
}

TEST_F(SoundStream, SignalStopsPlaybackAndFinishesTheCapture)
{
    const Sound sound = makeNoise16(2, 44100 * 60);
    write(sound);
    expectSignalsFinishTheCapture({"soundstream", "--capture", "out.wav", "sound.wav"}, sound);
}

TEST_F(SoundStream, PauseKeyLosesNoFrames)
{
    const Sound sound = makeNoise16(2, 44100 * 3);
    const std::string file = write(sound);
    PtyChild child(
        kvxCommand({"soundstream", "--device", "simulated", "--capture", folder / "captured.wav", file}));
    EXPECT_TRUE(child.waitFor("Keys: space pause, q quit"));
    EXPECT_TRUE(child.waitFor(" dB"));
    child.type(" ");
    EXPECT_TRUE(child.waitFor("paused")) << child.shown();
    child.type(" ");
    EXPECT_TRUE(child.waitFor(" dB"));
    EXPECT_TRUE(child.waitFor("Done."));
    EXPECT_EQ(child.wait(), 0) << child.shown();

    // No sample of the file is zero, so every zero in the capture belongs to a pause.
    const Sound captured = support::readSound(folder / "captured.wav");
    std::vector<float> played;
    for (const float sample : captured.samples)
        if (sample != 0) played.push_back(sample);
    EXPECT_EQ(played == sound.samples, true) << played.size() << " samples of " << sound.samples.size();
}

TEST_F(SoundStream, QuitKeyEndsPlayback)
{
    const std::string file = write(makeNoise16(2, 44100 * 60));
    PtyChild child(kvxCommand({"soundstream", "--device", "simulated", file}));
    EXPECT_TRUE(child.waitFor(" dB"));
    child.type("q");
    EXPECT_EQ(child.wait(), 0) << child.shown();
    EXPECT_TRUE(child.isLineByLine());
}

} // namespace
