// Watches work in the background: what the runner asks of the C library, of the platform's clock and queues
// and of the host, in order. A program that links background_spy.cpp exports its symbols and is linked with
// the options in CMakeLists.txt beside it.
//
// Calls of the thread that watches and those of any other are noted apart:
//
//     calloc of a mutex, mutex init, lock, unlock, mutex destroy, free
//     attr init, stack 2097152, create, attr destroy, join, detach
//     queue 0 0, async
//     yield, UpTime = 7, 1 after 7, until 1000007
//
// The clock stands still: a wait costs nothing. Threads: begin, end and the script are for one thread.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace background_spy {

using Notes = std::vector<std::string>;

/// A call that is refused: it is noted with " refused", and answers an error or null, or throws.
enum class Refusal { none, calloc, mutexInit, attrInit, create, async };

struct Script {
    Refusal refusal = Refusal::none;
    bool endsAtOnce = false; ///< the worker has ended before the call that starts it returns
    std::size_t waits = 0;   ///< at this one, counted from 1, the work may end, and the worker has ended
    std::size_t throwingYield = 0;  ///< counted from 1; this one throws
    std::size_t throwingUpTime = 0; ///< likewise
    std::size_t throwingWait = 0;   ///< likewise
};

/// Begin to watch this thread.
void begin(const Script& script);
/// End it; what was noted.
struct Seen {
    Notes here, there;
};
Seen end();

/// Note something of the test's own.
void note(const std::string& text);

/// For the work: block until it may end.
void waitUntilItMayEnd();

/// A host whose one service is the yield; or, without it, none.
void* hostThatYields(const char* service);
void* hostThatDoesNot(const char* service);

} // namespace background_spy
