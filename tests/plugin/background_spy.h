// A spy on background work: records its calls to the C library, to the platform's clock and queues and to the
// host, in order. A program with background_spy.cpp exports its symbols and needs the link options in this
// folder's CMakeLists.txt.
//
// The calls of the thread under test and those of other threads are recorded separately:
//
//     calloc of a mutex, mutex init, lock, unlock, mutex destroy, free
//     attr init, stack 2097152, create, attr destroy, join, detach
//     queue 0 0, async
//     yield, UpTime = 7, 1 after 7, until 1000007
//
// The clock does not advance, and a wait returns at once. begin and end are called on the same thread.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace background_spy {

using Notes = std::vector<std::string>;

/// A call that fails: it returns an error or null, or throws, and is recorded with " refused".
enum class Refusal { none, calloc, mutexInit, attrInit, create, async };

struct Script {
    Refusal refusal = Refusal::none;
    bool endsAtOnce = false;        ///< the worker ends before the call that starts it returns
    std::size_t waits = 0;          ///< the worker ends during this wait; the first is 1
    std::size_t throwingYield = 0;  ///< the yield that throws; the first is 1
    std::size_t throwingUpTime = 0; ///< the clock reading that throws
    std::size_t throwingWait = 0;   ///< the wait that throws
};

/// Start to record this thread.
void begin(const Script& script);
/// The recorded calls of the thread under test, and of other threads.
struct Seen {
    Notes here, there;
};
/// Stop recording.
Seen end();

/// Record a note of the test.
void note(const std::string& text);

/// For work functions: block until the work may end.
void waitUntilItMayEnd();

/// Resolvers of two hosts: one with the yield service only, one without services.
void* hostWithYield(const char* service);
void* hostWithoutServices(const char* service);

} // namespace background_spy
