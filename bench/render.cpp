// The buffered player's slice: ours, libsamplerate's simplest converters, and the arithmetic one value at a
// time. Every row makes the same 512 frames, with as many channels as the data, from the same minute of it.
#include "bench/music.h"
#include "bench/one_slice.h"
#include "bench/reference_render.h"

#include <benchmark/benchmark.h>

#include <samplerate.h>

#include <string>

namespace {

constexpr std::uint32_t frames = 512;

struct Case {
    float from, to;
    int channels;
    double step() const { return double{from / to}; }
};
const Case cases[] = {{44100, 48000, 1}, {44100, 48000, 2}, {22050, 44100, 1}, {22050, 44100, 2}};

bool isAtEnd(double position, double step) { return position + (frames + 2) * step >= bench::musicFrames; }

void finish(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * frames); }

void ours(benchmark::State& state, Case which)
{
    bench::OneSlice slice(bench::music(which.channels), which.channels, which.from, which.to, frames);
    for (auto _ : state) {
        slice.render();
        benchmark::DoNotOptimize(slice.out.data());
        benchmark::ClobberMemory();
    }
    finish(state);
}

void plain(benchmark::State& state, Case which)
{
    bench::PlainPlayer player(bench::music(which.channels));
    std::vector<float> out(2 * frames);
    const auto render = which.channels == 1 ? bench::renderMonoPlainly : bench::renderStereoPlainly;
    for (auto _ : state) {
        if (isAtEnd(player.position, which.step())) player.position = 0;
        render(player, which.step(), frames, out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    finish(state);
}

void samplerate(benchmark::State& state, Case which, int converter)
{
    const std::vector<float>& data = bench::music(which.channels);
    std::vector<float> out(2 * frames);
    int error = 0;
    SRC_STATE* const src = src_new(converter, which.channels, &error);
    SRC_DATA job = {};
    job.src_ratio = 1 / which.step();
    long at = 0;
    for (auto _ : state) {
        if (isAtEnd(static_cast<double>(at), which.step())) at = 0;
        job.data_in = data.data() + at * which.channels;
        job.input_frames = static_cast<long>(frames * which.step()) + 8;
        job.data_out = out.data();
        job.output_frames = frames;
        src_process(src, &job);
        at += job.input_frames_used;
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    src_delete(src);
    finish(state);
}

std::string name(const Case& which, const char* who)
{
    return std::string("render/") + (which.channels == 1 ? "mono " : "stereo ") +
           std::to_string(static_cast<int>(which.from)) + " to " +
           std::to_string(static_cast<int>(which.to)) + "/" + who;
}

const bool registered = [] {
    for (const Case& which : cases) {
        benchmark::RegisterBenchmark(name(which, "ours").c_str(), ours, which);
        benchmark::RegisterBenchmark(name(which, "one value at a time").c_str(), plain, which);
        benchmark::RegisterBenchmark(name(which, "libsamplerate linear").c_str(), samplerate, which,
                                     int{SRC_LINEAR});
        benchmark::RegisterBenchmark(name(which, "libsamplerate zero-order hold").c_str(), samplerate, which,
                                     int{SRC_ZERO_ORDER_HOLD});
    }
    return true;
}();

} // namespace
