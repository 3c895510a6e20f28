// The timed loop of a benchmark.
#pragma once

#include <benchmark/benchmark.h>

namespace bench {

/// Call `work` once per iteration, as the timed part of a benchmark. `work` returns its output, so that the
/// compiler cannot remove the computation.
template <class Work>
void repeat(benchmark::State& state, Work work)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(work());
        benchmark::ClobberMemory();
    }
}

} // namespace bench
