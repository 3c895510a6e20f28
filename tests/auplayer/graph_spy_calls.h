// Records one platform call and returns its scripted result. Internal to the spy.
#pragma once

#include "tests/auplayer/graph_spy_state.h"
#include "tests/auplayer/graph_spy_text.h"

#include <algorithm>
#include <cstring>

namespace graph_spy {

struct Call {
    OSStatus refusal;
    Answer scripted;
};

template <class... Arguments>
Call note(const char* function, Arguments... arguments)
{
    std::size_t number;
    Call call;
    std::function<void(std::size_t)> inEachCall;
    {
        const Guard guard;
        std::string line = std::string(function) + "(";
        [[maybe_unused]] const char* between = "";
        ((line += between + text(arguments), between = ", "), ...);
        number = state.notes.size();
        state.notes.push_back(line + ")");
        call.scripted = platform().answers[function];
        inEachCall = platform().inEachCall;
    }
    if (inEachCall) inEachCall(number);
    if (call.scripted.during) call.scripted.during();
    call.refusal = call.scripted.each ? call.scripted.each() : call.scripted.status;
    const auto refused = platform().refusals.find(number);
    if (refused != platform().refusals.end()) call.refusal = refused->second;
    return call;
}

inline void writeGarbage(void* bytes, std::size_t size)
{
    if (bytes) std::memset(bytes, 0x3F, size);
}

/// Write an output value of a known type, or garbage if the call is refused.
template <class T>
OSStatus give(OSStatus refusal, T* target, const T& given)
{
    if (refusal)
        writeGarbage(target, sizeof *target);
    else if (target)
        *target = given;
    return refusal;
}

/// Write a property value to a buffer of `size` bytes. A buffer that is too small refuses the call.
template <class T>
OSStatus giveProperty(OSStatus refusal, UInt32* size, void* target, const T& given)
{
    if (!refusal && *size < sizeof given) refusal = OSStatus{paramErr};
    if (refusal) {
        writeGarbage(target, *size);
        return refusal;
    }
    std::memcpy(target, &given, sizeof given);
    *size = sizeof given;
    return noErr;
}

/// Write the scripted property value, or garbage if the call is refused.
inline OSStatus giveScripted(const Call& call, UInt32* size, void* target)
{
    if (call.refusal) {
        if (size && call.scripted.leavesGarbage) writeGarbage(target, *size);
        return call.refusal;
    }
    if (target && size)
        std::memcpy(target, call.scripted.value.data(),
                    std::min<std::size_t>(call.scripted.value.size(), *size));
    if (size && call.scripted.size) *size = *call.scripted.size;
    return noErr;
}

/// Keep the bytes that lastValue() returns.
inline void keepValue(const void* bytes, UInt32 size)
{
    const Guard guard;
    state.value.assign(static_cast<const char*>(bytes), bytes ? size : 0);
}

} // namespace graph_spy
