// The spy's state: objects, names and recorded calls. Internal to the spy.
#pragma once

#include "tests/auplayer/graph_spy.h"

#include <atomic>
#include <deque>
#include <initializer_list>

namespace graph_spy {

/// Holds a spin lock on the spy's state. Recording a call must not lock a mutex, because tests watch mutex
/// calls.
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

/// An object of the platform. The address of this record is the handle of the object.
struct PlatformObject {
    std::string name;
    bool isLive;
};

/// The spy's state. Access needs a Guard while other threads may call the platform.
struct State {
    // Platform objects, in a deque because their addresses must not change.
    std::deque<PlatformObject> objects;
    std::map<std::string, int> made;
    std::map<const void*, std::string> names;
    std::map<AUNode, std::string> nodes;
    std::string value; // bytes of the last property that was set
    AURenderCallbackStruct callback = {};
    Notes notes, faults;
};
extern State state;

PlatformObject* find(const void* handle);

/// Make a platform object: the next of a kind (such as "file2"), or an object with the given name.
void* make(const std::string& kind);
void* makeNamed(const std::string& name);

/// Mark all platform objects as released whose names begin with one of `beginnings`, because their owner is
/// released.
void release(std::initializer_list<const char*> beginnings);

/// Releases the platform object `handle` at the end of a platform call, even if the call throws.
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
