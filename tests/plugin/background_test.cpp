// Background work, call by call. This file is linked into two programs: one in which the work runs on the
// system's dispatch queue, and one without that queue, as on an older system.
#include "plugin/background.h"

#include "plugin/process_state.h"
#include "plugin/weak_symbols.h"
#include "tests/plugin/background_spy.h"
#include "tests/support/service_caches.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using background_spy::Calls;
using background_spy::Refusal;
using background_spy::Script;
using background_spy::Seen;

bool hasQueue() { return dispatch_async != nullptr; }

const int theData = 0;

void work(const void* data) { background_spy::note(data == &theData ? "work" : "work with other data"); }

void slowWork(const void* data)
{
    background_spy::waitUntilItMayEnd();
    work(data);
}

// Number of idle calls so far, and number of the idle call, from 1, that throws.
std::size_t idles, throwingIdle;

void idle(const void* data)
{
    background_spy::note(data == &theData ? "idle" : "idle with other data");
    if (++idles == throwingIdle) throw 1;
}

Calls& operator+=(Calls& calls, const Calls& more)
{
    calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

/// Variants of a call of RunThreadedBlocks.
struct Call {
    Script script;
    bool isSlow = false, isNull = false, hasIdle = true, hasYield = true;
    std::size_t throwingIdle = 0;
};

Seen run(const Call& call)
{
    gResolver = call.hasYield ? background_spy::hostWithYield : background_spy::hostWithoutServices;
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

/// Expected calls of the calling thread if a worker was started.
Calls expectedOnCaller(const Call& call)
{
    const bool hasMutex = call.script.refusal != Refusal::calloc && call.script.refusal != Refusal::mutexInit;
    const Calls yield = call.hasYield ? Calls{"yield"} : Calls{};
    const Calls check = hasMutex ? Calls{"lock", "unlock"} : Calls{};
    const Calls idling = call.hasIdle ? Calls{"idle"} : Calls{};

    Calls calls = call.script.refusal == Refusal::calloc ? Calls{"calloc of a mutex refused"}
                  : call.script.refusal == Refusal::mutexInit
                      ? Calls{"calloc of a mutex", "mutex init refused", "free"}
                      : Calls{"calloc of a mutex", "mutex init"};
    calls += hasQueue() ? Calls{"queue 0 0", "async"}
                        : Calls{"attr init", "stack 2097152", "create", "attr destroy"};
    calls += yield;
    for (std::size_t i = 1; i <= call.script.waits; ++i) {
        calls += check;
        calls += yield;
        calls += i == call.script.throwingUpTime ? Calls{"UpTime = 7"}
                                                 : Calls{"UpTime = 7", "1 after 7", "until 1000007"};
        calls += idling;
    }
    calls += check;
    calls += yield;
    calls += idling;
    if (hasMutex) calls += {"mutex destroy", "free"};
    if (!hasQueue()) calls += {"join", "detach"};
    return calls;
}

Calls expectedOnWorker(const Call& call)
{
    const bool hasMutex = call.script.refusal != Refusal::calloc && call.script.refusal != Refusal::mutexInit;
    Calls calls = call.isNull ? Calls{} : Calls{"work"};
    if (hasMutex) calls += {"lock", "unlock"};
    return calls;
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
        {"no work function", atOnce, false, true},
        {"done in one step", oneStep, true, false},
        {"done in three steps", threeSteps, true, false},
    };
    for (const auto& fact : facts)
        for (const bool hasIdle : {true, false})
            for (const bool hasYield : {true, false})
                for (const Refusal refusal : {Refusal::none, Refusal::calloc, Refusal::mutexInit}) {
                    SCOPED_TRACE(std::string(fact.why) + (hasIdle ? "" : ", no idle function") +
                                 (hasYield ? "" : ", no yield service") +
                                 (refusal == Refusal::none ? "" : ", no mutex"));
                    Call call{fact.script, fact.isSlow, fact.isNull, hasIdle, hasYield};
                    call.script.refusal = refusal;
                    const Seen seen = run(call);
                    EXPECT_EQ(seen.here, expectedOnCaller(call));
                    EXPECT_EQ(seen.there, expectedOnWorker(call));
                }
}

TEST(Background, CallsThePlatformAndTheHostInOrder)
{
    Call call;
    call.isSlow = true;
    call.script.waits = 2;
    Calls expected = {"calloc of a mutex", "mutex init"};
    expected += hasQueue() ? Calls{"queue 0 0", "async"}
                           : Calls{"attr init", "stack 2097152", "create", "attr destroy"};
    expected += {
        "yield",                                                                            //
        "lock",  "unlock", "yield", "UpTime = 7", "1 after 7",     "until 1000007", "idle", //
        "lock",  "unlock", "yield", "UpTime = 7", "1 after 7",     "until 1000007", "idle", //
        "lock",  "unlock", "yield", "idle",       "mutex destroy", "free",
    };
    if (!hasQueue()) expected += {"join", "detach"};
    EXPECT_EQ(run(call).here, expected);
}

TEST(Background, WaitsForTheWorkerAfterAnyException)
{
    const struct {
        const char* why;
        std::size_t yield, upTime, wait, idle = 0;
    } facts[] = {
        {"the first yield", 1, 0, 0},
        {"a yield in the loop", 2, 0, 0},
        {"the next yield in the loop", 3, 0, 0},
        {"the last yield", 5, 0, 0},
        {"the clock", 0, 1, 0},
        {"the last wait", 0, 0, 3},
        {"another wait", 0, 0, 2},
        {"the first idle call", 0, 0, 0, 1},
        {"a later idle call", 0, 0, 0, 3},
        {"the last idle call", 0, 0, 0, 4},
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
        EXPECT_EQ(seen.there, expectedOnWorker(call));
        if (fact.upTime == 0) {
            EXPECT_EQ(seen.here, expectedOnCaller(call));
            continue;
        }
        // If the clock throws, the step ends without a wait, so one more step follows.
        Call longer = call;
        ++longer.script.waits;
        EXPECT_EQ(seen.here, expectedOnCaller(longer));
    }
}

TEST(Background, WorksOnTheCallingThreadWithoutAWorker)
{
    const struct {
        const char* why;
        Refusal refusal;
        bool ofQueue;
        Calls calls;
    } facts[] = {
        {"no attributes", Refusal::attrInit, false, {"attr init refused"}},
        {"no thread",
         Refusal::create,
         false,
         {"attr init", "stack 2097152", "create refused", "attr destroy"}},
        {"the queue refuses the block", Refusal::async, true, {"queue 0 0", "async refused"}},
    };
    for (const auto& fact : facts) {
        if (fact.ofQueue != hasQueue()) continue;
        for (const bool isNull : {false, true}) {
            SCOPED_TRACE(fact.why);
            Call call;
            call.script.refusal = fact.refusal;
            call.isNull = isNull;
            const Seen seen = run(call);
            Calls expected = {"calloc of a mutex", "mutex init"};
            expected += fact.calls;
            expected += {"mutex destroy", "free"};
            if (!isNull) expected += {"work"};
            EXPECT_EQ(seen.here, expected) << "no yield and no idle call";
            EXPECT_EQ(seen.there, Calls());
        }
    }
}

// ---- without the spy ----

std::atomic<int> runs{0};

void countARun(const void*) { ++runs; }

void* hostThatStartsMoreWork(const char*)
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

TEST(Background, CanBeCalledFromTheHostsYield)
{
    gResolver = hostThatStartsMoreWork;
    forgetServices();
    RunThreadedBlocks(nullptr, countARun, nullptr);
    EXPECT_GE(runs, 3) << "the first call, and one per yield";
    gResolver = nullptr;
}

TEST(Background, ReturnsAfterTheWorkHasFinished)
{
    gResolver = background_spy::hostWithoutServices;
    forgetServices();
    struct Work {
        std::thread::id thread;
        int plain = 0; // plain integer, so that the thread sanitizer reports a race
    };
    for (int i = 0; i < 100; ++i) {
        Work job;
        RunThreadedBlocks(
            &job,
            [](const void* data) {
                Work& shared = *static_cast<Work*>(const_cast<void*>(data));
                shared.thread = std::this_thread::get_id();
                ++shared.plain;
            },
            nullptr);
        EXPECT_EQ(job.plain, 1);
        EXPECT_NE(job.thread, std::this_thread::get_id());
    }
    gResolver = nullptr;
}

} // namespace
