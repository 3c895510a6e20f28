// A component of the test. It records its calls and answers with a function that the test sets.
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
    std::function<ComponentResult(ComponentParameters&, Handle)> answer; ///< without one the answer is 0
};

/// The component of ownEntry. resetOwn() restores its initial state.
OwnComponent& own();
void resetOwn();

ComponentResult ownEntry(ComponentParameters* parameters, Handle storage);

/// Register the component under a description that no other component has.
Component registerOwn(OSType subType = 'own1', UInt32 flags = 0);

/// Call a selector of an instance with these arguments.
ComponentResult call(ComponentInstance instance, short what, std::vector<long> words);

/// Returns all components that fit a pattern, in the order of a search.
std::vector<Component> allThatFit(ComponentDescription pattern);

/// The live-object count of a kind.
long alive(const char* kind);

} // namespace test
