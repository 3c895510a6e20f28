#include "tests/platform/audiounit/rate_unit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace test {

RateUnit::RateUnit(const Rates& rates, Sound sound, double sampleRate, UInt32 limit)
    : unit(rates.subType, 'aufc'), track(std::move(sound)),
      rendering(unit, canonical(sampleRate, static_cast<UInt32>(track.sound.size())), limit),
      output(track.sound.size())
{
    const auto format = canonical(sampleRate, static_cast<UInt32>(track.sound.size()));
    EXPECT_EQ(unit.setFormat(1, format), noErr);
    EXPECT_EQ(unit.setFormat(2, format), noErr);
    EXPECT_EQ(unit.setLimit(limit), noErr);
    EXPECT_EQ(unit.setCallback(Track::callback, &track), noErr);
    set(0, rates.rate);
    if (rates.subType != 'vari') set(1, rates.cents);
    if (rates.subType == 'nutp') set(4, rates.overlap);
    EXPECT_EQ(AudioUnitInitialize(unit), noErr);
}

void RateUnit::set(AudioUnitParameterID id, double value) const
{
    EXPECT_EQ(AudioUnitSetParameter(unit, id, 0, 0, static_cast<Float32>(value), 0), noErr) << id;
}

double RateUnit::get(AudioUnitParameterID id) const
{
    Float32 value = -7777;
    EXPECT_EQ(AudioUnitGetParameter(unit, id, 0, 0, &value), noErr) << id;
    return value;
}

void RateUnit::bypass(bool isOn) const { EXPECT_EQ(unit.set<UInt32>(21, 0, 0, isOn), noErr); }

void RateUnit::play(std::size_t frames, UInt32 slice)
{
    const Sound more = rendering.play(frames, slice);
    for (std::size_t c = 0; c < output.size(); ++c)
        output[c].insert(output[c].end(), more[c].begin(), more[c].end());
}

double frequencyOf(const std::vector<Float32>& samples, std::size_t from, std::size_t until,
                   double sampleRate)
{
    double first = 0, last = 0;
    int zeros = 0;
    for (std::size_t i = from + 1; i < until; ++i) {
        const double a = samples[i - 1], b = samples[i];
        if (a >= 0 || b < 0) continue;
        last = static_cast<double>(i) - b / (b - a);
        if (zeros++ == 0) first = last;
    }
    return zeros < 2 ? 0 : (zeros - 1) / (last - first) * sampleRate;
}

std::size_t endOf(const std::vector<Float32>& samples, double level)
{
    std::size_t end = samples.size();
    while (end > 0 && std::fabs(static_cast<double>(samples[end - 1])) <= level) --end;
    return end;
}

double energyCentreOf(const std::vector<Float32>& samples)
{
    double sum = 0, moment = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double energy = static_cast<double>(samples[i]) * static_cast<double>(samples[i]);
        sum += energy;
        moment += energy * static_cast<double>(i);
    }
    return moment / sum;
}

double energyOf(const std::vector<Float32>& samples)
{
    double sum = 0;
    for (const Float32 sample : samples) sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sum;
}

double maxSecondDifference(const std::vector<Float32>& samples, std::size_t from, std::size_t until)
{
    double largest = 0;
    for (std::size_t i = from + 2; i < until; ++i) {
        const double a = samples[i - 2], b = samples[i - 1], c = samples[i];
        largest = std::max(largest, std::fabs(a - 2 * b + c));
    }
    return largest;
}

double secondDifferenceOfTone(double hertz, double sampleRate, double amplitude)
{
    const double half = std::sin(3.14159265358979323846 * hertz / sampleRate);
    return amplitude * 4 * half * half;
}

double minPeak(const std::vector<Float32>& samples, std::size_t from, std::size_t until, std::size_t span)
{
    double least = 1e9;
    for (std::size_t i = from; i + span <= until; i += span) {
        double peak = 0;
        for (std::size_t j = 0; j < span; ++j)
            peak = std::max(peak, std::fabs(static_cast<double>(samples[i + j])));
        least = std::min(least, peak);
    }
    return least;
}

std::optional<std::size_t> findInNoise(const Float32* four, const std::vector<Float32>& sound)
{
    const auto found = std::search(sound.begin(), sound.end(), four, four + 4);
    if (found == sound.end()) return std::nullopt;
    return static_cast<std::size_t>(found - sound.begin());
}

} // namespace test
