// Tests of components that programs register.
#include "tests/platform/components/own_component.h"

#include <AudioUnit/AudioUnit.h>

#include <gtest/gtest.h>

namespace {

using namespace test;

constexpr OSErr badInstance16 = -32767;

class RegisteredComponent : public testing::Test {
protected:
    void SetUp() override { resetOwn(); }
    void TearDown() override
    {
        resetOwn();
        EXPECT_EQ(alive("Component"), 0);
        EXPECT_EQ(alive("ComponentInstance"), 0);
    }
};

TEST_F(RegisteredComponent, IsFoundAfterTheBuiltInOnesInTheOrderOfRegistration)
{
    ComponentDescription any = {}, mine = {'test', 0, 0, 0, 0};
    const std::size_t builtIn = allThatFit(any).size();
    const Component first = registerOwn('own1'), second = registerOwn('own2'), third = registerOwn('own1');
    ASSERT_TRUE(first && second && third);
    const std::vector<Component> all = allThatFit(any), registered = {first, second, third};
    ASSERT_EQ(all.size(), builtIn + 3);
    EXPECT_EQ(std::vector<Component>(all.end() - 3, all.end()), registered);
    EXPECT_EQ(allThatFit(mine), registered);

    EXPECT_EQ(FindNextComponent(nullptr, &mine), first);
    EXPECT_EQ(FindNextComponent(first, &mine), second);
    EXPECT_EQ(FindNextComponent(third, &mine), nullptr);
    ComponentDescription ones = {'test', 'own1', 0, 0, 0};
    EXPECT_EQ(FindNextComponent(first, &ones), third);
    EXPECT_EQ(FindNextComponent(second, &ones), third) << "after a component that does not fit";
    ComponentDescription outputs = {'auou', 0, 0, 0, 0};
    EXPECT_EQ(FindNextComponent(first, &outputs), nullptr) << "the built-in ones come first";

    EXPECT_EQ(UnregisterComponent(second), noErr);
    EXPECT_EQ(FindNextComponent(first, &mine), third);
    EXPECT_EQ(FindNextComponent(second, &mine), nullptr) << "unregistered";
    EXPECT_EQ(UnregisterComponent(first), noErr);
    EXPECT_EQ(UnregisterComponent(third), noErr);
    EXPECT_EQ(FindNextComponent(nullptr, &mine), nullptr);
    EXPECT_EQ(allThatFit(any).size(), builtIn);
}

TEST_F(RegisteredComponent, IsFoundByEveryFittingDescription)
{
    const Component component = registerOwn('own1', 0x0C0C);
    // clang-format off
    const struct { ComponentDescription pattern; bool isFound; const char* why; } facts[] = {
        {{'test', 'own1', 'mine', 0, 0},                true,  "its own description"},
        {{'test', 0, 0, 0, 0},                          true,  "zero is any"},
        {{0, 'own1', 0, 0, 0},                          true,  "zero is any"},
        {{0, 0, 'mine', 0, 0},                          true,  "zero is any"},
        {{'test', 'own1', 'mine', 0xFFFFFFFF, 0},       true,  "flags without a mask"},
        {{'test', 0, 0, 0x0C0C, 0xFFFFFFFF},            true,  "all its flags"},
        {{'test', 0, 0, 0x0800, 0x0F00},                false, "half of the flags under the mask"},
        {{'test', 0, 0, 0x0C00, 0x0F00},                true,  "the flags under the mask"},
        {{'test', 0, 0, 0, 0xF3F3},                     true,  "flags it does not have"},
        {{'test', 0, 0, 0, 0x0400},                     false, "a flag that it has"},
        {{'test', 'own2', 0, 0, 0},                     false, "another subtype"},
        {{'Test', 0, 0, 0, 0},                          false, "another type"},
        {{'test', 0, 'Mine', 0, 0},                     false, "another manufacturer"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        ComponentDescription pattern = fact.pattern;
        EXPECT_EQ(FindNextComponent(nullptr, &pattern) == component, fact.isFound) << fact.why;
    }
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, NeedsADescription)
{
    EXPECT_EQ(RegisterComponent(nullptr, ownEntry, 0, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(FindNextComponent(nullptr, nullptr), nullptr);
}

TEST_F(RegisteredComponent, DoesNotOwnItsName)
{
    const Handle name = reinterpret_cast<Handle>(NewString(reinterpret_cast<ConstStr255Param>("\4name")));
    ComponentDescription description = {'test', 'own1', 'mine', 0, 0};
    const Component component = RegisterComponent(&description, ownEntry, 0, name, nullptr, nullptr);
    EXPECT_EQ(GetHandleSize(name), 5);
    DisposeHandle(name);
    EXPECT_EQ(MemError(), noErr);
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, CannotBeOpenedWithoutAnEntryPoint)
{
    ComponentDescription description = {'test', 'none', 'mine', 0, 0};
    const Component component = RegisterComponent(&description, nullptr, 0, nullptr, nullptr, nullptr);
    ASSERT_NE(component, nullptr);
    EXPECT_EQ(FindNextComponent(nullptr, &description), component);
    ComponentInstance instance = reinterpret_cast<ComponentInstance>(1);
    EXPECT_EQ(OpenAComponent(component, &instance), unresolvedComponentDLLErr);
    EXPECT_EQ(instance, nullptr);
    EXPECT_EQ(OpenComponent(component), nullptr);
    EXPECT_EQ(CountComponentInstances(component), 0);
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, ReceivesOpenAndCloseWithTheInstance)
{
    const Component component = registerOwn();
    ComponentInstance instance = nullptr;
    ASSERT_EQ(OpenAComponent(component, &instance), noErr);
    const long self = reinterpret_cast<long>(instance);
    int memory = 0;
    const auto storage = reinterpret_cast<Handle>(&memory);
    SetComponentInstanceStorage(instance, storage);
    EXPECT_EQ(GetComponentInstanceStorage(instance), storage);
    EXPECT_EQ(call(instance, 300, {1, -2, 3}), 0);
    EXPECT_EQ(call(instance, -4, {}), 0);
    EXPECT_EQ(CloseComponent(instance), noErr);
    EXPECT_EQ(
        own().requests,
        (std::vector<Request>{
            {-1, nullptr, {self}}, {300, storage, {1, -2, 3}}, {-4, storage, {}}, {-2, storage, {self}}}));
    EXPECT_EQ(CloseComponent(instance), badInstance16);
    EXPECT_EQ(call(instance, 300, {}), badComponentInstance);
    EXPECT_EQ(GetComponentInstanceStorage(instance), nullptr);
    SetComponentInstanceStorage(instance, storage);
    EXPECT_EQ(own().requests.size(), 4u);
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, CannotBeUnregisteredWhileInstancesAreOpen)
{
    const Component component = registerOwn(), other = registerOwn();
    ComponentInstance instances[3] = {};
    for (long open = 0; open < 3; ++open) {
        EXPECT_EQ(CountComponentInstances(component), open);
        instances[open] = OpenComponent(component);
        ASSERT_NE(instances[open], nullptr);
    }
    EXPECT_EQ(CountComponentInstances(other), 0);
    for (long open = 3; open > 0; --open) {
        EXPECT_EQ(CountComponentInstances(component), open);
        EXPECT_EQ(UnregisterComponent(component), validInstancesExist);
        ComponentDescription pattern = {'test', 0, 0, 0, 0};
        EXPECT_EQ(FindNextComponent(nullptr, &pattern), component) << "still registered";
        EXPECT_EQ(CloseComponent(instances[open - 1]), noErr);
    }
    EXPECT_EQ(CountComponentInstances(component), 0);
    EXPECT_EQ(UnregisterComponent(component), noErr);
    EXPECT_EQ(CountComponentInstances(component), 0);
    EXPECT_EQ(UnregisterComponent(component), invalidComponentID) << "twice";
    EXPECT_EQ(OpenComponent(component), nullptr);
    EXPECT_EQ(UnregisterComponent(other), noErr);
}

TEST_F(RegisteredComponent, IsNotFoundByAnInvalidHandle)
{
    ComponentDescription output = {'auou', 'genr', 0, 0, 0};
    const Component builtIn = FindNextComponent(nullptr, &output);
    const Component component = registerOwn();
    const ComponentInstance instance = OpenComponent(component);
    const auto value = reinterpret_cast<std::uintptr_t>(component);
    for (Component handle :
         {static_cast<Component>(nullptr), builtIn, reinterpret_cast<Component>(instance),
          reinterpret_cast<Component>(value + 4), reinterpret_cast<Component>(value ^ 1),
          reinterpret_cast<Component>(&output), reinterpret_cast<Component>(~std::uintptr_t{0})}) {
        EXPECT_EQ(UnregisterComponent(handle), invalidComponentID);
        EXPECT_EQ(CountComponentInstances(handle), 0);
    }
    EXPECT_EQ(CloseComponent(instance), noErr);
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, ABuiltInOneCountsItsInstancesToo)
{
    ComponentDescription output = {'auou', 'genr', 0, 0, 0};
    const Component builtIn = FindNextComponent(nullptr, &output);
    const ComponentInstance one = OpenComponent(builtIn), two = OpenComponent(builtIn);
    EXPECT_EQ(CountComponentInstances(builtIn), 2);
    EXPECT_EQ(CloseComponent(one), noErr);
    EXPECT_EQ(CountComponentInstances(builtIn), 1);
    EXPECT_EQ(CloseComponent(two), noErr);
    EXPECT_EQ(CountComponentInstances(builtIn), 0);
}

TEST_F(RegisteredComponent, HasOneRefconForAllItsInstances)
{
    const Component component = registerOwn(), other = registerOwn();
    EXPECT_EQ(GetComponentRefcon(component), 0);
    SetComponentRefcon(component, 0x12345678);
    own().answer = [](ComponentParameters& parameters, Handle) -> ComponentResult {
        const auto self = reinterpret_cast<Component>(parameters.params[0]);
        if (parameters.what == kComponentOpenSelect)
            EXPECT_EQ(GetComponentRefcon(self), 0x12345678) << "while it opens";
        if (parameters.what == kComponentCloseSelect)
            EXPECT_EQ(GetComponentRefcon(self), -9) << "while it closes";
        return 0;
    };
    const ComponentInstance instance = OpenComponent(component);
    const auto asComponent = reinterpret_cast<Component>(instance);
    EXPECT_EQ(GetComponentRefcon(asComponent), 0x12345678);
    SetComponentRefcon(asComponent, -9);
    EXPECT_EQ(GetComponentRefcon(component), -9);
    EXPECT_EQ(GetComponentRefcon(other), 0);
    EXPECT_EQ(CloseComponent(instance), noErr);
    EXPECT_EQ(GetComponentRefcon(asComponent), 0) << "closed";
    SetComponentRefcon(asComponent, 5);
    EXPECT_EQ(GetComponentRefcon(component), -9);
    EXPECT_EQ(UnregisterComponent(component), noErr);
    EXPECT_EQ(GetComponentRefcon(component), 0);
    EXPECT_EQ(UnregisterComponent(other), noErr);

    const ComponentInstance unit = OpenDefaultComponent('auou', 'genr');
    SetComponentRefcon(reinterpret_cast<Component>(unit), 7);
    SetComponentInstanceStorage(unit, reinterpret_cast<Handle>(&resetOwn));
    EXPECT_EQ(GetComponentRefcon(reinterpret_cast<Component>(unit)), 0)
        << "an audio unit has neither refcon nor storage";
    EXPECT_EQ(GetComponentInstanceStorage(unit), nullptr);
    EXPECT_EQ(CloseComponent(unit), noErr);
}

TEST_F(RegisteredComponent, MayRefuseToOpen)
{
    const Component component = registerOwn();
    const struct {
        ComponentResult refusal;
        OSErr status;
        const char* why;
    } facts[] = {{-108, -108, "unchanged"},
                 {1, 1, "a positive status"},
                 {badComponentSelector, -32766, "cut to 16 bits"},
                 {0x12345, 0x2345, "cut to 16 bits"},
                 {0x10000, paramErr, "a lower half of 0 is still a refusal"}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        own().requests.clear();
        int memory = 0;
        const auto storage = reinterpret_cast<Handle>(&memory);
        own().answer = [&](ComponentParameters& parameters, Handle) -> ComponentResult {
            if (parameters.what != kComponentOpenSelect) return 0;
            SetComponentInstanceStorage(reinterpret_cast<ComponentInstance>(parameters.params[0]), storage);
            return fact.refusal;
        };
        ComponentInstance instance = reinterpret_cast<ComponentInstance>(1);
        EXPECT_EQ(OpenAComponent(component, &instance), fact.status);
        EXPECT_EQ(instance, nullptr);
        ASSERT_EQ(own().requests.size(), 2u) << "closed after the refused open";
        EXPECT_EQ(own().requests[1].what, kComponentCloseSelect);
        EXPECT_EQ(own().requests[1].storage, storage);
        EXPECT_EQ(CountComponentInstances(component), 0);
        EXPECT_EQ(alive("ComponentInstance"), 0);
        const auto refused = reinterpret_cast<ComponentInstance>(own().requests[0].words.at(0));
        EXPECT_EQ(CloseComponent(refused), badInstance16) << "an invalid handle";
        EXPECT_EQ(OpenComponent(component), nullptr);
    }
    EXPECT_EQ(OpenAComponent(component, nullptr), paramErr);
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, MayCloseItselfInsideACall)
{
    const Component component = registerOwn();
    ComponentInstance instance = OpenComponent(component);
    own().answer = [&](ComponentParameters& parameters, Handle) -> ComponentResult {
        if (parameters.what != 300) return 0;
        EXPECT_EQ(CloseComponent(instance), noErr);
        EXPECT_EQ(CloseComponent(instance), badInstance16);
        EXPECT_EQ(call(instance, 301, {}), badComponentInstance);
        EXPECT_EQ(UnregisterComponent(component), validInstancesExist) << "a call is still in progress";
        return 42;
    };
    EXPECT_EQ(call(instance, 300, {}), 42);
    EXPECT_EQ(own().requests.size(), 3u);
    EXPECT_EQ(CountComponentInstances(component), 0);
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, MayCloseItselfWhileItOpensOrCloses)
{
    const Component component = registerOwn();
    for (ComponentResult answer : {0, -108}) {
        for (short when : {kComponentOpenSelect, kComponentCloseSelect}) {
            own().requests.clear();
            own().answer = [&](ComponentParameters& parameters, Handle) -> ComponentResult {
                if (parameters.what != when) return 0;
                CloseComponent(reinterpret_cast<ComponentInstance>(parameters.params[0]));
                return answer;
            };
            ComponentInstance instance = nullptr;
            const OSErr status = OpenAComponent(component, &instance);
            if (when == kComponentOpenSelect)
                EXPECT_EQ(status, answer ? -108 : badInstance16);
            else
                EXPECT_EQ(CloseComponent(instance), noErr) << "a refused close has no effect";
            EXPECT_EQ(own().requests.size(), 2u) << "opened and closed, once each";
        }
    }
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, MayCallItselfWhileItCloses)
{
    const Component component = registerOwn();
    ComponentInstance instance = OpenComponent(component);
    own().answer = [&](ComponentParameters& parameters, Handle) -> ComponentResult {
        if (parameters.what == 300) return 7;
        if (parameters.what == kComponentCloseSelect) EXPECT_EQ(call(instance, 300, {}), 7);
        return 0;
    };
    EXPECT_EQ(CloseComponent(instance), noErr);
    EXPECT_EQ(own().requests.size(), 3u);
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, MayThrowWhileItOpens)
{
    const Component component = registerOwn();
    own().answer = [](ComponentParameters&, Handle) -> ComponentResult { throw 1; };
    ComponentInstance instance = nullptr;
    EXPECT_EQ(OpenAComponent(component, &instance), memFullErr);
    EXPECT_EQ(instance, nullptr);
    EXPECT_EQ(CountComponentInstances(component), 0);
    EXPECT_EQ(UnregisterComponent(component), noErr);
}

TEST_F(RegisteredComponent, MayBeRegistered20000TimesAnd4096TimesAtOnce)
{
    for (int i = 0; i < 20000; ++i) {
        const Component component = registerOwn();
        ASSERT_NE(component, nullptr) << i;
        ASSERT_EQ(UnregisterComponent(component), noErr);
    }
    std::vector<Component> all;
    while (const Component component = registerOwn()) all.push_back(component);
    EXPECT_EQ(all.size(), 4096u) << "at a time";
    for (Component component : all) EXPECT_EQ(UnregisterComponent(component), noErr);
}

} // namespace
