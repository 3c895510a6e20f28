#include "tests/support/platform_spy.h"

#include "tests/support/platform_text.h"

#include <algorithm>
#include <deque>

namespace spy {

namespace {

struct State {
    std::map<const void*, std::string> names;
    std::deque<Object> objects; // a deque, because a deque does not move its objects
    std::map<std::string, int> made;
    std::string value; // bytes of the last property that was set
    Calls faults;
};

SpinLock spinLock;
CallLog theLog;
Script theScript;
State state;

Object* found(const void* handle)
{
    const auto object = std::find_if(state.objects.begin(), state.objects.end(),
                                     [&](const Object& each) { return &each == handle; });
    return object == state.objects.end() ? nullptr : &*object;
}

} // namespace

Guard::Guard() { spinLock.lock(); }
Guard::~Guard() { spinLock.unlock(); }

Script& script() { return theScript; }
Answer& answer(const std::string& function) { return theScript.answers[function]; }

void reset()
{
    const Guard guard;
    theScript = {};
    state = {};
    theLog.forget();
}

Calls calls() { return theLog.calls(); }
void forgetCalls() { theLog.forget(); }

int count(const std::string& function) { return countOf(theLog.calls(), function); }

void name(const void* pointer, const std::string& text)
{
    const Guard guard;
    state.names[pointer] = text;
}

std::string lastValue()
{
    const Guard guard;
    return state.value;
}

Calls live()
{
    const Guard guard;
    Calls left;
    for (const Object& object : state.objects)
        if (object.isLive && object.isOwed) left.push_back(object.name);
    return left;
}

Calls faults()
{
    const Guard guard;
    return state.faults;
}

// ---- for the spies ----

Call finish(const char* function, const Line& line)
{
    Call call;
    std::size_t number;
    std::function<void(std::size_t)> inEachCall;
    {
        const Guard guard;
        number = theLog.count();
        theLog.add(line.text());
        const auto scripted = theScript.answers.find(std::string_view(function));
        if (scripted != theScript.answers.end()) call.scripted = scripted->second;
        inEachCall = theScript.inEachCall;
    }
    if (inEachCall) inEachCall(number);
    if (call.scripted.during) call.scripted.during();
    const Guard guard; // read last, because the functions of the test may change the refusals
    const auto refused = theScript.refusals.find(number);
    call.status = refused == theScript.refusals.end() ? call.scripted.status : refused->second;
    return call;
}

bool isNamed(const void* pointer) { return state.names.count(pointer) > 0; }

void fault(const std::string& text)
{
    const Guard guard;
    state.faults.push_back(text);
}

void keepValue(const void* bytes, UInt32 size)
{
    const Guard guard;
    state.value.assign(static_cast<const char*>(bytes), bytes ? size : 0);
}

std::string nextName(const std::string& kind)
{
    const Guard guard;
    return kind + std::to_string(++state.made[kind]);
}

void* make(const std::string& kind, bool isOwed)
{
    void* const made = makeNamed(nextName(kind));
    static_cast<Object*>(made)->isOwed = isOwed;
    return made;
}

void* makeNamed(const std::string& name)
{
    const Guard guard;
    state.objects.emplace_back();
    state.objects.back().name = name;
    return &state.objects.back();
}

void* makeMemory(const std::string& kind, const void* bytes, std::size_t size)
{
    Object& object = *static_cast<Object*>(make(kind));
    object.size = size;
    object.memory.reset(new char[size]);
    object.bytes = object.memory.get();
    if (bytes) std::memcpy(object.bytes, bytes, size);
    return &object;
}

Object* find(const void* handle)
{
    const Guard guard;
    return found(handle);
}

void releaseAll(const std::string& beginning)
{
    const Guard guard;
    for (Object& object : state.objects)
        if (object.name.compare(0, beginning.size(), beginning) == 0) object.isLive = false;
}

Release::~Release()
{
    if (isCancelled) return;
    const Guard guard;
    Object* const object = found(handle_);
    if (!object) {
        state.faults.push_back(std::string(function_) + " of an unknown address");
    } else if (!object->isLive) {
        state.faults.push_back(std::string(function_) + " of " + object->name + " again");
    } else {
        object->isLive = false;
        object->memory.reset();
    }
}

Line& operator<<(Line& line, const void* pointer)
{
    if (!pointer) return line << "null";
    const auto named = state.names.find(pointer);
    if (named != state.names.end()) return line << named->second;
    const Object* const object = found(pointer);
    if (!object) return line << "memory";
    if (!object->isLive) state.faults.push_back(object->name + " used after its release");
    return line << object->name;
}

} // namespace spy
