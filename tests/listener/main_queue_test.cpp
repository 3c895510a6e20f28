// Listeners that use the platform's main queue, with notifications from several threads at once.
#include "tests/listener/watched_class.h"

#include <KVXPlatform/KVXPlatform.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <thread>

namespace {

using namespace listening;

/// The registered listeners. As on the platform, a removed listener receives no call after its removal has
/// returned.
struct {
    std::mutex mutex;
    std::vector<std::pair<AudioObjectPropertyListenerProc, void*>> listeners;
} registered;

/// Notify listener number `n` modulo the number of listeners. Returns the listener's object; null without
/// listeners.
Object notify(std::size_t n)
{
    const std::lock_guard guard(registered.mutex);
    if (registered.listeners.empty()) return nullptr;
    const auto [procedure, client] = registered.listeners[n % registered.listeners.size()];
    const AudioObjectPropertyAddress address = {};
    EXPECT_EQ(procedure(7, 1, &address, client), 0);
    return static_cast<Object>(client);
}

} // namespace

#pragma GCC visibility push(default)
extern "C" OSStatus AudioObjectAddPropertyListener(AudioObjectID, const AudioObjectPropertyAddress*,
                                                   AudioObjectPropertyListenerProc procedure, void* client)
{
    const std::lock_guard guard(registered.mutex);
    registered.listeners.emplace_back(procedure, client);
    return noErr;
}

extern "C" OSStatus AudioObjectRemovePropertyListener(AudioObjectID, const AudioObjectPropertyAddress*,
                                                      AudioObjectPropertyListenerProc procedure, void* client)
{
    const std::lock_guard guard(registered.mutex);
    auto& all = registered.listeners;
    all.erase(std::remove(all.begin(), all.end(), std::pair{procedure, client}), all.end());
    return noErr;
}
#pragma GCC visibility pop

namespace {

constexpr Address address = {7, 0x6E737274, 0x676C6F62, 0};

class ListenersOnTheMainQueue : public WatchedClass {
protected:
    static void drain()
    {
        while (KVXPlatformDrainMainQueue(0) > 0) {
        }
    }
};

TEST_F(ListenersOnTheMainQueue, RaisesEventsOnTheMainThread)
{
    const Memory memory;
    attach(memory.object());
    construct(memory.object(), address);
    inHandler = [](Object) { EXPECT_NE(pthread_main_np(), 0); };
    std::thread([] {
        EXPECT_EQ(pthread_main_np(), 0);
        for (std::size_t i = 0; i < 10; ++i) notify(0);
    }).join();
    EXPECT_EQ(events.size(), 0u);
    drain();
    EXPECT_EQ(events, std::vector<Object>(10, memory.object()));
    destruct(memory.object());
}

TEST_F(ListenersOnTheMainQueue, DropsEventsOfDestroyedListeners)
{
    auto memory = std::make_unique<Memory>();
    attach(memory->object());
    construct(memory->object(), address);
    std::thread([] { notify(0); }).join();
    destruct(memory->object());
    memory.reset();
    drain();
    EXPECT_EQ(events.size(), 0u);
}

// Three threads notify listeners while the main thread constructs and destroys some of them. The permanent
// listeners receive all their events; no destroyed listener receives an event.
TEST_F(ListenersOnTheMainQueue, DeliversEachEventOnceWithManyThreads)
{
    constexpr std::size_t steadyCount = 100, threadCount = 3, notifications = 3334;
    std::vector<std::unique_ptr<Memory>> steady;
    for (std::size_t i = 0; i < steadyCount; ++i) {
        steady.push_back(std::make_unique<Memory>());
        attach(steady.back()->object());
        construct(steady.back()->object(), address);
    }

    std::mutex mutex;
    std::map<Object, std::size_t> sent; // notifications per object, sent by the threads
    std::map<Object, std::size_t> received;
    std::atomic<std::size_t> running{threadCount};

    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (std::size_t i = 0; i < notifications; ++i) {
                const Object object = notify(i * 7 + t);
                const std::lock_guard guard(mutex);
                ++sent[object];
            }
            --running;
        });

    std::vector<std::unique_ptr<Memory>> passing;
    std::map<Object, bool> isLive;
    std::size_t eventsAfterDestruction = 0;
    inHandler = [&](Object object) {
        ++received[object];
        const auto found = isLive.find(object);
        if (found != isLive.end() && !found->second) ++eventsAfterDestruction;
    };
    for (std::size_t round = 0; running > 0 || round < 50; ++round) {
        auto memory = std::make_unique<Memory>();
        attach(memory->object());
        construct(memory->object(), address);
        isLive[memory->object()] = true;
        passing.push_back(std::move(memory));
        KVXPlatformDrainMainQueue(0);
        if (passing.size() > 5) {
            const Object oldest = passing.front()->object();
            destruct(oldest);
            isLive[oldest] = false;
            passing.erase(passing.begin());
        }
    }
    for (std::thread& thread : threads) thread.join();
    drain();

    for (const auto& memory : steady) EXPECT_EQ(received[memory->object()], sent[memory->object()]);
    EXPECT_EQ(eventsAfterDestruction, 0u);
    for (const auto& memory : passing) destruct(memory->object());
    for (const auto& memory : steady) destruct(memory->object());
}

} // namespace
