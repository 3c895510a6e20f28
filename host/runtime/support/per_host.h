// The state that a layer keeps for the current host. One host exists at a time, so that the C functions that
// the plug-in calls find the state without an argument.
#pragma once

#include "host/runtime/support/errors.h"

#include <utility>

namespace host {

/// Owner of one layer's state. The state is current while the owner lives; during ~State there is no current
/// state.
template <class State>
class PerHost {
public:
    template <class... Arguments>
    explicit PerHost(Arguments&&... arguments) : state_{std::forward<Arguments>(arguments)...}
    {
        current = &state_;
    }
    ~PerHost() { current = nullptr; }
    PerHost(const PerHost&) = delete;
    PerHost& operator=(const PerHost&) = delete;

    static inline State* current = nullptr;

private:
    State state_;
};

/// The layer's state for the current host; null without a host.
template <class State>
State* currentOrNull()
{
    return PerHost<State>::current;
}

/// The layer's state for the current host. Throws ProgramError without a host.
template <class State>
State& current()
{
    if (State* state = currentOrNull<State>()) return *state;
    throw ProgramError("no host exists; make a host::Host first");
}

} // namespace host
