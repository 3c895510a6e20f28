// Where the render thread comes in.
//
// An audio unit keeps the address of a state for as long as it likes: a host program may start it again after
// CloseComponent, or attach a second one and never stop it. So the address is looked up before it is used:
// each living state has an entrance, and whoever comes for one that is gone finds none.
//
// An entrance is never given back, only used again; there are as many as states ever lived at one time.
#pragma once

#include <cstdint>

namespace soundstream {

struct StreamState;

struct Entrance {
    StreamState* state;          ///< null: free. Published
    std::uintptr_t renderThread; ///< who is inside; 0: nobody
    std::uint32_t visits;        ///< how many have left
    Entrance* next;              ///< fixed
};

/// An entrance for a new state; null without memory. [any]
Entrance* openEntrance(StreamState& state);

/// Nobody comes for the state any more, and nobody is inside, but perhaps this thread. [any]
void closeEntrance(Entrance& entrance);

/// Wait until nobody is inside who came before this call; at once inside. Whoever takes a pointer away from
/// the render thread calls this before freeing what it pointed to. Waits for a slice at most. [any]
void waitForRender(const Entrance& entrance);

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
