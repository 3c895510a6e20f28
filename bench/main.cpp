// The benchmarks' own options, and what the report wants to know of this build.
#include <benchmark/benchmark.h>

#include <cstdlib>

int main(int count, char** arguments)
{
    setenv("KVX_AUDIO_DEVICE", "simulated", 0); // sound hardware has its own time
    benchmark::AddCustomContext("compiler", __VERSION__);
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
