// What the spy knows: what was made, how it goes by name, what was noted. For the spy's own files.
#pragma once

#include "tests/auplayer/graph_spy.h"

#include <atomic>
#include <deque>
#include <initializer_list>

namespace graph_spy {

/// It spins, so that noting a call never touches a lock that a test watches.
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

/// Anything that the platform has made. Its address is the handle that callers get.
struct Thing {
    std::string name;
    bool isLive;
};

/// While calls may come, under a Guard.
struct State {
    std::deque<Thing> things; // addresses stay
    std::map<std::string, int> made;
    std::map<const void*, std::string> names;
    std::map<AUNode, std::string> nodes;
    std::string value; // of the last property that was set
    AURenderCallbackStruct callback = {};
    Notes notes, wrongs;
};
extern State state;

Thing* find(const void* handle);

/// A new thing: the next of its kind, or the one of that name.
void* make(const std::string& kind);
void* makeNamed(const std::string& name);

/// Things end whose names begin so: they go together with another.
void end(std::initializer_list<const char*> beginnings);

/// A call that takes `handle` back, however it ends.
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
