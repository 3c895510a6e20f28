// Blocking work on another thread, call by call, on both paths: this file makes two programs, one with the
// system's queue, and one that is linked so that the queue is missing, as on an older system.
#include "plugin/background.h"

#include "plugin/process_state.h"
#include "plugin/weak_symbols.h"
#include "tests/plugin/background_spy.h"
#include "tests/plugin/service_caches.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using background_spy::Notes;
using background_spy::Refusal;
using background_spy::Script;
using background_spy::Seen;

bool hasQueue() { return dispatch_async != nullptr; }

const int theData = 0;

void work(const void* data) { background_spy::note(data == &theData ? "work" : "work on something else"); }

void slowWork(const void* data)
{
    background_spy::waitUntilItMayEnd();
    work(data);
}

std::size_t idles, throwingIdle; // counted from 1; that one throws

void idle(const void* data)
{
    background_spy::note(data == &theData ? "idle" : "idle with something else");
    if (++idles == throwingIdle) throw 1;
}

Notes& operator+=(Notes& notes, const Notes& more)
{
    notes.insert(notes.end(), more.begin(), more.end());
    return notes;
}

/// How one call differs from another.
struct Call {
    Script script;
    bool isSlow = false, isNull = false, hasIdle = true, hasYield = true;
    std::size_t throwingIdle = 0;
};

Seen run(const Call& call)
{
    gResolver = call.hasYield ? background_spy::hostThatYields : background_spy::hostThatDoesNot;
    forgetServices();
    idles = 0;
    throwingIdle = call.throwingIdle;
    background_spy::begin(call.script);
    EXPECT_NO_THROW(RunThreadedBlocks(&theData,
                                      call.isNull   ? nullptr
                                      : call.isSlow ? slowWork
                                                    : work,
                                      call.hasIdle ? idle : nullptr));
    Seen seen = background_spy::end();
    gResolver = nullptr;
    return seen;
}

/// What is there to be seen on the calling thread when a worker has been had.
Notes expectedHere(const Call& call)
{
    const bool hasMutex = call.script.refusal != Refusal::calloc && call.script.refusal != Refusal::mutexInit;
    const Notes yield = call.hasYield ? Notes{"yield"} : Notes{};
    const Notes check = hasMutex ? Notes{"lock", "unlock"} : Notes{};
    const Notes idling = call.hasIdle ? Notes{"idle"} : Notes{};

    Notes notes = call.script.refusal == Refusal::calloc ? Notes{"calloc of a mutex refused"}
                  : call.script.refusal == Refusal::mutexInit
                      ? Notes{"calloc of a mutex", "mutex init refused", "free"}
                      : Notes{"calloc of a mutex", "mutex init"};
    notes += hasQueue() ? Notes{"queue 0 0", "async"}
                        : Notes{"attr init", "stack 2097152", "create", "attr destroy"};
    notes += yield;
    for (std::size_t i = 1; i <= call.script.waits; ++i) {
        notes += check;
        notes += yield;
        notes += i == call.script.throwingUpTime ? Notes{"UpTime = 7"}
                                                 : Notes{"UpTime = 7", "1 after 7", "until 1000007"};
        notes += idling;
    }
    notes += check;
    notes += yield;
    notes += idling;
    if (hasMutex) notes += {"mutex destroy", "free"};
    if (!hasQueue()) notes += {"join", "detach"};
    return notes;
}

Notes expectedThere(const Call& call)
{
    const bool hasMutex = call.script.refusal != Refusal::calloc && call.script.refusal != Refusal::mutexInit;
    Notes notes = call.isNull ? Notes{} : Notes{"work"};
    if (hasMutex) notes += {"lock", "unlock"};
    return notes;
}

TEST(Background, YieldsWaitsAndIdlesUntilTheWorkIsDone)
{
    Script atOnce, oneStep, threeSteps;
    atOnce.endsAtOnce = true;
    oneStep.waits = 1;
    threeSteps.waits = 3;
    const struct {
        const char* why;
        Script script;
        bool isSlow, isNull;
    } facts[] = {
        {"done before the first check", atOnce, false, false},
        {"nothing to do", atOnce, false, true},
        {"done in one step", oneStep, true, false},
        {"done in three steps", threeSteps, true, false},
    };
    for (const auto& fact : facts)
        for (const bool hasIdle : {true, false})
            for (const bool hasYield : {true, false})
                for (const Refusal refusal : {Refusal::none, Refusal::calloc, Refusal::mutexInit}) {
                    SCOPED_TRACE(std::string(fact.why) + (hasIdle ? "" : ", no idle function") +
                                 (hasYield ? "" : ", no service to yield with") +
                                 (refusal == Refusal::none ? "" : ", no mutex"));
                    Call call{fact.script, fact.isSlow, fact.isNull, hasIdle, hasYield};
                    call.script.refusal = refusal;
                    const Seen seen = run(call);
                    EXPECT_EQ(seen.here, expectedHere(call));
                    EXPECT_EQ(seen.there, expectedThere(call));
                }
}

