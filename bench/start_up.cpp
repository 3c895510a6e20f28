// Measures the start of the plug-in library, from dlopen to the return of its entry point. A minimal host
// counts the registered classes. The libraries that the plug-in needs are in the process already.
#include "abi/class_definition.h"
#include "abi/entry_point.h"

#include <KVXPlatform/KVXPlatform.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <string>

namespace {

/// Copy the library file. Other benchmarks have loaded the original, so loading that file takes no time.
std::string copyOfLibrary()
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(KVX_BINARY_DIR) / "bench-files";
    fs::create_directories(folder);
    fs::copy_file(KVX_BINARY_DIR "/KVXAudio.so", folder / "copy.so", fs::copy_options::overwrite_existing);
    return (folder / "copy.so").string();
}

constexpr int classCount = 5;
int registered = 0;

double hostVersion() { return 2016.0; }
void registerVersion(int) {}
HostBoolean isBuiltProgram() { return true; }
void registerClass(REALclassDefinition* definition) { registered += definition->name != nullptr; }

void* resolve(const char* name)
{
    static const struct {
        const char* name;
        void* function;
    } services[] = {
        {"REALGetRBVersion", reinterpret_cast<void*>(hostVersion)},
        {"RegisterPluginVersion", reinterpret_cast<void*>(registerVersion)},
        {"REALinRuntime", reinterpret_cast<void*>(isBuiltProgram)},
        {"PluginRegisterClass", reinterpret_cast<void*>(registerClass)},
    };
    for (const auto& each : services)
        if (std::strcmp(each.name, name) == 0) return each.function;
    return nullptr;
}

/// Time one load of the copied library per iteration, and unload the copy after each.
void loadAndEnter(benchmark::State& state)
{
    static const std::string copy = copyOfLibrary();
    const char* const path = copy.c_str();
    for (auto _ : state) {
        registered = 0;
        const auto begin = std::chrono::steady_clock::now();
        void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        auto* const enter =
            library ? reinterpret_cast<REALPluginMainFunction>(dlsym(library, pluginMainName)) : nullptr;
        if (enter) enter(resolve);
        const auto end = std::chrono::steady_clock::now();
        state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
        if (registered != classCount) return state.SkipWithError("not all classes are registered");
        dlclose(library);
        if (dlopen(path, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD))
            return state.SkipWithError("the library stays in the process");
    }
}

BENCHMARK(loadAndEnter)->Name("start-up/load and entry")->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace
