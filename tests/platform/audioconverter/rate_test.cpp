// Rate conversion: exact length; time, pitch and level of a tone; output that does not depend on the call
// sizes.
#include "tests/platform/audioconverter/converter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

namespace {

using namespace test;

constexpr double pi = 3.14159265358979323846;

std::vector<float> tone(Float64 rate, double hertz, UInt32 frames, UInt32 channels = 1)
{
    std::vector<float> samples;
    for (UInt32 i = 0; i < frames; ++i)
        for (UInt32 c = 0; c < channels; ++c)
            samples.push_back(static_cast<float>(std::sin(2 * pi * hertz * i / rate + c)));
    return samples;
}

TEST(Rate, LengthIsExact)
{
    // clang-format off
    const struct { UInt32 from, to; } rates[] = {
        {44100, 48000}, {48000, 44100}, {44100, 22050}, {22050, 44100}, {8000, 192000}, {192000, 8000},
        {44100, 44101}, {11025, 96000}, {1000, 256000}, {256000, 1000}, {44100, 44100},
    };
    // clang-format on
    for (const auto& rate : rates)
        for (const UInt32 frames : {0u, 1u, 2u, 3u, 100u, 441u, 442u, 1000u, 4411u}) {
            const auto expected = (std::uint64_t{frames} * rate.to + rate.from - 1) / rate.from;
            for (const UInt32 atATime : {97u, 5000u}) {
                const Converter converter(interleaved(rate.from, 1), interleaved(rate.to, 1));
                Sound sound = soundOf(rate.from, 1, std::vector<float>(frames, 0.5f));
                sound.most = atATime;
                EXPECT_EQ(drained(converter, sound, 1, atATime).size(), expected)
                    << frames << " frames from " << rate.from << " to " << rate.to << " by " << atATime;
            }
        }
}

TEST(Rate, ToneKeepsTimePitchAndLevel)
{
    // clang-format off
    const struct { Float64 from, to; UInt32 complexity; double bound; } facts[] = {
        {44100,  48000,  'norm', 1e-4}, {48000, 44100, 'norm', 1e-4}, {44100, 96000, 'bats', 1e-4},
        {44100,  48000,  'line', 2e-3}, {96000, 44100, 'bats', 1e-4}, {8000, 192000, 'norm', 1e-4},
        {192000, 8000,   'norm', 1e-3}, {44100, 44100.5, 'norm', 1e-4},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const Converter converter(interleaved(fact.from, 2), interleaved(fact.to, 2));
        ASSERT_EQ(converter.set('srca', fact.complexity), noErr);
        Sound sound = soundOf(fact.from, 2, tone(fact.from, 1000, static_cast<UInt32>(fact.from / 5), 2));
        const std::vector<float> out = drained(converter, sound, 2, 512);
        const std::size_t frames = out.size() / 2, edge = frames / 8;
        double worst = 0;
        for (std::size_t i = edge; i < frames - edge; ++i)
            for (std::size_t c = 0; c < 2; ++c) {
                const double seconds = static_cast<double>(i) / fact.to;
                const double expected = std::sin(2 * pi * 1000 * seconds + static_cast<double>(c));
                worst = std::max(worst, std::abs(expected - out[i * 2 + c]));
            }
        EXPECT_LT(worst, fact.bound) << fact.from << " to " << fact.to;
        EXPECT_GT(worst, 0) << "converted, not copied";
    }
}

TEST(Rate, CallSizesDoNotChangeSamples)
{
    for (const Float64 to : {48000.0, 22050.0, 192000.0}) {
        const std::vector<float> samples = tone(44100, 700, 5000, 2);
        std::vector<float> whole;
        // clang-format off
        const struct { UInt32 given, taken; } sizes[] = {{5000, 40000}, {1, 512}, {7, 1}, {512, 511}, {5000, 64}};
        // clang-format on
        for (const auto& size : sizes) {
            const Converter converter(interleaved(44100, 2), interleaved(to, 2));
            Sound sound = soundOf(44100, 2, samples);
            sound.most = size.given;
            const std::vector<float> out = drained(converter, sound, 2, size.taken);
            if (whole.empty()) whole = out;
            EXPECT_TRUE(out == whole) << "to " << to << ", " << size.given << " given, " << size.taken
                                      << " taken: not bit-identical";
        }
    }
}

/// Input with pauses: every other call of the procedure returns no frames for now.
struct Halting {
    Sound sound;
    bool halts = false;
    static OSStatus procedure(AudioConverterRef converter, UInt32* packets, AudioBufferList* list,
                              AudioStreamPacketDescription** descriptions, void* context)
    {
        Halting& self = *static_cast<Halting*>(context);
        self.halts = !self.halts;
        if (self.halts) {
            *packets = 0;
            return 'wait';
        }
        return Sound::procedure(converter, packets, list, descriptions, &self.sound);
    }
};

TEST(Rate, PausesLoseNoFrames)
{
    const std::vector<float> samples = tone(44100, 700, 3000);
    Sound plain = soundOf(44100, 1, samples);
    const Converter first(interleaved(44100, 1), interleaved(48000, 1));
    const std::vector<float> whole = drained(first, plain, 1, 256);

    const Converter converter(interleaved(44100, 1), interleaved(48000, 1));
    Halting halting{soundOf(44100, 1, samples)};
    halting.sound.most = 100;
    std::vector<float> out;
    int waits = 0;
    for (;;) {
        List list(interleaved(48000, 1), 256);
        UInt32 packets = 256;
        const OSStatus status = AudioConverterFillComplexBuffer(converter, Halting::procedure, &halting,
                                                                &packets, list.get(), nullptr);
        ASSERT_TRUE(status == noErr || status == 'wait');
        waits += status == 'wait';
        const auto* made = static_cast<const float*>(list[0].mData);
        out.insert(out.end(), made, made + packets);
        if (!packets && !status) break;
    }
    EXPECT_TRUE(out == whole);
    EXPECT_GT(waits, 25);
}

TEST(Rate, ResetRestoresTheInitialState)
{
    const Converter converter(interleaved(44100, 1), interleaved(48000, 1));
    const std::vector<float> samples = tone(44100, 700, 2000);
    Sound sound = soundOf(44100, 1, samples);
    const std::vector<float> first = drained(converter, sound, 1, 300);
    EXPECT_EQ(AudioConverterReset(converter), noErr);
    sound.at = 0;
    EXPECT_TRUE(drained(converter, sound, 1, 300) == first);

    // A reset in the middle of the input discards unread input and filter history.
    EXPECT_EQ(AudioConverterReset(converter), noErr);
    sound.at = 0;
    List list(interleaved(48000, 1), 100);
    EXPECT_EQ(fill(converter, Sound::procedure, &sound, 100, list), 100u);
    EXPECT_EQ(AudioConverterReset(converter), noErr);
    sound.at = 0;
    EXPECT_TRUE(drained(converter, sound, 1, 300) == first);
}

// The procedure supplies more frames than requested, so that unread frames wait in the converter too.
TEST(Rate, ResetDiscardsWaitingFrames)
{
    const auto all = [](AudioConverterRef, UInt32* packets, AudioBufferList* list,
                        AudioStreamPacketDescription**, void* context) -> OSStatus {
        Sound& sound = *static_cast<Sound*>(context);
        *packets = sound.frames;
        list->mBuffers[0].mData = sound.buffers[0].data();
        list->mBuffers[0].mDataByteSize = sound.frames * 4;
        return noErr;
    };
    const Converter converter(interleaved(44100, 1), interleaved(48000, 1));
    Sound sound = soundOf(44100, 1, tone(44100, 700, 5000));
    std::vector<float> first;
    for (int run = 0; run < 3; ++run) {
        std::vector<float> samples;
        for (int i = 0; i < 300; ++i) {
            List list(interleaved(48000, 1), 1);
            ASSERT_EQ(fill(converter, all, &sound, 1, list), 1u);
            samples.push_back(*static_cast<const float*>(list[0].mData));
        }
        if (run == 0) first = samples;
        EXPECT_TRUE(samples == first) << run;
        EXPECT_EQ(AudioConverterReset(converter), noErr);
    }
}

/// Get the level of a converted tone, without its start and end.
double levelOf(UInt32 complexity, double hertz)
{
    const Converter converter(interleaved(44100, 1), interleaved(48000, 1));
    EXPECT_EQ(converter.set('srca', complexity), noErr);
    Sound sound = soundOf(44100, 1, tone(44100, hertz, 8000));
    const std::vector<float> out = drained(converter, sound, 1, 512);
    double power = 0;
    for (std::size_t i = 2000; i < 6000; ++i) power += double{out[i]} * out[i];
    return std::sqrt(power / 4000 * 2);
}

TEST(Rate, EveryComplexityPassesAudibleFrequencies)
{
    // clang-format off
    const struct { UInt32 complexity; double hertz; bool passes; } facts[] = {
        {'line', 16000, true}, {'line', 20500, true}, {'line', 22000, false},
        {'norm', 19200, true}, {'norm', 20500, true}, {'norm', 22000, false},
        {'bats', 20500, true}, {'bats', 22000, false},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const double level = levelOf(fact.complexity, fact.hertz);
        if (fact.passes)
            EXPECT_NEAR(level, 1, 0.05) << fact.complexity << ", " << fact.hertz;
        else
            EXPECT_LT(level, 0.9) << fact.complexity << ", " << fact.hertz;
    }
}

TEST(Rate, FirstFillPullsTheLookAheadToo)
{
    for (const UInt32 complexity : {'line', 'norm', 'bats'})
        for (const Float64 to : {22050.0, 48000.0, 96000.0}) {
            const Converter converter(interleaved(44100, 1), interleaved(to, 1));
            ASSERT_EQ(converter.set('srca', UInt32{complexity}), noErr);
            struct Noted {
                Sound sound;
                std::vector<UInt32> requests;
                static OSStatus procedure(AudioConverterRef c, UInt32* packets, AudioBufferList* list,
                                          AudioStreamPacketDescription** descriptions, void* context)
                {
                    Noted& self = *static_cast<Noted*>(context);
                    self.requests.push_back(*packets);
                    return Sound::procedure(c, packets, list, descriptions, &self.sound);
                }
            } noted{soundOf(44100, 1, std::vector<float>(20000, 0.25f)), {}};
            List list(interleaved(to, 1), 512);
            for (int i = 0; i < 4; ++i) {
                list.restore();
                ASSERT_EQ(fill(converter, Noted::procedure, &noted, 512, list), 512u);
            }
            SCOPED_TRACE(std::to_string(complexity) + " to " + std::to_string(to));
            ASSERT_EQ(noted.requests.size(), 4u) << "one call per fill";
            const double fill = 512 * 44100 / to;
            const UInt32 ahead = converter.get<AudioConverterPrimeInfo>('prim').trailingFrames;
            EXPECT_NEAR(noted.requests[0], fill + ahead, 1);
            for (int i = 1; i < 4; ++i) EXPECT_NEAR(noted.requests[i], fill, 1);
        }
}

TEST(Rate, SampleFormatChangesToo)
{
    // From unsigned 8 bits to non-interleaved big-endian 24 bits, the tone keeps the precision of 8 bits.
    const auto from = pcm(22050, 1, 8, isPacked),
               to = pcm(44100, 2, 24, isSigned | isPacked | isBig | isNonInterleaved);
    Sound sound{from, std::vector<std::vector<unsigned char>>(1), 4000};
    for (const float sample : tone(22050, 300, 4000))
        sound.buffers[0].push_back(static_cast<unsigned char>(128 + std::lrint(sample * 100)));
    const Converter converter(from, to);
    List list(to, 8000);
    ASSERT_EQ(fill(converter, Sound::procedure, &sound, 8000, list), 8000u);
    for (UInt32 c = 0; c < 2; ++c)
        for (UInt32 i = 1000; i < 7000; ++i) {
            const unsigned char* bytes = list.bytes(c) + i * 3;
            const int whole = static_cast<signed char>(bytes[0]) * 65536 + bytes[1] * 256 + bytes[2];
            ASSERT_NEAR(whole / 8388608.0, std::sin(2 * pi * 300 * i / 44100) * 100 / 128, 0.012) << i;
        }
}

} // namespace
