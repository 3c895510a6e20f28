// Where the render thread comes in.
//
// An audio unit keeps the address of a state for as long as it likes: a host program may start it again after
// CloseComponent, or attach a second one and never stop it. So the address is looked up before it is used:
// each living state has an entrance, and whoever comes for one that is gone finds none.
//
// Whoever takes something away waits for the slice that may be using it. A thread that is itself inside an
// entrance does not wait for another one: a completion routine on each of two render threads that closes what
// the other plays would wait for ever. What it would do then, is done by whoever leaves.
//
// An entrance is never given back, only used again; there are as many as states ever lived at one time.
#pragma once

#include <cstdint>

namespace soundstream {

struct StreamState;

/// What is left to be done once nobody is inside. Part of the record that it ends: nothing is allocated.
struct Postponed {
    void (*act)(void* record);
    void* record;
    Postponed* next;
};

struct Entrance {
    StreamState* state;          ///< null: free. Published
    std::uintptr_t renderThread; ///< who is inside; 0: nobody
    std::uint32_t visits;        ///< how many have left
    Postponed* postponed;        ///< for whoever leaves. Published
    Entrance* next;              ///< fixed
};

/// An entrance for a new state; null without memory. [any]
Entrance* openEntrance(StreamState& state);

/// Nobody comes for the state any more, who is not inside already. [any]
void closeEntrance(Entrance& entrance);

/// Wait until nobody is inside who came before this call; at once inside. Waits for a slice at most. [any]
/// Returns false, at once, when this thread is inside another entrance and somebody is inside this one.
[[nodiscard]] bool waitForRender(const Entrance& entrance);

/// End a record that the render thread finds no more, once nobody is inside who came before: waits as
/// waitForRender does; where that one does not wait, whoever leaves calls `act`. It must not throw. [any]
void afterRender(Entrance& entrance, Postponed& place, void (*act)(void* record), void* record);

/// The render thread inside a state, for as long as this lives. Takes no lock. [audio]
class Visit {
public:
    /// `state` may be gone.
    explicit Visit(const void* state);
    ~Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    /// Null for a state that is gone, and while another thread is inside.
    StreamState* state() const { return state_; }

private:
    Entrance* entrance_ = nullptr;
    StreamState* state_ = nullptr;
};

} // namespace soundstream
