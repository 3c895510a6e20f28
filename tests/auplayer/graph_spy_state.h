// The spy's state: objects, names and recorded calls. Internal to the spy.
#pragma once

#include "tests/auplayer/graph_spy.h"

#include <atomic>
#include <deque>
#include <initializer_list>

namespace graph_spy {

/// A spin lock: recording a call must not use a mutex, because tests watch mutexes.
class Guard {
public:
    Guard()
    {
        while (flag.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~Guard() { flag.clear(std::memory_order_release); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    static inline std::atomic_flag flag = ATOMIC_FLAG_INIT;
};

/// An object of the platform. Its address is the handle.
struct PlatformObject {
    std::string name;
    bool isLive;
};

/// Under a Guard while other threads may call.
struct State {
    std::deque<PlatformObject> objects; // a deque keeps addresses
    std::map<std::string, int> made;
    std::map<const void*, std::string> names;
    std::map<AUNode, std::string> nodes;
    std::string value; // of the last property that was set
    AURenderCallbackStruct callback = {};
    Notes notes, faults;
};
extern State state;

PlatformObject* find(const void* handle);

/// Make an object: the next of a kind ("file2"), or with a name.
void* make(const std::string& kind);
void* makeNamed(const std::string& name);

/// Mark the objects whose names begin so as released, together with their owner.
void release(std::initializer_list<const char*> beginnings);

/// Releases `handle` at the end of a call, even if the call throws.
class Release {
public:
    Release(const char* function, const void* handle) : function_(function), handle_(handle) {}
    ~Release();
    Release(const Release&) = delete;
    Release& operator=(const Release&) = delete;

private:
    const char* function_;
    const void* handle_;
};

} // namespace graph_spy
