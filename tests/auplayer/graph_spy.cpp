#include "tests/auplayer/graph_spy_state.h"

#include <algorithm>

namespace graph_spy {

State state;

namespace {
Platform thePlatform;
} // namespace

Platform& platform() { return thePlatform; }
Answer& answer(const std::string& function) { return thePlatform.answers[function]; }

void reset()
{
    thePlatform = {};
    state = {};
}

Notes calls()
{
    const Guard guard;
    return state.notes;
}

void forgetCalls()
{
    const Guard guard;
    state.notes.clear();
}

void name(const void* pointer, const std::string& text) { state.names[pointer] = text; }
std::string lastValue() { return state.value; }
AURenderCallbackStruct callback() { return state.callback; }
Notes faults() { return state.wrongs; }

Notes live()
{
    Notes left;
    for (const Thing& thing : state.things)
        if (thing.isLive) left.push_back(thing.name);
    return left;
}

// ---- what was made ----

Thing* find(const void* handle)
{
    const auto found = std::find_if(state.things.begin(), state.things.end(),
                                    [&](const Thing& thing) { return &thing == handle; });
    return found == state.things.end() ? nullptr : &*found;
}

void* make(const std::string& kind)
{
    const Guard guard;
    state.things.push_back({kind + std::to_string(++state.made[kind]), true});
    return &state.things.back();
}

void* makeNamed(const std::string& itsName)
{
    const Guard guard;
    state.things.push_back({itsName, true});
    return &state.things.back();
}

void end(std::initializer_list<const char*> beginnings)
{
    const Guard guard;
    for (Thing& thing : state.things)
        for (const std::string beginning : beginnings)
            if (thing.name.compare(0, beginning.size(), beginning) == 0) thing.isLive = false;
}

Release::~Release()
{
    const Guard guard;
    Thing* const thing = find(handle_);
    if (!thing)
        state.wrongs.push_back(std::string(function_) + " of a foreign address");
    else if (!thing->isLive)
        state.wrongs.push_back(std::string(function_) + " of " + thing->name + " again");
    else
        thing->isLive = false;
}

} // namespace graph_spy
