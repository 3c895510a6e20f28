// The file player's whole graph, a slice of 512 stereo frames at a time on a stepped device: at unity against
// copying as many samples, at another rate or pitch against the stretchers of others by themselves.
#include "bench/file_player.h"
#include "bench/files.h"
#include "bench/music.h"
#include "bench/stretching.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>

namespace {

constexpr double timeRate = 1.25;
constexpr double semitones = 3; // 300 cents

double pitchRatio() { return std::exp2(semitones / 12); }

/// Benchmarks run over and over; what they work with is made at the first time, and stays.
template <class Thing>
void stepping(benchmark::State& state, Thing& thing)
{
    for (auto _ : state) {
        thing.step();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * bench::sliceFrames);
}

bench::FilePlayer& playing(const char* property, double value)
{
    auto& player = *new bench::FilePlayer;
    player.object().set(property, value);
    player.play();
    return player;
}

void atUnity(benchmark::State& state)
{
    static bench::FilePlayer& player = playing("OutputVolume", 1);
    stepping(state, player);
}

void atRate(benchmark::State& state)
{
    static bench::FilePlayer& player = playing("TimeRate", timeRate);
    stepping(state, player);
}

void atPitch(benchmark::State& state)
{
    static bench::FilePlayer& player = playing("PitchRate", 100 * semitones);
    stepping(state, player);
}

/// Slices out of as much memory as the file player's file takes.
struct Copying {
    void step()
    {
        if (at + out.size() > samples.size()) at = 0;
        std::memcpy(out.data(), samples.data() + at, out.size() * sizeof(float));
        at += out.size();
        benchmark::DoNotOptimize(out.data());
    }
    std::vector<float> samples = std::vector<float>(bench::fileMinutes * 2 * bench::musicFrames, 0.5f);
    std::vector<float> out = std::vector<float>(2 * bench::sliceFrames);
    std::size_t at = 0;
};

void copying(benchmark::State& state)
{
    static Copying copy;
    stepping(state, copy);
}

void rubberBandAtRate(benchmark::State& state)
{
    static bench::RubberBandAlone band(1 / timeRate, 1, bench::sliceFrames);
    stepping(state, band);
}

// What a higher pitch asks of a stretcher: as many more frames as are then played faster.
void rubberBandStretching(benchmark::State& state)
{
    static bench::RubberBandAlone band(pitchRatio(), 1, bench::sliceFrames * pitchRatio());
    stepping(state, band);
}

void rubberBandAtPitch(benchmark::State& state)
{
    static bench::RubberBandAlone band(1, pitchRatio(), bench::sliceFrames);
    stepping(state, band);
}

void soundTouchAtRate(benchmark::State& state)
{
    static bench::SoundTouchAlone touch(timeRate, 0);
    stepping(state, touch);
}

void soundTouchAtPitch(benchmark::State& state)
{
    static bench::SoundTouchAlone touch(1, semitones);
    stepping(state, touch);
}

BENCHMARK(atUnity)->Name("graph/unity/ours");
BENCHMARK(copying)->Name("graph/unity/memcpy");
BENCHMARK(atRate)->Name("graph/rate 1.25/ours");
BENCHMARK(rubberBandAtRate)->Name("graph/rate 1.25/Rubber Band");
BENCHMARK(soundTouchAtRate)->Name("graph/rate 1.25/SoundTouch");
BENCHMARK(atPitch)->Name("graph/pitch +300/ours");
BENCHMARK(rubberBandStretching)->Name("graph/pitch +300/Rubber Band");
BENCHMARK(rubberBandAtPitch)->Name("graph/pitch +300/Rubber Band's pitch scale");
BENCHMARK(soundTouchAtPitch)->Name("graph/pitch +300/SoundTouch");

} // namespace
