// All of this is sequentially consistent: whoever takes a pointer away and then looks who is inside, and
// whoever goes inside and then looks for the pointer, cannot both miss the other.
#include "soundstream/entrance.h"

#include "plugin/shared_word.h"

#include <Carbon/Carbon.h>

#include <cstdlib>

#include <pthread.h>
#include <sched.h>

namespace soundstream {

namespace {

Entrance* entrances = nullptr; // published; the list only grows

std::uintptr_t thisThread() { return (std::uintptr_t)pthread_self(); }

constexpr int yieldsBeforeSleep = 100;
constexpr Duration sleepStep = -200; // microseconds: a small part of a slice

/// Whether this thread is inside any of them.
bool isInside()
{
    const std::uintptr_t self = thisThread();
    const Entrance* entrance = loadInOrder(entrances);
    while (entrance && loadInOrder(entrance->renderThread) != self) entrance = entrance->next;
    return entrance != nullptr;
}

bool enter(Entrance& entrance)
{
    return replaceInOrder(entrance.renderThread, std::uintptr_t{0}, thisThread());
}

void leave(Entrance& entrance)
{
    __atomic_add_fetch(&entrance.visits, 1, __ATOMIC_SEQ_CST);
    storeInOrder(entrance.renderThread, std::uintptr_t{0});
}

/// Do what is left to be done, unless somebody is inside: that one comes here when he leaves. What is done is
/// done inside, so that nobody else is, and nothing of it waits.
void finishPostponed(Entrance& entrance)
{
    while (loadInOrder(entrance.postponed) && enter(entrance)) {
        Postponed* each = swapInOrder<Postponed*>(entrance.postponed, nullptr);
        while (each) {
            Postponed* const next = each->next; // it goes with its record
            each->act(each->record);
            each = next;
        }
        leave(entrance);
    }
}

void postpone(Entrance& entrance, Postponed& place)
{
    do place.next = loadInOrder(entrance.postponed);
    while (!replaceInOrder(entrance.postponed, place.next, &place));
    finishPostponed(entrance);
}

void sleepOneStep()
{
    try {
        AbsoluteTime until = AddDurationToAbsolute(sleepStep, UpTime());
        MPDelayUntil(&until);
    } catch (...) { // the platform's own; then there is no sleep
    }
}

} // namespace

Entrance* openEntrance(StreamState& state)
{
    for (Entrance* free = loadInOrder(entrances); free; free = free->next)
        if (replaceInOrder<StreamState*>(free->state, nullptr, &state)) return free;
    auto* const made = static_cast<Entrance*>(std::calloc(1, sizeof(Entrance)));
    if (!made) return nullptr;
    made->state = &state;
    do made->next = loadInOrder(entrances);
    while (!replaceInOrder(entrances, made->next, made));
    return made;
}

void closeEntrance(Entrance& entrance) { storeInOrder<StreamState*>(entrance.state, nullptr); }

bool waitForRender(const Entrance& entrance)
{
    const std::uint32_t visits = loadInOrder(entrance.visits);
    for (int turn = 0;; ++turn) {
        const std::uintptr_t inside = loadInOrder(entrance.renderThread);
        if (inside == 0 || inside == thisThread() || loadInOrder(entrance.visits) != visits) return true;
        if (turn == 0 && isInside()) return false;
        if (turn < yieldsBeforeSleep)
            sched_yield();
        else
            sleepOneStep();
    }
}

void afterRender(Entrance& entrance, Postponed& place, void (*act)(void* record), void* record)
{
    if (waitForRender(entrance)) return act(record);
    place.act = act;
    place.record = record;
    postpone(entrance, place);
}

Visit::Visit(const void* state)
{
    Entrance* entrance = loadInOrder(entrances);
    while (entrance && loadInOrder(entrance->state) != state) entrance = entrance->next;
    if (!entrance || !enter(*entrance)) return;
    entrance_ = entrance;
    StreamState* const found = loadInOrder(entrance->state);
    if (found == state) state_ = found; // it has not gone on our way in
}

Visit::~Visit()
{
    if (!entrance_) return;
    leave(*entrance_);
    finishPostponed(*entrance_);
}

} // namespace soundstream
