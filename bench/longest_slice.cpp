// Measures the longest of many short slices of the file player, which converts the rate of the file.
#include "bench/file_player.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>

namespace {

constexpr double deviceRate = 48000;
constexpr std::uint32_t frames = 64;
constexpr int slices = 20000;

/// The processor time of this thread, which does not contain the time of other threads.
double threadSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void longestSlice(benchmark::State& state)
{
    static const bench::FilePlayer& player = *[] {
        auto* const made = new bench::FilePlayer(deviceRate, frames);
        made->play();
        return made;
    }();
    for (auto _ : state) {
        double longest = 0;
        for (int i = 0; i < slices; ++i) {
            const double start = threadSeconds();
            player.step();
            longest = std::max(longest, threadSeconds() - start);
        }
        state.SetIterationTime(longest);
    }
}

BENCHMARK(longestSlice)->Name("slice/64 frames to 48000, longest")->Iterations(1)->UseManualTime();

} // namespace
