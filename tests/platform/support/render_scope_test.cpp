// Tests a render call in progress, and threads that wait for its end.
#include "platform/support/render_scope.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using kvxplatform::RenderScope;

TEST(RenderScope, LetsInOneRenderCallAtATime)
{
    RenderScope scope;
    {
        const RenderScope::Entry first(scope);
        EXPECT_TRUE(first);
        EXPECT_FALSE(RenderScope::Entry(scope)) << "the same thread again";
        std::thread([&] { EXPECT_FALSE(RenderScope::Entry(scope)) << "another thread"; }).join();
        EXPECT_TRUE(scope.isInside()) << "a refused entry leaves the first one inside";
    }
    EXPECT_TRUE(RenderScope::Entry(scope));
}

TEST(RenderScope, KnowsTheThreadInside)
{
    RenderScope scope, other;
    EXPECT_FALSE(scope.isInside());
    EXPECT_FALSE(RenderScope::isInsideAny());
    const RenderScope::Entry call(scope);
    EXPECT_TRUE(scope.isInside());
    EXPECT_FALSE(other.isInside());
    EXPECT_TRUE(RenderScope::isInsideAny());
    std::thread([&] {
        EXPECT_FALSE(scope.isInside());
        EXPECT_FALSE(RenderScope::isInsideAny());
    }).join();
}

TEST(RenderScope, StampsARenderCall)
{
    RenderScope scope;
    const RenderScope::Stamp before = scope.now();
    EXPECT_TRUE(scope.hasLeft(before)) << "no call was in progress";
    RenderScope::Stamp during;
    {
        const RenderScope::Entry call(scope);
        during = scope.now();
        EXPECT_TRUE(scope.hasLeft(before)) << "a call that began later does not count";
        EXPECT_FALSE(scope.hasLeft(during));
    }
    EXPECT_TRUE(scope.hasLeft(during));
    const RenderScope::Entry later(scope);
    EXPECT_TRUE(scope.hasLeft(during)) << "another call is in progress";
    EXPECT_FALSE(scope.hasLeft(scope.now()));
}

TEST(RenderScope, WaitInsideTheScopeReturnsWithoutHanging)
{
    RenderScope scope;
    const RenderScope::Entry call(scope);
    scope.wait(); // the test hangs if wait() waits for this thread's own call
}

TEST(RenderScope, WaitsForTheRenderCallInProgress)
{
    RenderScope scope;
    std::atomic<bool> isInside{false}, mayLeave{false}, hasWorked{false}, hasReturned{false};
    std::thread audio([&] {
        const RenderScope::Entry call(scope);
        isInside = true;
        while (!mayLeave) std::this_thread::yield();
        hasWorked = true;
    });
    while (!isInside) std::this_thread::yield();
    std::thread control([&] {
        scope.wait();
        EXPECT_TRUE(hasWorked);
        hasReturned = true;
    });
    // During this pause a wait() that does not wait would return.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(hasReturned);
    mayLeave = true;
    control.join();
    audio.join();
}

} // namespace
