// One scenario by name, for a tool that counts its instructions: what is made first is not counted, what runs
// inside `kvx_counted` is. Work is fixed, so that the count is the same on every run. --prepare writes the
// file that some of them play; --processor says which of the instructions that a form may be chosen for are
// there, as the tool shows it.
#include "bench/file_player.h"
#include "bench/files.h"
#include "bench/music.h"
#include "bench/one_slice.h"
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

/// The counter is told of this function by its name.
extern "C" __attribute__((noinline)) void kvx_counted(const Work& work) { work(); }

template <class Thing, class Use>
void many(int times, Thing& thing, Use use)
{
    use(thing); // what only a first time does
    kvx_counted([&] {
        for (int i = 0; i < times; ++i) use(thing);
    });
}

void render(int channels)
{
    bench::OneSlice slice(bench::music(channels), channels, 44100, 48000, 512);
    many(500, slice, [](bench::OneSlice& each) { each.render(); });
}

void convert(std::int32_t bitSize)
{
    const player::SampleForm& form = *player::findSampleForm(bitSize);
    constexpr std::size_t count = 1 << 16;
    const std::vector<unsigned char> bytes(count * static_cast<std::size_t>(form.bytes), 0x5A);
    std::vector<float> out(count);
    many(20, out, [&](std::vector<float>& each) { form.conversion(bytes.data(), count, each.data()); });
}

void interleave()
{
    constexpr std::size_t count = 1 << 16;
    const std::vector<unsigned char> bytes(count * sizeof(float), 0x3A);
    std::vector<float> out(2 * count);
    many(20, out, [&](std::vector<float>& each) {
        player::convertPairs(player::copyFloats, sizeof(float), bytes.data(), bytes.data(), count,
                             each.data());
    });
}

void takeFront()
{
    float sample = 0;
    player::AudioPlayerData record = {};
    for (player::PlayItem& each : record.queue) each = {1, &sample};
    record.queueCount = player::queueCapacity;
    many(1000, record, [](player::AudioPlayerData& each) {
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
    many(slices, player, [](bench::FilePlayer& each) { each.step(); });
}

void flatGraph() { playFile("OutputVolume", 1, 400); }
void stretchedGraph() { playFile("TimeRate", 1.25, 40); }

void equalisedGraph()
{
    bench::FilePlayer player;
    host::Array gains = host::Array::of(std::vector<float>(31, 3.0f));
    player.object().call("updateEQ", gains);
    player.play();
    many(200, player, [](bench::FilePlayer& each) { each.step(); });
}

void getProperty()
{
    const host::Object player = bench::loadedHost().create("CoreAudioPlayerKVX");
    many(1000, player, [](const host::Object& each) { (void)each.get("SampleRate").number(); });
}

const struct {
    std::string_view name;
    void (*run)();
} scenarios[] = {
    {"render-mono", [] { render(1); }},  {"render-stereo", [] { render(2); }},
    {"convert-16", [] { convert(15); }}, {"convert-24", [] { convert(24); }},
    {"interleave", interleave},          {"take-front", takeFront},
    {"graph-unity", flatGraph},          {"graph-equaliser", equalisedGraph},
    {"graph-rate", stretchedGraph},      {"property-get", getProperty},
};

/// What this library, libc and the others look at before they choose among forms of a kernel.
void printProcessor()
{
    const struct {
        const char* name;
        bool isThere;
    } features[] = {
        {"sse2", __builtin_cpu_supports("sse2") != 0},     {"sse3", __builtin_cpu_supports("sse3") != 0},
        {"ssse3", __builtin_cpu_supports("ssse3") != 0},   {"sse4.1", __builtin_cpu_supports("sse4.1") != 0},
        {"sse4.2", __builtin_cpu_supports("sse4.2") != 0}, {"avx", __builtin_cpu_supports("avx") != 0},
        {"avx2", __builtin_cpu_supports("avx2") != 0},     {"fma", __builtin_cpu_supports("fma") != 0},
    };
    const char* between = "";
    for (const auto& each : features) {
        if (!each.isThere) continue;
        std::printf("%s%s", between, each.name);
        between = " ";
    }
    std::puts("");
}

} // namespace

int main(int count, char** arguments)
{
    setenv("KVX_AUDIO_DEVICE", "simulated", 1);
    const std::string_view wanted = count == 2 ? arguments[1] : "";
    try {
        if (wanted == "--processor") return printProcessor(), 0;
        if (wanted == "--prepare") return bench::fileOf(bench::fileKinds[0]), 0;
        for (const auto& each : scenarios) {
            if (wanted == "--list")
                std::puts(each.name.data());
            else if (wanted == each.name)
                return each.run(), 0;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kvx_kernels: %s\n", error.what());
        return 1;
    }
    if (wanted == "--list") return 0;
    std::fputs("usage: kvx_kernels NAME | --list | --prepare | --processor\n", stderr);
    return 2;
}
