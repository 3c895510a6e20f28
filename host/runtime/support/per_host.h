// State that exists once per host. Only one host exists at a time, so functions find the state without an
// argument, also the C functions that the plug-in calls.
#pragma once

#include "host/runtime/support/errors.h"

#include <utility>

namespace host {

/// Owns the data of type State that one layer of the runtime keeps for the current host. stateOf() and
/// stateOrNull() find the data while the owner lives, but not during the destructor of State.
template <class State>
class PerHost {
public:
    template <class... Arguments>
    explicit PerHost(Arguments&&... arguments) : state_{std::forward<Arguments>(arguments)...}
    {
        currentState = &state_;
    }
    ~PerHost() { currentState = nullptr; }
    PerHost(const PerHost&) = delete;
    PerHost& operator=(const PerHost&) = delete;

    static inline State* currentState = nullptr;

private:
    State state_;
};

/// Find the current host's State; null if no host exists.
template <class State>
State* stateOrNull()
{
    return PerHost<State>::currentState;
}

/// Find the current host's State. Throws ProgramError if no host exists.
template <class State>
State& stateOf()
{
    if (State* state = stateOrNull<State>()) return *state;
    throw ProgramError("no host exists; make a host::Host first");
}

} // namespace host
