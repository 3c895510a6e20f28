// Measures an I/O cycle of one stepped device with 1 to 1,000 buffered players.
#include "bench/file_player.h"
#include "bench/repeat.h"
#include "bench/test_signal.h"
#include "player/render.h"

#include <CoreAudio/CoreAudio.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr std::size_t bufferFrames = 44100; // one second; each player has a buffer of this length

/// A buffered player in the state after its start, with a sample rate other than that of the device.
struct Player {
    Player() : data(bench::testSignal(1).begin(), bench::testSignal(1).begin() + bufferFrames)
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

/// Players on one stepped device. All share one I/O procedure, which gets the player as client data.
struct Players {
    explicit Players(std::size_t count) : device(bench::addSteppedDevice(48000))
    {
        for (std::size_t i = 0; i < count; ++i) {
            players.push_back(std::make_unique<Player>());
            player::AudioPlayerData& record = players.back()->record;
            if (AudioDeviceAddIOProc(device, record.ioProc, &record) != noErr ||
                AudioDeviceStart(device, record.ioProc) != noErr)
                throw std::runtime_error("a player cannot be started");
        }
    }

    void step()
    {
        if (played + 600 > bufferFrames) {
            for (auto& each : players) each->rewind();
            played = 0;
        }
        KVXPlatformStep(device, bench::sliceFrames);
        played += bench::sliceFrames;
    }

    KVXDeviceID device;
    std::vector<std::unique_ptr<Player>> players;
    std::size_t played = 0; ///< device frames since rewind(); the players read fewer frames of their buffers
};

void play(benchmark::State& state, Players*& players, std::size_t count)
{
    if (!players) players = new Players(count);
    bench::repeat(state, [&] {
        players->step();
        return players;
    });
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

/// Baseline: copies the samples of one slice from each player's own buffer, and does no other work.
void copySamples(benchmark::State& state, std::size_t count)
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

// The players of each benchmark. play() makes them in its first run, and its later runs use them again.
Players* playersByCount[4];

const bool registered = [] {
    std::size_t count = 1;
    for (Players*& players : playersByCount) {
        benchmark::RegisterBenchmark(
            ("scale/" + std::to_string(count) + " players").c_str(),
            [&players, count](benchmark::State& state) { play(state, players, count); });
        benchmark::RegisterBenchmark(("scale/" + std::to_string(count) + " memcpy").c_str(), copySamples,
                                     count);
        count *= 10;
    }
    return true;
}();

} // namespace
