// Measures a slice of 512 stereo frames through the file player's graph on a stepped device, compared with
// memcpy at neutral settings, and with time stretchers of other libraries at other rates and pitches.
#include "bench/file_player.h"
#include "bench/repeat.h"
#include "bench/sound_files.h"
#include "bench/stretchers.h"
#include "bench/test_signal.h"

#include <cmath>
#include <cstring>

namespace {

constexpr double timeRate = 1.25;
constexpr double semitones = 3; // 300 cents

double pitchRatio() { return std::exp2(semitones / 12); }

/// Call `renderer.step()`, which renders one slice, once per iteration. The benchmarks pass static renderers,
/// because Google Benchmark calls the function of a benchmark several times.
template <class Renderer>
void stepEachIteration(benchmark::State& state, Renderer& renderer)
{
    bench::repeat(state, [&] {
        renderer.step();
        return &renderer;
    });
    state.SetItemsProcessed(state.iterations() * bench::sliceFrames);
}

bench::FilePlayer& startPlayer(const char* property, double value)
{
    auto& player = *new bench::FilePlayer;
    player.object().set(property, value);
    player.play();
    return player;
}

void atUnity(benchmark::State& state)
{
    static bench::FilePlayer& player = startPlayer("OutputVolume", 1);
    stepEachIteration(state, player);
}

void atRate(benchmark::State& state)
{
    static bench::FilePlayer& player = startPlayer("TimeRate", timeRate);
    stepEachIteration(state, player);
}

void atPitch(benchmark::State& state)
{
    static bench::FilePlayer& player = startPlayer("PitchRate", 100 * semitones);
    stepEachIteration(state, player);
}

/// Copies slices of samples from a block that has the size of the file player's samples.
struct Copier {
    void step()
    {
        if (at + out.size() > samples.size()) at = 0;
        std::memcpy(out.data(), samples.data() + at, out.size() * sizeof(float));
        at += out.size();
    }
    std::vector<float> samples = std::vector<float>(bench::longFileMinutes * 2 * bench::signalFrames, 0.5f);
    std::vector<float> out = std::vector<float>(2 * bench::sliceFrames);
    std::size_t at = 0;
};

void copySlices(benchmark::State& state)
{
    static Copier copier;
    stepEachIteration(state, copier);
}

void rubberBandAtRate(benchmark::State& state)
{
    static bench::RubberBandStretcher band(1 / timeRate, 1, bench::sliceFrames);
    stepEachIteration(state, band);
}

// A stretcher does one part of a pitch shift: it makes more frames, which a resampler then plays faster.
void rubberBandStretching(benchmark::State& state)
{
    static bench::RubberBandStretcher band(pitchRatio(), 1, bench::sliceFrames * pitchRatio());
    stepEachIteration(state, band);
}

void rubberBandAtPitch(benchmark::State& state)
{
    static bench::RubberBandStretcher band(1, pitchRatio(), bench::sliceFrames);
    stepEachIteration(state, band);
}

void soundTouchAtRate(benchmark::State& state)
{
    static bench::SoundTouchStretcher touch(timeRate, 0);
    stepEachIteration(state, touch);
}

void soundTouchAtPitch(benchmark::State& state)
{
    static bench::SoundTouchStretcher touch(1, semitones);
    stepEachIteration(state, touch);
}

BENCHMARK(atUnity)->Name("graph/unity/ours");
BENCHMARK(copySlices)->Name("graph/unity/memcpy");
BENCHMARK(atRate)->Name("graph/rate 1.25/ours");
BENCHMARK(rubberBandAtRate)->Name("graph/rate 1.25/Rubber Band");
BENCHMARK(soundTouchAtRate)->Name("graph/rate 1.25/SoundTouch");
BENCHMARK(atPitch)->Name("graph/pitch +300/ours");
BENCHMARK(rubberBandStretching)->Name("graph/pitch +300/Rubber Band");
BENCHMARK(rubberBandAtPitch)->Name("graph/pitch +300/Rubber Band's pitch scale");
BENCHMARK(soundTouchAtPitch)->Name("graph/pitch +300/SoundTouch");

} // namespace
