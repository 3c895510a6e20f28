// A test component that stores its calls and returns the result of a function that the test sets.
#pragma once

#include <Carbon/Carbon.h>

#include <functional>
#include <vector>

namespace test {

/// A stored call of the component's entry point.
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
    /// Computes the result of a call. Without this function the result is 0.
    std::function<ComponentResult(ComponentParameters&, Handle)> answer;
};

/// The test component, whose entry point is ownEntry(). resetOwn() restores the component's initial state.
OwnComponent& own();
void resetOwn();

ComponentResult ownEntry(ComponentParameters* parameters, Handle storage);

/// Register the test component under a description that no built-in component has.
Component registerOwn(OSType subType = 'own1', UInt32 flags = 0);

/// Send a component call with the selector `what` and the arguments `words` to an instance.
ComponentResult call(ComponentInstance instance, short what, std::vector<long> words);

/// Returns  all components that fit a pattern, in the order in which a search finds them.
std::vector<Component> allThatFit(ComponentDescription pattern);

/// Returns  the number of live objects of a kind.
long alive(const char* kind);

} // namespace test
