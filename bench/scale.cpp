// Many buffered players on one stepped device.
#include "bench/file_player.h"
#include "bench/music.h"
#include "player/render.h"

#include <CoreAudio/CoreAudio.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr std::size_t bufferFrames = 44100; // a second, of each player's own

/// A player's record as the library starts it, at a rate that is not the device's.
struct Player {
    Player() : data(bench::music(1).begin(), bench::music(1).begin() + bufferFrames)
    {
        record.sampleRate = 44100;
        record.deviceSampleRate = 48000;
        record.numberOfChannels = 1;
        record.isRunning = true;
        record.ioProc = player::MyPlayIOProc;
        record.current = {static_cast<std::int32_t>(bufferFrames), data.data()};
    }
    void rewind() { record.outputPosition = record.outputPositionRelative = 0; }

    std::vector<float> data;
    player::AudioPlayerData record = {};
};

// Installed as the library does it: one procedure, told apart by its client.
struct Players {
    explicit Players(std::size_t count) : device(bench::addSteppedDevice(48000))
    {
        for (std::size_t i = 0; i < count; ++i) {
            each.push_back(std::make_unique<Player>());
            player::AudioPlayerData& record = each.back()->record;
            if (AudioDeviceAddIOProc(device, record.ioProc, &record) != noErr ||
                AudioDeviceStart(device, record.ioProc) != noErr)
                throw std::runtime_error("a player cannot be started");
        }
    }

    void step()
    {
        if (played + 600 > bufferFrames) {
            for (auto& one : each) one->rewind();
            played = 0;
        }
        KVXPlatformStep(device, bench::sliceFrames);
        played += bench::sliceFrames; // more than is taken from the buffer
    }

    KVXDeviceID device;
    std::vector<std::unique_ptr<Player>> each;
    std::size_t played = 0;
};

void together(benchmark::State& state, Players*& players, std::size_t count)
{
    if (!players) players = new Players(count);
    for (auto _ : state) {
        players->step();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

/// What no player can do without: as many samples of each, out of memory of its own.
void reading(benchmark::State& state, std::size_t count)
{
    constexpr std::size_t floats = bench::sliceFrames * 441 / 480;
    const std::vector<std::vector<float>> data(count, std::vector<float>(bufferFrames, 0.5f));
    std::vector<float> out(floats);
    std::size_t at = 0;
    for (auto _ : state) {
        for (const std::vector<float>& each : data) {
            std::memcpy(out.data(), each.data() + at, floats * sizeof(float));
            benchmark::DoNotOptimize(out.data());
            benchmark::ClobberMemory();
        }
        at += floats;
        if (at + floats > bufferFrames) at = 0;
    }
}

Players* crowds[4];

const bool registered = [] {
    std::size_t count = 1;
    for (Players*& players : crowds) {
        benchmark::RegisterBenchmark(
            ("scale/" + std::to_string(count) + " players").c_str(),
            [&players, count](benchmark::State& state) { together(state, players, count); });
        benchmark::RegisterBenchmark(("scale/" + std::to_string(count) + " memcpy").c_str(), reading, count);
        count *= 10;
    }
    return true;
}();

} // namespace