TEST(Background, IsThisOnTheCallingThread)
{
    Call call;
    call.isSlow = true;
    call.script.waits = 2;
    Notes expected = {"calloc of a mutex", "mutex init"};
    expected += hasQueue() ? Notes{"queue 0 0", "async"}
                           : Notes{"attr init", "stack 2097152", "create", "attr destroy"};
    expected += {
        "yield",                                                                            //
        "lock",  "unlock", "yield", "UpTime = 7", "1 after 7",     "until 1000007", "idle", //
        "lock",  "unlock", "yield", "UpTime = 7", "1 after 7",     "until 1000007", "idle", //
        "lock",  "unlock", "yield", "idle",       "mutex destroy", "free",
    };
    if (!hasQueue()) expected += {"join", "detach"};
    EXPECT_EQ(run(call).here, expected);
}

TEST(Background, WaitsForTheWorkerWhateverIsThrown)
{
    const struct {
        const char* why;
        std::size_t yield, upTime, wait, idle = 0;
    } facts[] = {
        {"the first yield", 1, 0, 0},  {"one within the loop", 2, 0, 0},
        {"the next", 3, 0, 0},         {"the last yield", 5, 0, 0},
        {"a clock", 0, 1, 0},          {"the last wait", 0, 0, 3},
        {"any of the waits", 0, 0, 2}, {"the first idling", 0, 0, 0, 1},
        {"one of them", 0, 0, 0, 3},   {"the last idling", 0, 0, 0, 4},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        Call call;
        call.isSlow = true;
        call.script.waits = 3;
        call.script.throwingYield = fact.yield;
        call.script.throwingUpTime = fact.upTime;
        call.script.throwingWait = fact.wait;
        call.throwingIdle = fact.idle;
        const Seen seen = run(call);
        EXPECT_EQ(seen.there, expectedThere(call));
        if (fact.upTime == 0) {
            EXPECT_EQ(seen.here, expectedHere(call));
            continue;
        }
        // A step whose clock throws has no wait; there is one step more.
        Call longer = call;
        ++longer.script.waits;
        EXPECT_EQ(seen.here, expectedHere(longer));
    }
}

TEST(Background, WorksRightHereWithoutAnotherThread)
{
    const struct {
        const char* why;
        Refusal refusal;
        bool ofQueue;
        Notes asked;
    } facts[] = {
        {"no attributes", Refusal::attrInit, false, {"attr init refused"}},
        {"no thread",
         Refusal::create,
         false,
         {"attr init", "stack 2097152", "create refused", "attr destroy"}},
        {"no place in the queue", Refusal::async, true, {"queue 0 0", "async refused"}},
    };
    for (const auto& fact : facts) {
        if (fact.ofQueue != hasQueue()) continue;
        for (const bool isNull : {false, true}) {
            SCOPED_TRACE(fact.why);
            Call call;
            call.script.refusal = fact.refusal;
            call.isNull = isNull;
            const Seen seen = run(call);
            Notes expected = {"calloc of a mutex", "mutex init"};
            expected += fact.asked;
            expected += {"mutex destroy", "free"};
            if (!isNull) expected += {"work"};
            EXPECT_EQ(seen.here, expected) << "nothing yields, nothing idles";
            EXPECT_EQ(seen.there, Notes());
        }
    }
}

// ---- without a watch ----

std::atomic<int> runs{0};

void countARun(const void*) { ++runs; }

void* hostThatRunsMore(const char*)
{
    using Yield = void (*)();
    const Yield yield = [] {
        static bool isNested = false;
        if (isNested) return;
        isNested = true;
        RunThreadedBlocks(nullptr, countARun, nullptr);
        isNested = false;
    };
    return reinterpret_cast<void*>(yield);
}

TEST(Background, SharesNothingBetweenCalls)
{
    gResolver = hostThatRunsMore;
    forgetServices();
    RunThreadedBlocks(nullptr, countARun, nullptr);
    EXPECT_GE(runs, 3) << "one, and one in each of the host's yields";
    gResolver = nullptr;
}

TEST(Background, HasDoneItsWorkWhenItReturns)
{
    gResolver = background_spy::hostThatDoesNot;
    forgetServices();
    struct Work {
        std::thread::id thread;
        int plain = 0; // no lock, no atomic: the thread sanitizer looks on
    };
    for (int i = 0; i < 100; ++i) {
        Work job;
        RunThreadedBlocks(
            &job,
            [](const void* data) {
                Work& its = *static_cast<Work*>(const_cast<void*>(data));
                its.thread = std::this_thread::get_id();
                ++its.plain;
            },
            nullptr);
        EXPECT_EQ(job.plain, 1);
        EXPECT_NE(job.thread, std::this_thread::get_id());
    }
    gResolver = nullptr;
}

} // namespace
