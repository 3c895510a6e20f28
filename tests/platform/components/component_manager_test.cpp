// Tests of finding, opening and closing components.
#include "tests/platform/components/own_component.h"

#include <AudioUnit/AudioUnit.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

using namespace test;

constexpr OSErr badInstance16 = -32767;

std::string text(OSType code)
{
    std::string four;
    for (int shift = 24; shift >= 0; shift -= 8) four += static_cast<char>(code >> shift);
    return four;
}

// Some built-in components, in the order in which a search finds them.
const struct {
    OSType type, subType;
} builtIn[] = {
    {'auou', 'ahal'},
    {'auou', 'def '},
    {'auou', 'sys '},
    {'auou', 'genr'},
};

TEST(ComponentManager, FindsABuiltInComponentByEveryFittingDescription)
{
    for (const auto& row : builtIn) {
        SCOPED_TRACE(text(row.type) + " " + text(row.subType));
        const ComponentDescription exact = {row.type, row.subType, 'appl', 0, 0};
        // clang-format off
        const struct { ComponentDescription pattern; bool isFound; const char* why; } facts[] = {
            {exact,                                                  true,  "its own description"},
            {{row.type, row.subType, 0, 0, 0},                       true,  "any manufacturer"},
            {{0, row.subType, 'appl', 0, 0},                         true,  "any type"},
            {{row.type, 0, 0, 0, 0},                                 true,  "any subtype"},
            {{0, 0, 0, 0, 0},                                        true,  "anything"},
            {{row.type, row.subType, 'appl', 0xFFFFFFFF, 0},         true,  "flags without a mask are not compared"},
            {{row.type, row.subType, 'appl', 0, 0xFFFFFFFF},         true,  "no flag is set"},
            {{row.type, row.subType, 'appl', 1, 1},                  false, "a flag that it does not have"},
            {{row.type, row.subType, 'appL', 0, 0},                  false, "another manufacturer"},
            {{row.type, row.subType + 1, 'appl', 0, 0},              false, "another subtype"},
            {{row.type + 1, row.subType, 'appl', 0, 0},              false, "another type"},
        };
        // clang-format on
        for (const auto& fact : facts) {
            ComponentDescription pattern = fact.pattern;
            EXPECT_EQ(FindNextComponent(nullptr, &pattern) != nullptr, fact.isFound) << fact.why;
        }
        EXPECT_EQ(allThatFit(exact).size(), 1u);
    }
}

TEST(ComponentManager, ASearchFindsEachFittingComponentOnceInOrder)
{
    std::vector<Component> expected;
    for (const auto& row : builtIn) {
        ComponentDescription exact = {row.type, row.subType, 'appl', 0, 0};
        expected.push_back(FindNextComponent(nullptr, &exact));
    }
    EXPECT_EQ(allThatFit({'auou', 0, 0, 0, 0}), expected);

    const std::vector<Component> all = allThatFit({});
    EXPECT_EQ(std::set<Component>(all.begin(), all.end()).size(), all.size()) << "found twice";
    EXPECT_GE(all.size(), std::size(builtIn));
}

