// Tests of sources whose sample rate differs from the mixer's.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace test;

constexpr double pi = 3.14159265358979323846;

Bytes tone(const Form& form, std::size_t frames, double hertz, double amplitude)
{
    Samples samples;
    for (std::size_t i = 0; i < frames; ++i)
        samples.insert(samples.end(), static_cast<std::size_t>(form.channels),
                       amplitude * std::sin(2 * pi * hertz * static_cast<double>(i) / form.hertz));
    return encode(form, samples);
}

/// The root mean square of the difference between the left channel and a sine tone of phase 0 at the first
/// frame, measured over the middle of the sound.
double errorOfTone(const Samples& stereo, double hertz, double rate, double amplitude)
{
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t i = stereo.size() / 8; i < stereo.size() * 3 / 8; ++i, ++count) {
        const double difference =
            stereo[2 * i] - amplitude * std::sin(2 * pi * hertz * static_cast<double>(i) / rate);
        sum += difference * difference;
    }
    return std::sqrt(sum / static_cast<double>(count));
}

std::size_t framesOf(const Bytes& stereo16) { return stereo16.size() / 4; }

/// The largest difference between the samples of two sounds, in units of the smallest 16-bit step.
double distance(const Bytes& a, const Bytes& b)
{
    const Samples one = decode({}, a), other = decode({}, b);
    if (one.size() != other.size()) return 1e9;
    double most = 0;
    for (std::size_t i = 0; i < one.size(); ++i) most = std::max(most, std::fabs(one[i] - other[i]) * 32768);
    return most;
}

const struct {
    double from, to;
} rates[] = {{22050, 44100}, {48000, 44100}, {8000, 44100}, {44100, 22050}, {11025, 44100}, {44100, 48000}};

TEST(MixerRates, ConversionKeepsLengthPitchAndLevel)
{
    for (const auto& row : rates) {
        for (std::size_t frames : {1u, 2u, 100u, 777u, 20000u}) {
            SCOPED_TRACE(std::to_string(row.from) + " to " + std::to_string(row.to) + ", " +
                         std::to_string(frames));
            Mixer mixer({'sowt', 16, 2, row.to}, 500);
            const Form from = {'sowt', 16, 2, row.from};
            const Bytes output = mixer.playAll(mixer.add(), from, tone(from, frames, 1000, 0.5));
            const double expected = static_cast<double>(frames) * row.to / row.from;
            EXPECT_NEAR(static_cast<double>(framesOf(output)), expected, 1);
            if (frames < 20000) continue;
            EXPECT_LT(errorOfTone(decode({}, output), 1000, row.to, 0.5), 3.0 / 32768)
                << "position, pitch and level";
        }
    }
}

TEST(MixerRates, AreMultipliedByBufferAndSource)
{
    const struct {
        UnsignedFixed ofBuffer, ofSource;
        double rate;
    } facts[] = {{0x10000, 0x10000, 22050}, {0x20000, 0x10000, 44100}, {0x10000, 0x20000, 44100},
                 {0x08000, 0x10000, 11025}, {0x10000, 0x18000, 33075}, {0x18000, 0x18000, 49612.5}};
    for (const auto& fact : facts) {
        Mixer mixer;
        const SoundSource source = mixer.add();
        ASSERT_EQ(SoundComponentSetInfo(mixer.instance, source, siRateMultiplier,
                                        reinterpret_cast<void*>(std::uintptr_t{fact.ofSource})),
                  noErr);
        const Form from = {'sowt', 16, 2, 22050};
        Buffer buffer(from, tone(from, 10000, 500, 0.5));
        buffer.block.rateMultiplier = fact.ofBuffer;
        ASSERT_EQ(mixer.play(source, buffer), noErr);
        const Bytes output = mixer.fetchAll();
        EXPECT_NEAR(static_cast<double>(framesOf(output)), 10000 * 44100 / fact.rate, 1);
        EXPECT_LT(errorOfTone(decode({}, output), 500 * fact.rate / 22050, 44100, 0.5), 3.0 / 32768);
    }
}

