// Runs the benchmarks, and adds the version of the compiler to their JSON output for the report.
#include <benchmark/benchmark.h>

#include <cstdlib>

int main(int count, char** arguments)
{
    setenv("KVX_AUDIO_DEVICE", "simulated", 0); // A hardware device would limit the speed.
    benchmark::AddCustomContext("compiler", __VERSION__);
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
