// Measures reading a property of a player: by name through the dynamic calls of host/runtime, and with a
// direct call of the getter in the class table.
#include "bench/file_player.h"
#include "bench/repeat.h"

namespace {

const host::Object& player()
{
    static const host::Object& object = *new host::Object(bench::loadedHost().create("CoreAudioPlayerKVX"));
    return object;
}

void byName(benchmark::State& state)
{
    const host::Object& object = player();
    bench::repeat(state, [&] { return object.get("SampleRate").number(); });
}

void byTable(benchmark::State& state)
{
    const host::Object& object = player();
    const host::PropertyInfo& property = *object.classInfo().property("SampleRate");
    const auto getter = reinterpret_cast<float (*)(REALobjectStruct*, HostInteger)>(property.getter);
    bench::repeat(state, [&] { return getter(object.get(), property.parameter); });
}

void methodByName(benchmark::State& state)
{
    const host::Object& object = player();
    bench::repeat(state, [&] { return object.call("FreeSpace").integer(); });
}

BENCHMARK(byName)->Name("property get/dynamic caller");
BENCHMARK(byTable)->Name("property get/table");
BENCHMARK(methodByName)->Name("property get/method through the caller");

} // namespace
