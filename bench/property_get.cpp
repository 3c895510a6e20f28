// A property, read as a host program does: by name through the dynamic caller, and straight from the class
// table.
#include "bench/file_player.h"

#include <benchmark/benchmark.h>

namespace {

const host::Object& player()
{
    static const host::Object& object = *new host::Object(bench::loadedHost().create("CoreAudioPlayerKVX"));
    return object;
}

void byName(benchmark::State& state)
{
    const host::Object& object = player();
    for (auto _ : state) benchmark::DoNotOptimize(object.get("SampleRate").number());
}

void byTable(benchmark::State& state)
{
    const host::Object& object = player();
    const host::PropertyInfo& property = *object.classInfo().property("SampleRate");
    const auto getter = reinterpret_cast<float (*)(REALobjectStruct*, HostInteger)>(property.getter);
    for (auto _ : state) benchmark::DoNotOptimize(getter(object.get(), property.parameter));
}

void methodByName(benchmark::State& state)
{
    const host::Object& object = player();
    for (auto _ : state) benchmark::DoNotOptimize(object.call("FreeSpace").integer());
}

BENCHMARK(byName)->Name("property get/dynamic caller");
BENCHMARK(byTable)->Name("property get/table");
BENCHMARK(methodByName)->Name("property get/method through the caller");

} // namespace
