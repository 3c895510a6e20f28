// kvx_kernels NAME: runs a scenario. scripts/instructions counts the instructions inside kvx_counted().
// --list prints the names; --prepare writes the sound file that some scenarios play; --processor prints the
// processor features that select SIMD code.
#include "bench/file_player.h"
#include "bench/slice_renderer.h"
#include "bench/sound_files.h"
#include "bench/test_signal.h"
#include "player/integer_to_float.h"
#include "player/play_queue.h"

#include <AudioUnit/AudioUnit.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <string_view>

namespace {

using Work = std::function<void()>;

/// Run `work`. valgrind counts instructions only inside this function; scripts/instructions passes its name.
extern "C" __attribute__((noinline)) void kvx_counted(const Work& work) { work(); }

/// Count the instructions of `times` calls of `use(object)`, after one call for initialisation.
template <class Object, class Use>
void countCalls(int times, Object& object, Use use)
{
    use(object);
    kvx_counted([&] {
        for (int i = 0; i < times; ++i) use(object);
    });
}

void render(int channels)
{
    bench::SliceRenderer slice(bench::testSignal(channels), channels, 44100, 48000, 512,
                               static_cast<std::uint32_t>(channels));
    countCalls(500, slice, [](bench::SliceRenderer& each) { each.render(); });
}

void convert(std::int32_t bitSize)
{
    const player::SampleForm& form = *player::findSampleForm(bitSize);
    constexpr std::size_t count = 1 << 16;
    const std::vector<unsigned char> bytes(count * static_cast<std::size_t>(form.bytes), 0x5A);
    std::vector<float> out(count);
    countCalls(20, out, [&](std::vector<float>& each) { form.conversion(bytes.data(), count, each.data()); });
}

void interleave()
{
    constexpr std::size_t count = 1 << 16;
    const std::vector<unsigned char> bytes(count * sizeof(float), 0x3A);
    std::vector<float> out(2 * count);
    countCalls(20, out, [&](std::vector<float>& each) {
        player::convertPairs(player::copyFloats, sizeof(float), bytes.data(), bytes.data(), count,
                             each.data());
    });
}

void takeNextBuffer()
{
    float sample = 0;
    player::AudioPlayerData record = {};
    for (player::PlayItem& each : record.queue) each = {1, &sample};
    record.queueCount = player::queueCapacity;
    countCalls(1000, record, [](player::AudioPlayerData& each) {
        player::TakeNextPlayItem(each);
        each.queue[each.queueCount++] = each.current;
        each.current = {};
    });
}

void playFile(const char* property, double value, int slices)
{
    bench::FilePlayer player;
    player.object().set(property, value);
    player.play();
    countCalls(slices, player, [](bench::FilePlayer& each) { each.step(); });
}

void flatGraph() { playFile("OutputVolume", 1, 400); }
void stretchedGraph() { playFile("TimeRate", 1.25, 40); }

void equalisedGraph()
{
    bench::FilePlayer player;
    host::Array gains = host::Array::of(std::vector<float>(31, 3.0f));
    player.object().call("updateEQ", gains);
    player.play();
    countCalls(200, player, [](bench::FilePlayer& each) { each.step(); });
}

void getProperty()
{
    const host::Object player = bench::loadedHost().create("CoreAudioPlayerKVX");
    countCalls(1000, player, [](const host::Object& each) { (void)each.get("SampleRate").number(); });
}

const struct {
    std::string_view name;
    void (*run)();
} scenarios[] = {
    {"render-mono", [] { render(1); }},  {"render-stereo", [] { render(2); }},
    {"convert-16", [] { convert(15); }}, {"convert-24", [] { convert(24); }},
    {"interleave", interleave},          {"take-front", takeNextBuffer},
    {"graph-unity", flatGraph},          {"graph-equaliser", equalisedGraph},
    {"graph-rate", stretchedGraph},      {"property-get", getProperty},
};

/// Print the processor features by which the plug-in, the C library and other libraries select SIMD code.
void printProcessor()
{
    const struct {
        const char* name;
        bool isSupported;
    } features[] = {
        {"sse2", __builtin_cpu_supports("sse2") != 0},     {"sse3", __builtin_cpu_supports("sse3") != 0},
        {"ssse3", __builtin_cpu_supports("ssse3") != 0},   {"sse4.1", __builtin_cpu_supports("sse4.1") != 0},
        {"sse4.2", __builtin_cpu_supports("sse4.2") != 0}, {"avx", __builtin_cpu_supports("avx") != 0},
        {"avx2", __builtin_cpu_supports("avx2") != 0},     {"fma", __builtin_cpu_supports("fma") != 0},
    };
    const char* separator = "";
    for (const auto& each : features) {
        if (!each.isSupported) continue;
        std::printf("%s%s", separator, each.name);
        separator = " ";
    }
    std::puts("");
}

} // namespace

int main(int count, char** arguments)
{
    setenv("KVX_AUDIO_DEVICE", "simulated", 1);
    const std::string_view argument = count == 2 ? arguments[1] : "";
    try {
        if (argument == "--processor") return printProcessor(), 0;
        if (argument == "--prepare") return bench::longFile(bench::fileFormats[0]), 0;
        for (const auto& each : scenarios) {
            if (argument == "--list")
                std::puts(each.name.data());
            else if (argument == each.name)
                return each.run(), 0;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kvx_kernels: %s\n", error.what());
        return 1;
    }
    if (argument == "--list") return 0;
    std::fputs("usage: kvx_kernels NAME | --list | --prepare | --processor\n", stderr);
    return 2;
}