TEST(ComponentManager, OpensTheFirstFittingComponent)
{
    // clang-format off
    const struct { OSType type, subType; bool isOpened; const char* why; } facts[] = {
        {'auou', 'def ', true,  "the default output"},
        {'auou', 'ahal', true,  "the HAL output"},
        {'auou', 'sys ', true,  "the system output"},
        {'auou', 'genr', true,  "the generic output"},
        {'auou', 0,      true,  "subtype 0 is any"},
        {0,      'def ', true,  "type 0 is any"},
        {'auou', 'xxxx', false, "no such subtype"},
        {'xxxx', 0,      false, "no such type"},
        {'xxxx', 'def ', false, "no such pair"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const ComponentInstance instance = OpenDefaultComponent(fact.type, fact.subType);
        EXPECT_EQ(instance != nullptr, fact.isOpened);
        ComponentInstance other = reinterpret_cast<ComponentInstance>(1);
        EXPECT_EQ(OpenADefaultComponent(fact.type, fact.subType, &other),
                  fact.isOpened ? noErr : static_cast<OSErr>(invalidComponentID));
        EXPECT_EQ(other != nullptr, fact.isOpened) << "null after a failure";
        if (!fact.isOpened) continue;
        EXPECT_NE(instance, other);
        EXPECT_EQ(CloseComponent(instance), noErr);
        EXPECT_EQ(CloseComponent(other), noErr);
    }
    EXPECT_EQ(alive("ComponentInstance"), 0);
}

TEST(ComponentManager, OpensSeveralInstancesOfAComponent)
{
    ComponentDescription pattern = {'auou', 'genr', 'appl', 0, 0};
    const Component component = FindNextComponent(nullptr, &pattern);
    ComponentInstance instances[4] = {};
    for (int i = 0; i < 4; i += 2) {
        EXPECT_EQ(OpenAComponent(component, &instances[i]), noErr);
        instances[i + 1] = OpenComponent(component);
    }
    EXPECT_EQ(std::set<ComponentInstance>(instances, instances + 4).size(), 4u);
    EXPECT_EQ(alive("ComponentInstance"), 4);
    for (ComponentInstance instance : instances) EXPECT_EQ(AudioUnitReset(instance, 0, 0), noErr);
    for (ComponentInstance instance : instances) EXPECT_EQ(CloseComponent(instance), noErr);
    EXPECT_EQ(alive("ComponentInstance"), 0);
}

TEST(ComponentManager, RefusesAnInvalidComponent)
{
    ComponentInstance instance = reinterpret_cast<ComponentInstance>(1);
    for (std::uintptr_t made :
         {std::uintptr_t{0}, std::uintptr_t{1}, std::uintptr_t{0xC00001}, std::uintptr_t{0xC00003},
          std::uintptr_t{0xC0FFFE}, reinterpret_cast<std::uintptr_t>(&instance)}) {
        const auto component = reinterpret_cast<Component>(made);
        EXPECT_EQ(OpenAComponent(component, &instance), invalidComponentID) << made;
        EXPECT_EQ(instance, nullptr) << made;
        EXPECT_EQ(OpenComponent(component), nullptr) << made;
        if (!made) continue;
        ComponentDescription all = {};
        EXPECT_EQ(FindNextComponent(component, &all), nullptr) << "after " << made;
    }
    ComponentDescription pattern = {'auou', 'genr', 'appl', 0, 0};
    EXPECT_EQ(OpenAComponent(FindNextComponent(nullptr, &pattern), nullptr), paramErr);
    EXPECT_EQ(FindNextComponent(nullptr, nullptr), nullptr);
}

TEST(ComponentManager, RefusesAnInvalidInstance)
{
    int local = 0;
    const ComponentInstance open = OpenDefaultComponent('auou', 'genr');
    const auto number = reinterpret_cast<std::uintptr_t>(open);
    // clang-format off
    const struct { std::uintptr_t handle; const char* why; } facts[] = {
        {0,                                      "NULL"},
        {1,                                      "a small number"},
        {0xFFFFFFFF,                             "-1"},
        {reinterpret_cast<std::uintptr_t>(&local), "an address"},
        {number + 1,                             "the number after an open one"},
        {number ^ 0x4000,                        "another generation"},
        {number ^ 0x80000000,                    "one bit differs"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const auto instance = reinterpret_cast<ComponentInstance>(fact.handle);
        EXPECT_EQ(CloseComponent(instance), badInstance16) << fact.why;
        EXPECT_EQ(AudioUnitInitialize(instance), badComponentInstance) << fact.why;
    }
    EXPECT_EQ(CloseComponent(open), noErr);
    EXPECT_EQ(CloseComponent(open), badInstance16) << "closed";
    EXPECT_EQ(static_cast<OSErr>(badComponentInstance & 0xFFFF), badInstance16);
    EXPECT_EQ(static_cast<UInt32>(badComponentInstance), 0x80008001u);
    EXPECT_EQ(static_cast<UInt32>(badComponentSelector), 0x80008002u);
}

/// Expect that every call with an invalid unit returns badComponentInstance, for any other arguments.
void expectEveryCallRefused(AudioUnit unit)
{
    UInt32 size = 4;
    Float32 value = -1;
    Boolean isWritable = 0;
    UInt32 data = 0;
    AudioTimeStamp time = {};
    AudioBufferList list = {};
    EXPECT_EQ(AudioUnitInitialize(unit), badComponentInstance);
    EXPECT_EQ(AudioUnitUninitialize(unit), badComponentInstance);
    EXPECT_EQ(AudioUnitReset(unit, 0, 0), badComponentInstance);
    EXPECT_EQ(AudioUnitGetPropertyInfo(unit, 14, 0, 0, &size, &isWritable), badComponentInstance);
    EXPECT_EQ(AudioUnitGetProperty(unit, 14, 0, 0, &data, &size), badComponentInstance);
    EXPECT_EQ(AudioUnitSetProperty(unit, 14, 0, 0, &data, size), badComponentInstance);
    EXPECT_EQ(AudioUnitGetParameter(unit, 14, 0, 0, &value), badComponentInstance);
    EXPECT_EQ(value, -1) << "nothing is written";
    EXPECT_EQ(AudioUnitSetParameter(unit, 14, 0, 0, 1, 0), badComponentInstance);
    EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 1, &list), badComponentInstance);
    EXPECT_EQ(AudioOutputUnitStart(unit), badComponentInstance);
    EXPECT_EQ(AudioOutputUnitStop(unit), badComponentInstance);
}

TEST(ComponentManager, AHandleIsNotUsedAgainWithin10000Openings)
{
    expectEveryCallRefused(nullptr);
    std::vector<ComponentInstance> closed;
    for (int i = 0; i < 10000; ++i) {
        const ComponentInstance instance = OpenDefaultComponent('auou', i % 2 ? 'genr' : 'def ');
        ASSERT_NE(instance, nullptr);
        ASSERT_EQ(CloseComponent(instance), noErr);
        closed.push_back(instance);
    }
    EXPECT_EQ(std::set<ComponentInstance>(closed.begin(), closed.end()).size(), closed.size())
        << "a handle was used again";
    const ComponentInstance open = OpenDefaultComponent('auou', 'genr');
    for (ComponentInstance instance : closed) {
        ASSERT_EQ(CloseComponent(instance), badInstance16);
        ASSERT_EQ(AudioUnitInitialize(instance), badComponentInstance);
    }
    expectEveryCallRefused(closed.front());
    expectEveryCallRefused(closed.back());
    EXPECT_EQ(AudioUnitInitialize(open), noErr);
    EXPECT_EQ(CloseComponent(open), noErr);
    EXPECT_EQ(alive("ComponentInstance"), 0);
}

} // namespace
