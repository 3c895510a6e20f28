// All of this is sequentially consistent: whoever takes a pointer away and then looks who is inside, and
// whoever goes inside and then looks for the pointer, cannot both miss the other.
#include "soundstream/entrance.h"

#include <cstdlib>

#include <pthread.h>
#include <sched.h>

namespace soundstream {

namespace {

Entrance* entrances = nullptr; // published; the list only grows

std::uintptr_t thisThread() { return (std::uintptr_t)pthread_self(); }

template <class T>
T load(const T& word)
{
    return __atomic_load_n(&word, __ATOMIC_SEQ_CST);
}

/// Put `wanted` in the place of `expected`; false if something else stands there.
template <class T>
bool exchange(T& word, T expected, T wanted)
{
    return __atomic_compare_exchange_n(&word, &expected, wanted, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}

} // namespace

Entrance* openEntrance(StreamState& state)
{
    for (Entrance* free = load(entrances); free; free = free->next)
        if (exchange<StreamState*>(free->state, nullptr, &state)) return free;
    auto* const made = static_cast<Entrance*>(std::calloc(1, sizeof(Entrance)));
    if (!made) return nullptr;
    made->state = &state;
    do made->next = load(entrances);
    while (!exchange(entrances, made->next, made));
    return made;
}

void closeEntrance(Entrance& entrance)
{
    __atomic_store_n(&entrance.state, static_cast<StreamState*>(nullptr), __ATOMIC_SEQ_CST);
    waitForRender(entrance);
}

void waitForRender(const Entrance& entrance)
{
    const std::uint32_t visits = load(entrance.visits);
    while (true) {
        const std::uintptr_t inside = load(entrance.renderThread);
        if (inside == 0 || inside == thisThread() || load(entrance.visits) != visits) return;
        sched_yield();
    }
}

Visit::Visit(const void* state)
{
    Entrance* entrance = load(entrances);
    while (entrance && load(entrance->state) != state) entrance = entrance->next;
    if (!entrance || !exchange(entrance->renderThread, std::uintptr_t{0}, thisThread())) return;
    entrance_ = entrance;
    StreamState* const found = load(entrance->state);
    if (found == state) state_ = found; // it has not gone on our way in
}

Visit::~Visit()
{
    if (!entrance_) return;
    __atomic_add_fetch(&entrance_->visits, 1, __ATOMIC_SEQ_CST);
    __atomic_store_n(&entrance_->renderThread, std::uintptr_t{0}, __ATOMIC_SEQ_CST);
}

} // namespace soundstream
