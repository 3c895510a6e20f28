// Tests of registered components that several threads call.
#include "tests/platform/components/own_component.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using test::alive;
using test::call;

std::atomic<int> opens{0}, closes{0}, inside{0};
std::atomic<bool> mayLeave{true};

ComponentResult countingEntry(ComponentParameters* parameters, Handle)
{
    if (parameters->what == kComponentOpenSelect) ++opens;
    if (parameters->what == kComponentCloseSelect) ++closes;
    if (parameters->what == 300) {
        ++inside;
        while (!mayLeave) std::this_thread::yield();
        --inside;
    }
    return 0;
}

Component registerCounting()
{
    ComponentDescription description = {'test', 'thrd', 'mine', 0, 0};
    return RegisterComponent(&description, countingEntry, 0, nullptr, nullptr, nullptr);
}

TEST(RegisteredThreads, EachThreadMayUseItsComponent)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int round = 0; round < 300; ++round) {
                const Component component = registerCounting();
                SetComponentRefcon(component, round);
                const ComponentInstance instance = OpenComponent(component);
                EXPECT_NE(instance, nullptr);
                SetComponentInstanceStorage(instance, reinterpret_cast<Handle>(instance));
                EXPECT_EQ(call(instance, 301, {1}), 0);
                EXPECT_EQ(GetComponentRefcon(reinterpret_cast<Component>(instance)), round);
                ComponentDescription mine = {'test', 'thrd', 0, 0, 0};
                EXPECT_NE(FindNextComponent(nullptr, &mine), nullptr);
                EXPECT_EQ(UnregisterComponent(component), validInstancesExist);
                EXPECT_EQ(CloseComponent(instance), noErr);
                EXPECT_EQ(UnregisterComponent(component), noErr);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(opens, 1200);
    EXPECT_EQ(closes, 1200);
    EXPECT_EQ(alive("Component"), 0);
    EXPECT_EQ(alive("ComponentInstance"), 0);
}

TEST(RegisteredThreads, EitherTheOpenOrTheUnregisterOfAComponentSucceeds)
{
    for (int round = 0; round < 1000; ++round) {
        const Component component = registerCounting();
        std::atomic<bool> isReady{false};
        OSErr status = 1;
        std::thread thread([&] {
            isReady = true;
            status = UnregisterComponent(component);
        });
        while (!isReady) {
        }
        ComponentInstance instance = nullptr;
        const OSErr opened = OpenAComponent(component, &instance);
        thread.join();
        EXPECT_EQ(opened == noErr, status == validInstancesExist) << opened << " " << status;
        if (opened == noErr) {
            EXPECT_EQ(CloseComponent(instance), noErr);
            EXPECT_EQ(UnregisterComponent(component), noErr);
        } else {
            EXPECT_EQ(opened, invalidComponentID);
        }
    }
    EXPECT_EQ(opens, closes);
    EXPECT_EQ(alive("Component"), 0);
}

TEST(RegisteredThreads, ACallInProgressEndsAfterTheClose)
{
    const Component component = registerCounting();
    const ComponentInstance instance = OpenComponent(component);
    mayLeave = false;
    ComponentResult result = -1;
    std::thread thread([&] { result = call(instance, 300, {}); });
    while (inside == 0) std::this_thread::yield();
    EXPECT_EQ(CloseComponent(instance), noErr) << "does not wait for the call";
    EXPECT_EQ(call(instance, 301, {}), badComponentInstance);
    EXPECT_EQ(CountComponentInstances(component), 1) << "the call is still in progress";
    EXPECT_EQ(UnregisterComponent(component), validInstancesExist);
    mayLeave = true;
    thread.join();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(CountComponentInstances(component), 0);
    EXPECT_EQ(UnregisterComponent(component), noErr);
    EXPECT_EQ(alive("ComponentInstance"), 0);
}

std::atomic<int> lateCalls{0};
std::atomic<bool> isClosed{false}, isClosing{false};

/// Entry point of a component whose close call returns only after the test has made another call.
ComponentResult closingEntry(ComponentParameters* parameters, Handle)
{
    if (parameters->what == kComponentCloseSelect) {
        isClosing = true;
        while (!isClosed) std::this_thread::yield();
    }
    if (parameters->what == 300 && isClosing) ++lateCalls;
    return 0;
}

TEST(RegisteredThreads, OtherThreadsCannotCallAClosingInstance)
{
    ComponentDescription description = {'test', 'thrd', 'mine', 0, 0};
    const Component component = RegisterComponent(&description, closingEntry, 0, nullptr, nullptr, nullptr);
    const ComponentInstance instance = OpenComponent(component);
    std::thread thread([&] { EXPECT_EQ(CloseComponent(instance), noErr); });
    while (!isClosing) std::this_thread::yield();
    EXPECT_EQ(call(instance, 300, {}), badComponentInstance);
    EXPECT_EQ(CloseComponent(instance), static_cast<OSErr>(-32767)) << "closing already";
    isClosed = true;
    thread.join();
    EXPECT_EQ(lateCalls, 0);
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

} // namespace
