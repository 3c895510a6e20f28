// Samples into floats: each form against copying as many bytes as it writes, 1 MiB that is in the cache.
#include "player/integer_to_float.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::size_t outputBytes = 1 << 20;
constexpr std::size_t outputFloats = outputBytes / sizeof(float);

std::vector<unsigned char> someBytes(std::size_t count)
{
    std::vector<unsigned char> bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(i * 131 >> 3);
    return bytes;
}

template <class Work>
void run(benchmark::State& state, Work work)
{
    std::vector<float> out(outputFloats);
    work(out.data());
    for (auto _ : state) {
        work(out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(outputBytes));
}

void copying(benchmark::State& state)
{
    const auto bytes = someBytes(outputBytes);
    run(state, [&](float* out) { std::memcpy(out, bytes.data(), outputBytes); });
}

void clearing(benchmark::State& state)
{
    run(state, [](float* out) { std::memset(out, 0, outputBytes); });
}

void converting(benchmark::State& state, std::int32_t bitSize)
{
    const player::SampleForm& form = *player::findSampleForm(bitSize);
    const auto bytes = someBytes(outputFloats * static_cast<std::size_t>(form.bytes));
    run(state, [&](float* out) { form.conversion(bytes.data(), outputFloats, out); });
}

void copyingFloats(benchmark::State& state)
{
    const auto bytes = someBytes(outputBytes);
    run(state, [&](float* out) { player::copyFloats(bytes.data(), outputFloats, out); });
}

void interleaving(benchmark::State& state)
{
    const auto bytes = someBytes(outputBytes);
    run(state, [&](float* out) {
        player::convertPairs(player::copyFloats, 4, bytes.data(), bytes.data() + outputBytes / 2,
                             outputFloats / 2, out);
    });
}

const bool registered = [] {
    for (const std::int32_t bitSize : {7, 8, 15, 16, 24, 31, 32})
        benchmark::RegisterBenchmark(("conversion/" + std::to_string(bitSize) + " bits").c_str(), converting,
                                     bitSize);
    benchmark::RegisterBenchmark("conversion/float copy", copyingFloats);
    benchmark::RegisterBenchmark("conversion/float interleave", interleaving);
    benchmark::RegisterBenchmark("conversion/memcpy", copying);
    benchmark::RegisterBenchmark("conversion/memset", clearing);
    return true;
}();

} // namespace
