// Measures the quality of rate conversion by commands: the level of tones after the conversion, and what
// remains of the sound without them. One file contains all tones of a conversion, one after the other.
#include "bench/process.h"
#include "tests/support/sound_samples.h"
#include "tests/support/tone_fit.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace {

using bench::Words;

struct Conversion {
    int from, to;
};
const Conversion conversions[] = {{44100, 48000}, {48000, 44100}, {96000, 44100}, {22050, 48000}};

constexpr double secondsPerTone = 0.25;
constexpr double secondsOfEdge =
    0.05; ///< time at both ends of a tone in which the filter contains its neighbour
constexpr double amplitude = 0.5;

/// The tones of the tables, and tones up to 0.6 of the lower rate for the picture.
std::vector<double> tonesOf(const Conversion& conversion)
{
    const double lower = std::min(conversion.from, conversion.to);
    std::vector<double> tones = {997, 0.45 * lower};
    if (conversion.from == 48000) tones.push_back(23000);
    // No tone is at half of the output rate, where a sine and a cosine cannot be told apart.
    for (double percent = 4.5; percent < 60 && percent * lower / 100 < conversion.from * 0.5;
         percent += percent < 40 ? 4 : 1)
        tones.push_back(percent * lower / 100);
    return tones;
}

support::Sound inputOf(const Conversion& conversion)
{
    support::Sound sound = {conversion.from, 1, {}};
    const auto frames = static_cast<std::size_t>(conversion.from * secondsPerTone);
    for (const double hertz : tonesOf(conversion)) {
        const std::vector<float> tone = support::toneSamples(conversion.from, hertz, frames, 1, amplitude);
        sound.samples.insert(sound.samples.end(), tone.begin(), tone.end());
    }
    return sound;
}

/// Report the level and the residue of each tone in decibels, relative to the tone before the conversion.
void report(benchmark::State& state, const Conversion& conversion, const support::Sound& sound)
{
    const double before = 20 * std::log10(amplitude);
    // The number of frames of a tone is whole before the conversion only.
    const double inputFrames = std::floor(conversion.from * secondsPerTone);
    const double frames = inputFrames * conversion.to / conversion.from, edge = secondsOfEdge * conversion.to;
    double start = 0;
    for (const double hertz : tonesOf(conversion)) {
        const support::ToneFit fit = support::fitTone(sound.samples, 1, 0, conversion.to, hertz,
                                                      static_cast<std::size_t>(start + edge),
                                                      static_cast<std::size_t>(start + frames - edge));
        state.counters[fmt::format("level {:g}", hertz)] = fit.level - before;
        state.counters[fmt::format("residue {:g}", hertz)] = fit.residue - before;
        start += frames;
    }
}

void convert(benchmark::State& state, Conversion conversion, const Words& words)
{
    const std::string folder = KVX_BINARY_DIR "/bench-files/", in = folder + "tones.wav",
                      out = folder + "converted.wav";
    support::writeSound(inputOf(conversion), in);
    for (auto _ : state)
        if (bench::processorSeconds(bench::withPaths(words, in, out)) < 0)
            return state.SkipWithError("the command fails");
    report(state, conversion, support::readSound(out));
}

const bool registered = [] {
    for (const Conversion& conversion : conversions) {
        const auto add = [&](const char* command, const Words& words) {
            const std::string name =
                fmt::format("resampling/{} to {}/{}", conversion.from, conversion.to, command);
            benchmark::RegisterBenchmark(name.c_str(), convert, conversion, words)->Iterations(1);
        };
        const std::string rate = std::to_string(conversion.to);
        add("kvx render", {KVX_BINARY_DIR "/kvx", "render", "IN", "OUT", "--quiet", "--device-rate", rate});
        if (bench::hasSox()) add("sox", {"sox", "IN", "-b", "32", "-e", "float", "OUT", "rate", rate});
    }
    return true;
}();

} // namespace
