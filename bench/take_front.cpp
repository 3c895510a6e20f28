// The front of the queue becomes the buffer that plays, with 1, 20 or 200 waiting; beside it the same with
// every slot of the record moved, used or not.
#include "player/play_queue.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <iterator>
#include <pthread.h>
#include <string>

namespace {

/// A record whose waiting buffers are never read.
struct Queue {
    explicit Queue(int waiting)
    {
        for (int i = 0; i < waiting; ++i) player.queue[i] = {1, &sample};
        player.queueCount = waiting;
    }
    /// What was taken waits again, at the end.
    void giveBack()
    {
        player.queue[player.queueCount++] = player.current;
        player.current = {};
    }

    float sample = 0;
    player::AudioPlayerData player = {};
};

template <class Take>
void run(benchmark::State& state, int waiting, Take take)
{
    Queue queue(waiting);
    for (auto _ : state) {
        take(queue.player);
        queue.giveBack();
        benchmark::DoNotOptimize(queue.player);
        benchmark::ClobberMemory();
    }
}

void ours(benchmark::State& state, int waiting) { run(state, waiting, player::TakeNextPlayItem); }

void takeMovingAll(player::AudioPlayerData& player)
{
    static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&lock);
    player.current = player.queue[0];
    std::copy(std::begin(player.queue) + 1, std::end(player.queue), std::begin(player.queue));
    player.queue[player::queueCapacity - 1] = {};
    --player.queueCount;
    pthread_mutex_unlock(&lock);
}

void movingAll(benchmark::State& state, int waiting) { run(state, waiting, takeMovingAll); }

void locking(benchmark::State& state)
{
    static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    for (auto _ : state) {
        pthread_mutex_lock(&lock);
        benchmark::ClobberMemory();
        pthread_mutex_unlock(&lock);
    }
}

const bool registered = [] {
    for (const int waiting : {1, 20, 200}) {
        const std::string name = "take front/" + std::to_string(waiting) + " waiting/";
        benchmark::RegisterBenchmark((name + "ours").c_str(), ours, waiting);
        benchmark::RegisterBenchmark((name + "every slot moved").c_str(), movingAll, waiting);
    }
    benchmark::RegisterBenchmark("take front/the lock, taken and given", locking);
    return true;
}();

} // namespace
