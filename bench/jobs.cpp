// Measures whole jobs: the processor time of the command kvx, of usual commands for the same job, and of a
// program that only copies samples. Each process writes a file of 32-bit float samples.
#include "bench/process.h"
#include "bench/sound_files.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <string>

namespace {

using bench::join;
using bench::Words;

/// One job, and the words with which each command does it. IN and OUT stand for the paths of the files.
struct Job {
    const char* name;
    int seconds; ///< length of the input
    Words ours, sox, ffmpeg;
    bool hasFloor; ///< whether the program that copies samples does the job
};

// clang-format off
const Job jobs[] = {
    {"unity",     600, {"--quiet"},                           {},                {},                            true},
    {"48000 Hz",  300, {"--quiet", "--device-rate", "48000"}, {"rate", "48000"}, {"-ar", "48000"},              false},
    {"rate 1.25", 10,  {"--quiet", "--rate", "1.25"},         {"tempo", "1.25"}, {"-filter:a", "atempo=1.25"},  false},
};
// clang-format on

constexpr int runs = 3; // the shortest counts, because other work of the machine only adds time

const std::string outPath = KVX_BINARY_DIR "/bench-files/job.wav";

void run(benchmark::State& state, int seconds, Words words)
{
    words = bench::withPaths(std::move(words), bench::fileOfLength(seconds), outPath);
    for (auto _ : state) {
        double shortest = std::numeric_limits<double>::infinity();
        for (int i = 0; i < runs; ++i) {
            std::filesystem::remove(
                outPath); // otherwise the process would also free the memory of the old file
            shortest = std::min(shortest, bench::processorSeconds(words));
        }
        if (shortest < 0) return state.SkipWithError("the command fails");
        state.SetIterationTime(shortest);
    }
    std::filesystem::remove(outPath);
}

void add(const Job& job, const char* command, const Words& words)
{
    const std::string name = std::string("jobs/") + job.name + "/" + command;
    benchmark::RegisterBenchmark(name.c_str(), run, job.seconds, words)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

const bool registered = [] {
    for (const Job& job : jobs) {
        add(job, "kvx render", join({KVX_BINARY_DIR "/kvx", "render", "IN", "OUT"}, job.ours));
        if (bench::hasSox()) add(job, "sox", join({"sox", "IN", "-b", "32", "-e", "float", "OUT"}, job.sox));
        if (bench::hasFfmpeg())
            add(job, "ffmpeg",
                join(join({"ffmpeg", "-y", "-i", "IN"}, job.ffmpeg), {"-c:a", "pcm_f32le", "OUT"}));
        if (job.hasFloor) add(job, "copy", {KVX_BINARY_DIR "/kvx_copy", "IN", "OUT"});
    }
    return true;
}();

} // namespace
