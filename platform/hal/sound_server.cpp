#include "platform/hal/sound_server.h"
#include "platform/support/border.h"

#include <atomic>
#include <chrono>
#include <future>
#include <jack/jack.h>
#include <memory>
#include <thread>

namespace kvxplatform::hal {

namespace {

constexpr std::chrono::seconds longestWait{5};

std::atomic<jack_client_t*> watcher{nullptr};
std::atomic<bool> hasEnded{false};
std::atomic<void (*)()> wakeAtEnd{nullptr};

extern "C" void noteEnd(void*)
{
    hasEnded = true;
    if (void (*const wake)() = wakeAtEnd) wake();
}

} // namespace

bool endsInTime(const std::function<void()>& work)
{
    const auto end = std::make_shared<std::promise<void>>();
    const std::future<void> ended = end->get_future();
    const bool isStarted = withinBorder(false, [&] {
        std::thread([work, end] {
            work();
            end->set_value();
        }).detach();
        return true;
    });
    if (!isStarted) {
        work();
        return true;
    }
    return ended.wait_for(longestWait) == std::future_status::ready;
}

void watchServer()
{
    jack_client_t* const client = jack_client_open("kvx-watch", JackNoStartServer, nullptr);
    if (client) jack_on_shutdown(client, noteEnd, nullptr);
    watcher = client;
}

void stopWatchingServer()
{
    if (jack_client_t* const client = watcher.exchange(nullptr)) jack_client_close(client);
}

bool isServerAlive()
{
    jack_client_t* const client = watcher;
    if (!client || hasEnded) return !hasEnded;
    char* const reply = jack_get_uuid_for_client_name(client, jack_get_client_name(client));
    if (!reply) noteEnd(nullptr);
    jack_free(reply);
    return reply != nullptr;
}

void callAtServerEnd(void (*wake)())
{
    wakeAtEnd = wake;
    if (hasEnded) wake();
}

bool hasServerEnded() { return hasEnded; }

} // namespace kvxplatform::hal
