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
Notes faults() { return state.faults; }

Notes live()
{
    Notes left;
    for (const PlatformObject& object : state.objects)
        if (object.isLive) left.push_back(object.name);
    return left;
}

// ---- platform objects ----

PlatformObject* find(const void* handle)
{
    const auto found = std::find_if(state.objects.begin(), state.objects.end(),
                                    [&](const PlatformObject& object) { return &object == handle; });
    return found == state.objects.end() ? nullptr : &*found;
}

void* make(const std::string& kind)
{
    const Guard guard;
    state.objects.push_back({kind + std::to_string(++state.made[kind]), true});
    return &state.objects.back();
}

void* makeNamed(const std::string& objectName)
{
    const Guard guard;
    state.objects.push_back({objectName, true});
    return &state.objects.back();
}

void release(std::initializer_list<const char*> beginnings)
{
    const Guard guard;
    for (PlatformObject& object : state.objects)
        for (const std::string beginning : beginnings)
            if (object.name.compare(0, beginning.size(), beginning) == 0) object.isLive = false;
}

Release::~Release()
{
    const Guard guard;
    PlatformObject* const object = find(handle_);
    if (!object)
        state.faults.push_back(std::string(function_) + " of a foreign address");
    else if (!object->isLive)
        state.faults.push_back(std::string(function_) + " of " + object->name + " again");
    else
        object->isLive = false;
}

} // namespace graph_spy
