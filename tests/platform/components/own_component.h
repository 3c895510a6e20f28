// A component of the test's own: it notes how it is called, and does what a test gave it to do.
#pragma once

#include <Carbon/Carbon.h>

#include <functional>
#include <vector>

namespace test {

/// One call of the entry point.
struct Request {
    short what;
    Handle storage;
    std::vector<long> words;

    bool operator==(const Request& other) const
    {
        return what == other.what && storage == other.storage && words == other.words;
    }
};

struct OwnComponent {
    std::vector<Request> requests;
    std::function<ComponentResult(ComponentParameters&, Handle)> answer; // none: 0
};

/// The one behind the entry point below; as new for each test that asks so.
OwnComponent& own();
void resetOwn();

ComponentResult ownEntry(ComponentParameters* parameters, Handle storage);

/// Register it under a description that nothing else has.
Component registerOwn(OSType subType = 'own1', UInt32 flags = 0);

/// Call an instance with these words, as a library's function would.
ComponentResult call(ComponentInstance instance, short what, std::vector<long> words);

/// How many objects of a kind are alive.
long alive(const char* kind);

} // namespace test