TEST(MixerRates, BeyondARatioOf256AreRefused)
{
    Mixer mixer({'sowt', 16, 2, 65535});
    const SoundSource source = mixer.add();
    const struct {
        double rate;
        UnsignedFixed multiplier;
        OSErr error;
    } facts[] = {{256, 0x10000, noErr},
                 {255, 0x10000, siInvalidSampleRate},
                 {65535, 0x1000000, noErr},
                 {65535, 0x1010000, siInvalidSampleRate},
                 {65535, 1, siInvalidSampleRate}};
    for (const auto& fact : facts) {
        Buffer buffer({'sowt', 16, 2, fact.rate}, Bytes(40));
        buffer.block.rateMultiplier = fact.multiplier;
        EXPECT_EQ(mixer.play(source, buffer), fact.error) << fact.rate << " " << fact.multiplier;
        mixer.stop(source);
    }
}

// A sound in many buffers gives the same output as the sound in a single buffer.
TEST(MixerRates, ConversionContinuesFromBufferToBuffer)
{
    for (const auto& row : rates) {
        for (std::size_t length : {1u, 17u, 256u, 1000u}) {
            SCOPED_TRACE(std::to_string(row.from) + " to " + std::to_string(row.to) + ", " +
                         std::to_string(length));
            const Form from = {'sowt', 16, 2, row.from};
            const std::size_t frames = std::min<std::size_t>(length * 60, 8000);
            const Bytes bytes = tone(from, frames, 440, 0.9);
            Mixer whole({'sowt', 16, 2, row.to}, 1024);
            const Bytes expected = whole.playAll(whole.add(), from, bytes);

            for (long block : {1L, 100L, 1024L}) {
                if (block == 1 && length > 17) continue;
                Mixer mixer({'sowt', 16, 2, row.to}, block);
                const SoundSource source = mixer.add();
                std::vector<std::unique_ptr<Buffer>> buffers;
                for (std::size_t at = 0; at < bytes.size(); at += 4 * length) {
                    const auto begin = bytes.begin() + static_cast<long>(at);
                    const auto end =
                        bytes.begin() + static_cast<long>(std::min(at + 4 * length, bytes.size()));
                    buffers.push_back(std::make_unique<Buffer>(from, Bytes(begin, end)));
                    ASSERT_EQ(mixer.play(source, *buffers.back()), noErr);
                }
                EXPECT_LE(distance(mixer.fetchAll(), expected), 1) << block;
                for (const auto& buffer : buffers) EXPECT_EQ(buffer->completions, 1);
            }
        }
    }
}

// The completion routine of each buffer queues the next buffer, and the output has no gap.
TEST(MixerRates, ConversionContinuesThroughCompletions)
{
    const Form from = {'sowt', 16, 2, 22050};
    const Bytes bytes = tone(from, 5000, 440, 0.9);
    Mixer whole;
    const Bytes expected = whole.playAll(whole.add(), from, bytes);
    Mixer mixer({}, 128);
    const SoundSource source = mixer.add();
    std::vector<std::unique_ptr<Buffer>> buffers;
    for (std::size_t at = 0; at < bytes.size(); at += 4 * 100)
        buffers.push_back(std::make_unique<Buffer>(
            from, Bytes(bytes.begin() + static_cast<long>(at), bytes.begin() + static_cast<long>(at + 400))));
    for (std::size_t i = 0; i + 1 < buffers.size(); ++i)
        buffers[i]->onCompletion = [&, i] { EXPECT_EQ(mixer.play(source, *buffers[i + 1]), noErr); };
    ASSERT_EQ(mixer.play(source, *buffers[0]), noErr);
    EXPECT_LE(distance(mixer.fetchAll(), expected), 1);
}

