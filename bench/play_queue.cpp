// Measures the time to take the next buffer from a queue of 1, 20 or 200 buffers, compared with a queue that
// moves all its slots, used or not. Also measures the time to lock and unlock a mutex.
#include "player/play_queue.h"
#include "bench/repeat.h"

#include <algorithm>
#include <iterator>
#include <pthread.h>
#include <string>

namespace {

/// A player with `waiting` buffers in its queue. All buffers refer to one sample, which is never read.
struct Queue {
    explicit Queue(int waiting)
    {
        for (int i = 0; i < waiting; ++i) player.queue[i] = {1, &sample};
        player.queueCount = waiting;
    }
    /// Append the buffer that was taken, so that the number of buffers in the queue stays the same.
    void appendCurrent()
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
    bench::repeat(state, [&] {
        take(queue.player);
        queue.appendCurrent();
        return &queue.player;
    });
}

void ours(benchmark::State& state, int waiting) { run(state, waiting, player::TakeNextPlayItem); }

void takeAndMoveAllSlots(player::AudioPlayerData& player)
{
    static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&lock);
    player.current = player.queue[0];
    std::copy(std::begin(player.queue) + 1, std::end(player.queue), std::begin(player.queue));
    player.queue[player::queueCapacity - 1] = {};
    --player.queueCount;
    pthread_mutex_unlock(&lock);
}

void moveAllSlots(benchmark::State& state, int waiting) { run(state, waiting, takeAndMoveAllSlots); }

void lockAndUnlock(benchmark::State& state)
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
        benchmark::RegisterBenchmark((name + "every slot moved").c_str(), moveAllSlots, waiting);
    }
    benchmark::RegisterBenchmark("take front/the lock, taken and given", lockAndUnlock);
    return true;
}();

} // namespace
