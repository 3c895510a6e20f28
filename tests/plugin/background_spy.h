// A spy on background work: records, in order, the work's calls of the C library, of the platform's clock and
// queues, and of the host. A program with background_spy.cpp exports its symbols and needs the link options
// in this folder's CMakeLists.txt.
//
// The calls of the thread under test and those of other threads are recorded separately, as these texts:
//
//     calloc of a mutex, mutex init, lock, unlock, mutex destroy, free
//     attr init, stack 2097152, create, attr destroy, join, detach
//     queue 0 0, async
//     yield, UpTime = 7, 1 after 7, until 1000007
//
// The clock does not advance, and MPDelayUntil returns at once. begin and end are called on the same thread.
#pragma once

#include "tests/support/call_log.h"

#include <cstddef>
#include <string>

namespace background_spy {

using spy::Calls;

/// Call that the spy makes fail. The call returns an error or null, or throws; its recorded text ends in
/// "refused".
enum class Refusal { none, calloc, mutexInit, attrInit, create, async };

struct Script {
    Refusal refusal = Refusal::none;
    bool endsAtOnce = false;        ///< whether the worker ends before the call that starts it returns
    std::size_t waits = 0;          ///< number of the wait, from 1, during which the worker ends
    std::size_t throwingYield = 0;  ///< number of the yield, from 1, that throws
    std::size_t throwingUpTime = 0; ///< number of the clock reading, from 1, that throws
    std::size_t throwingWait = 0;   ///< number of the wait, from 1, that throws
};

/// Start to record the calls of the current thread and of the threads that it starts.
void begin(const Script& script);
/// Recorded calls of the thread under test (`here`) and of other threads (`there`).
struct Seen {
    Calls here, there;
};
/// Stop recording.
Seen end();

/// Record a text of the test among the calls.
void note(const std::string& text);

/// Block until the script lets the worker end; called by work functions.
void waitUntilItMayEnd();

/// Look-up functions of two hosts: one host has the yield service only, the other has no services.
void* hostWithYield(const char* service);
void* hostWithoutServices(const char* service);

} // namespace background_spy
