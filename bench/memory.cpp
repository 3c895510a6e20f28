// Measures the heap bytes of an idle host, of a loaded file, and of time-stretching and resampling engines.
#include "bench/file_player.h"
#include "bench/sound_files.h"
#include "bench/stretchers.h"
#include "bench/test_signal.h"

#include <benchmark/benchmark.h>

#include <samplerate.h>

#include <stdexcept>

namespace {

/// Report the heap bytes that a call of `make` allocates and that are still in use while its result lives.
template <class Make>
void measure(benchmark::State& state, Make make)
{
    double bytes = 0;
    for (auto _ : state) {
        const double before = bench::heapBytes();
        [[maybe_unused]] const auto result = make();
        bytes = bench::heapBytes() - before;
    }
    state.counters["bytes"] = bytes;
}

void idleHost(benchmark::State& state)
{
    for (auto _ : state) {
    }
    state.counters["bytes"] = bench::loadedHostBytes();
}

host::Object loadedFile()
{
    host::Object player = bench::loadedHost().create("AUPlayerKVX");
    if (!player.call("LoadFile", host::FolderItem::at(bench::longFile(bench::fileFormats[0])), 2, 2)
             .boolean())
        throw std::runtime_error("the file cannot be loaded");
    return player;
}

/// Report the heap bytes of a second load. A first load also allocates memory that the library keeps.
void fileWithoutSamples(benchmark::State& state)
{
    loadedFile();
    measure(state, loadedFile);
    constexpr double samples = 4.0 * 2 * bench::longFileMinutes * static_cast<double>(bench::signalFrames);
    state.counters["bytes"] = state.counters["bytes"] - samples;
}

void engineOfAFile(benchmark::State& state, const char* property, double value)
{
    const host::Object player = loadedFile();
    measure(state, [&] {
        player.set(property, value);
        return 0;
    });
}

void rubberBand(benchmark::State& state, int option)
{
    measure(state, [option] {
        auto band = std::make_unique<RubberBand::RubberBandStretcher>(
            static_cast<std::size_t>(bench::signalRate), 2, bench::RubberBandStretcher::options | option);
        band->setMaxProcessSize(1024);
        return band;
    });
}

void libsamplerate(benchmark::State& state, int quality)
{
    measure(state, [quality] {
        int error = 0;
        return std::shared_ptr<SRC_STATE>(src_new(quality, 2, &error), src_delete);
    });
}

const bool registered = [] {
    const auto add = [](const char* name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name, function, arguments...)->Iterations(1);
    };
    add("memory/idle host", idleHost);
    add("memory/file beside its samples", fileWithoutSamples);
    add("memory/file's time-pitch engine", engineOfAFile, "TimeRate", 1.25);
    add("memory/Rubber Band, finer", rubberBand, 0);
    add("memory/Rubber Band, one window", rubberBand,
        int{RubberBand::RubberBandStretcher::OptionWindowShort});
    add("memory/libsamplerate, fastest", libsamplerate, int{SRC_SINC_FASTEST});
    add("memory/libsamplerate, best", libsamplerate, int{SRC_SINC_BEST_QUALITY});
    return true;
}();

} // namespace
