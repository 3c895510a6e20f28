// Tests rate conversion of pulled input: the number of frames pulled, and the time of the output.
#include "platform/pcm/variable_rate_converter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using kvxplatform::pcm::VariableRateConverter;
using Quality = VariableRateConverter::Quality;

constexpr double pi = 3.14159265358979323846;

struct Tone {
    double rate, hertz;
    std::vector<Float32> block;
    double frame = 0;
    UInt32 largest = 0;
    static const Float32* pull(void* context, UInt32 frames)
    {
        Tone& tone = *static_cast<Tone*>(context);
        tone.largest = std::max(tone.largest, frames);
        tone.block.resize(frames * 2);
        for (UInt32 i = 0; i < frames; ++i, ++tone.frame)
            tone.block[i * 2] = static_cast<Float32>(std::sin(2 * pi * tone.hertz * tone.frame / tone.rate)),
                           tone.block[i * 2 + 1] = -tone.block[i * 2];
        return tone.block.data();
    }
};

double worst(const std::vector<Float32>& out, double rate, double hertz)
{
    double error = 0;
    for (std::size_t i = 3000; i < out.size() / 2; ++i) {
        const double sample = std::sin(2 * pi * hertz * static_cast<double>(i) / rate);
        error = std::max({error, std::abs(out[i * 2] - sample), std::abs(out[i * 2 + 1] + sample)});
    }
    return error;
}

TEST(VariableRateConverter, KeepsTheTimeOfATone)
{
    // clang-format off
    const struct { double from, to; Quality quality; double bound; } facts[] = {
        {44100, 48000, Quality::normal, 1e-4}, {48000, 44100, Quality::normal, 1e-4},
        {22050, 44100, Quality::normal, 1e-4},
        {8000, 192000, Quality::normal, 1e-4},
        {192000, 8000, Quality::normal, 1e-3},
    };
    // clang-format on
    for (const auto& fact : facts) {
        Tone tone{fact.from, 1000, {}};
        VariableRateConverter converter;
        ASSERT_TRUE(converter.prepare(2, fact.quality));
        converter.setRatio(fact.to / fact.from);
        std::vector<Float32> out(10000 * 2);
        for (UInt32 at = 0; at < 10000; at += 100)
            converter.convert(out.data() + at * 2, 100, 333, {Tone::pull, &tone});
        EXPECT_LT(worst(out, fact.to, 1000), fact.bound) << fact.from << " to " << fact.to;
        EXPECT_LE(tone.largest, 333u);
        const double played = 10000 * fact.from / fact.to;
        EXPECT_GE(tone.frame, played - 1);
        EXPECT_LE(tone.frame, played + 400 * std::max(1.0, fact.from / fact.to));
    }
}

TEST(VariableRateConverter, OutputDoesNotDependOnSlices)
{
    std::vector<Float32> whole(4000 * 2), sliced(4000 * 2);
    for (std::vector<Float32>* out : {&whole, &sliced}) {
        Tone tone{44100, 500, {}};
        VariableRateConverter converter;
        ASSERT_TRUE(converter.prepare(2, Quality::normal));
        converter.setRatio(48000 / 44100.0);
        for (UInt32 at = 0; at < 4000;) {
            const UInt32 frames = out == &whole ? 4000 : std::min<UInt32>(1 + at % 7, 4000 - at);
            converter.convert(out->data() + at * 2, frames, 64, {Tone::pull, &tone});
            at += frames;
        }
    }
    EXPECT_EQ(whole, sliced) << "bit for bit";
}

TEST(VariableRateConverter, ResetClearsTheFilter)
{
    Tone tone{44100, 500, {}};
    VariableRateConverter converter;
    ASSERT_TRUE(converter.prepare(2, Quality::normal));
    converter.setRatio(48000 / 44100.0);
    std::vector<Float32> first(200), again(200);
    converter.convert(first.data(), 100, 1000, {Tone::pull, &tone});
    converter.reset();
    tone.frame = 0;
    converter.convert(again.data(), 100, 1000, {Tone::pull, &tone});
    EXPECT_EQ(first, again);
}

TEST(VariableRateConverter, AcceptsChannelCounts)
{
    // clang-format off
    const struct { UInt32 channels; bool isAccepted; } facts[] = {
        {1, true}, {2, true}, {8, true}, {128, true}, {129, false}, {100000, false}, {0, false},
    };
    // clang-format on
    for (const auto& fact : facts) {
        VariableRateConverter converter;
        EXPECT_EQ(converter.prepare(fact.channels, Quality::normal), fact.isAccepted) << fact.channels;
    }
}

} // namespace