// Each sound is output with its tail before the next sound begins.
TEST(MixerRates, BuffersOfDifferentRatesFollowEachOther)
{
    const double order[] = {22050, 44100, 22050, 8000, 48000, 44100, 44100, 22050};
    Mixer mixer({}, 77);
    const SoundSource source = mixer.add();
    std::vector<std::unique_ptr<Buffer>> buffers;
    Bytes expected;
    for (double rate : order) {
        const Form from = {'sowt', 16, 2, rate};
        const Bytes bytes = tone(from, 900, 1000, 0.8);
        Mixer alone;
        const Bytes sound = alone.playAll(alone.add(), from, bytes);
        expected.insert(expected.end(), sound.begin(), sound.end());
        buffers.push_back(std::make_unique<Buffer>(from, bytes));
        ASSERT_EQ(mixer.play(source, *buffers.back()), noErr);
    }
    EXPECT_LE(distance(mixer.fetchAll(), expected), 1);
}

// A buffer that is queued during the tail of a sound continues that sound. After silence has entered the
// filter, the buffer begins only when the whole tail has been output.
TEST(MixerRates, ABufferQueuedDuringATailContinuesItOrFollowsIt)
{
    const Form from = {'sowt', 16, 2, 22050};
    const Bytes bytes = tone(from, 1500, 1000, 0.8);
    const auto joined = [](Bytes one, const Bytes& other) {
        one.insert(one.end(), other.begin(), other.end());
        return one;
    };
    Mixer alone;
    const Bytes sound = alone.playAll(alone.add(), from, bytes);
    const Bytes apart = joined(sound, sound);
    const Bytes through = alone.playAll(alone.add(), from, joined(bytes, bytes));
    ASSERT_GT(distance(apart, through), 100);
    int countApart = 0, countThrough = 0;
    for (std::size_t before = 5; before <= 3000; before += 45) {
        Mixer mixer({}, 5);
        const SoundSource source = mixer.add();
        Buffer first(from, bytes), second(from, bytes);
        ASSERT_EQ(mixer.play(source, first), noErr);
        Bytes output;
        while (framesOf(output) < before) output = joined(output, mixer.fetch());
        const bool isCompleted = first.completions > 0;
        ASSERT_EQ(mixer.play(source, second), noErr);
        output = joined(output, mixer.fetchAll());
        const bool isApart = distance(output, apart) <= 1;
        EXPECT_TRUE(isApart || distance(output, through) <= 1) << before;
        EXPECT_TRUE(isCompleted || !isApart) << "a sound that is not completed is continued";
        EXPECT_TRUE(isApart || countApart == 0) << "an ended sound is not continued";
        ++(isApart ? countApart : countThrough);
    }
    EXPECT_GT(countApart, 10);
    EXPECT_GT(countThrough, 40);
}

// Queuing a buffer frees the unused rate conversions, but not the conversion that still has a tail to output.
TEST(MixerRates, MayChangeWhileTheSourceIsPaused)
{
    Mixer mixer({}, 10);
    const SoundSource source = mixer.add();
    const Form slow = {'sowt', 16, 2, 8000};
    Buffer first(slow, tone(slow, 40, 1000, 0.8));
    ASSERT_EQ(mixer.play(source, first), noErr);
    std::size_t output = 0;
    while (first.completions == 0) output += framesOf(mixer.fetch());
    ASSERT_EQ(mixer.pause(source), noErr); // the tail of the first buffer is not output yet
    std::vector<std::unique_ptr<Buffer>> buffers;
    double expected = 40 * 44100.0 / 8000;
    for (double rate : {22050.0, 11025.0, 16000.0, 32000.0}) {
        const Form form = {'sowt', 16, 2, rate};
        buffers.push_back(std::make_unique<Buffer>(form, tone(form, 100, 1000, 0.8)));
        ASSERT_EQ(mixer.play(source, *buffers.back(), kSourcePaused), noErr);
        expected += 100 * 44100.0 / rate;
    }
    EXPECT_TRUE(mixer.fetch().empty());
    ASSERT_EQ(mixer.start(source), noErr);
    output += framesOf(mixer.fetchAll());
    EXPECT_NEAR(static_cast<double>(output), expected, 3);
}

} // namespace
