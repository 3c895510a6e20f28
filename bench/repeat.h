// The timed loop of a benchmark.
#pragma once

#include <benchmark/benchmark.h>

namespace bench {

/// Call `work` once per iteration. `work` returns its output, which the compiler may then not optimise away.
template <class Work>
void repeat(benchmark::State& state, Work work)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(work());
        benchmark::ClobberMemory();
    }
}

} // namespace bench
