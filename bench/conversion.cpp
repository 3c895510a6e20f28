// Measures the conversion of integer samples to 1 MiB of 32-bit floats, compared with memcpy of 1 MiB. Input
// and output fit into the processor's cache.
#include "bench/repeat.h"
#include "player/integer_to_float.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::size_t outputBytes = 1 << 20;
constexpr std::size_t outputFloats = outputBytes / sizeof(float);

std::vector<unsigned char> testBytes(std::size_t count)
{
    std::vector<unsigned char> bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(i * 131 >> 3);
    return bytes;
}

template <class Work>
void run(benchmark::State& state, Work work)
{
    std::vector<float> out(outputFloats);
    work(out.data()); // not timed, because the first use of `out` causes page faults
    bench::repeat(state, [&] {
        work(out.data());
        return out.data();
    });
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(outputBytes));
}

void copyBytes(benchmark::State& state)
{
    const auto bytes = testBytes(outputBytes);
    run(state, [&](float* out) { std::memcpy(out, bytes.data(), outputBytes); });
}

void clearBytes(benchmark::State& state)
{
    run(state, [](float* out) { std::memset(out, 0, outputBytes); });
}

void convertIntegers(benchmark::State& state, std::int32_t bitSize)
{
    const player::SampleForm& form = *player::findSampleForm(bitSize);
    const auto bytes = testBytes(outputFloats * static_cast<std::size_t>(form.bytes));
    run(state, [&](float* out) { form.conversion(bytes.data(), outputFloats, out); });
}

void copyFloats(benchmark::State& state)
{
    const auto bytes = testBytes(outputBytes);
    run(state, [&](float* out) { player::copyFloats(bytes.data(), outputFloats, out); });
}

void interleaveFloats(benchmark::State& state)
{
    const auto bytes = testBytes(outputBytes);
    run(state, [&](float* out) {
        player::convertPairs(player::copyFloats, 4, bytes.data(), bytes.data() + outputBytes / 2,
                             outputFloats / 2, out);
    });
}

const bool registered = [] {
    for (const std::int32_t bitSize : {7, 8, 15, 16, 24, 31, 32})
        benchmark::RegisterBenchmark(("conversion/" + std::to_string(bitSize) + " bits").c_str(),
                                     convertIntegers, bitSize);
    benchmark::RegisterBenchmark("conversion/float copy", copyFloats);
    benchmark::RegisterBenchmark("conversion/float interleave", interleaveFloats);
    benchmark::RegisterBenchmark("conversion/memcpy", copyBytes);
    benchmark::RegisterBenchmark("conversion/memset", clearBytes);
    return true;
}();

} // namespace
