// Finding, opening and closing components, under both names of the calls.
#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

constexpr OSErr badInstance16 = -32767;

std::string text(OSType code)
{
    std::string four;
    for (int shift = 24; shift >= 0; shift -= 8) four += static_cast<char>(code >> shift);
    return four;
}

std::uint32_t openInstances()
{
    KVXLiveCount rows[32];
    const std::uint32_t kinds = KVXPlatformGetLiveCounts(rows, 32);
    for (std::uint32_t i = 0; i < kinds; ++i)
        if (std::string(rows[i].kind) == "ComponentInstance") return rows[i].count;
    return 0;
}

// The built-in components that this test knows, in the order in which a search finds them.
const struct {
    OSType type, subType;
} builtIn[] = {
    {'auou', 'ahal'},
    {'auou', 'def '},
    {'auou', 'sys '},
    {'auou', 'genr'},
};

TEST(ComponentManager, FindsEveryBuiltInComponentByEveryDescription)
{
    for (const auto& row : builtIn) {
        SCOPED_TRACE(text(row.type) + " " + text(row.subType));
        const ComponentDescription exact = {row.type, row.subType, 'appl', 0, 0};
        // clang-format off
        const struct { ComponentDescription looking; bool isFound; const char* why; } facts[] = {
            {exact,                                                  true,  "its own description"},
            {{row.type, row.subType, 0, 0, 0},                       true,  "any manufacturer"},
            {{0, row.subType, 'appl', 0, 0},                         true,  "any type"},
            {{row.type, 0, 0, 0, 0},                                 true,  "any subtype"},
            {{0, 0, 0, 0, 0},                                        true,  "anything"},
            {{row.type, row.subType, 'appl', 0xFFFFFFFF, 0},         true,  "flags without a mask are not compared"},
            {{row.type, row.subType, 'appl', 0, 0xFFFFFFFF},         true,  "no flag is set"},
            {{row.type, row.subType, 'appl', 1, 1},                  false, "a flag that it lacks"},
            {{row.type, row.subType, 'appL', 0, 0},                  false, "another manufacturer"},
            {{row.type, row.subType + 1, 'appl', 0, 0},              false, "another subtype"},
            {{row.type + 1, row.subType, 'appl', 0, 0},              false, "another type"},
        };
        // clang-format on
        for (const auto& fact : facts) {
            ComponentDescription looking = fact.looking;
            const Component found = FindNextComponent(nullptr, &looking);
            EXPECT_EQ(found != nullptr, fact.isFound) << fact.why;
            EXPECT_EQ(CountComponents(&looking) > 0, fact.isFound) << fact.why;
            AudioComponentDescription newer = {looking.componentType, looking.componentSubType,
                                               looking.componentManufacturer, looking.componentFlags,
                                               looking.componentFlagsMask};
            EXPECT_EQ(reinterpret_cast<Component>(AudioComponentFindNext(nullptr, &newer)), found)
                << fact.why;
            EXPECT_EQ(static_cast<long>(AudioComponentCount(&newer)), CountComponents(&looking)) << fact.why;
        }
        ComponentDescription looking = exact;
        EXPECT_EQ(CountComponents(&looking), 1);
    }
}

TEST(ComponentManager, WalksThroughAllThatMatchInOrder)
{
    ComponentDescription outputs = {'auou', 0, 0, 0, 0};
    Component previous = nullptr;
    for (const auto& row : builtIn) {
        if (row.type != 'auou') continue;
        const Component found = FindNextComponent(previous, &outputs);
        ComponentDescription exact = {row.type, row.subType, 'appl', 0, 0};
        EXPECT_EQ(found, FindNextComponent(nullptr, &exact)) << text(row.subType);
        previous = found;
    }
    EXPECT_EQ(FindNextComponent(previous, &outputs), nullptr);
    EXPECT_EQ(CountComponents(&outputs), 4);

    ComponentDescription all = {};
    std::set<Component> seen;
    for (Component c = FindNextComponent(nullptr, &all); c; c = FindNextComponent(c, &all))
        ASSERT_TRUE(seen.insert(c).second) << "found twice";
    EXPECT_EQ(static_cast<long>(seen.size()), CountComponents(&all));
    EXPECT_GE(seen.size(), std::size(builtIn));
}

TEST(ComponentManager, OpensTheFirstThatFits)
{
    // clang-format off
    const struct { OSType type, subType; bool opens; const char* why; } facts[] = {
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
        EXPECT_EQ(instance != nullptr, fact.opens);
        ComponentInstance other = reinterpret_cast<ComponentInstance>(1);
        EXPECT_EQ(OpenADefaultComponent(fact.type, fact.subType, &other),
                  fact.opens ? noErr : static_cast<OSErr>(invalidComponentID));
        EXPECT_EQ(other != nullptr, fact.opens) << "cleared on failure";
        if (!fact.opens) continue;
        EXPECT_NE(instance, other);
        EXPECT_EQ(CloseComponent(instance), noErr);
        EXPECT_EQ(CloseComponent(other), noErr);
    }
    EXPECT_EQ(openInstances(), 0u);
}

TEST(ComponentManager, OpensAComponentUnderBothNames)
{
    ComponentDescription looking = {'auou', 'genr', 'appl', 0, 0};
    const Component component = FindNextComponent(nullptr, &looking);
    ComponentInstance instances[4] = {};
    EXPECT_EQ(OpenAComponent(component, &instances[0]), noErr);
    instances[1] = OpenComponent(component);
    EXPECT_EQ(AudioComponentInstanceNew(reinterpret_cast<AudioComponent>(component), &instances[2]), noErr);
    instances[3] = OpenComponent(component);
    EXPECT_EQ(std::set<ComponentInstance>(instances, instances + 4).size(), 4u);
    EXPECT_EQ(openInstances(), 4u);
    for (ComponentInstance instance : instances) EXPECT_EQ(AudioUnitReset(instance, 0, 0), noErr);
    EXPECT_EQ(CloseComponent(instances[0]), noErr);
    EXPECT_EQ(AudioComponentInstanceDispose(instances[1]), noErr);
    EXPECT_EQ(CloseComponent(instances[2]), noErr);
    EXPECT_EQ(AudioComponentInstanceDispose(instances[3]), noErr);
    EXPECT_EQ(openInstances(), 0u);
}

TEST(ComponentManager, RefusesWhatIsNoComponent)
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
        EXPECT_EQ(FindNextComponent(component, &all), nullptr) << "behind " << made;
    }
    ComponentDescription looking = {'auou', 'genr', 'appl', 0, 0};
    EXPECT_EQ(OpenAComponent(FindNextComponent(nullptr, &looking), nullptr), paramErr);
    EXPECT_EQ(FindNextComponent(nullptr, nullptr), nullptr);
    EXPECT_EQ(CountComponents(nullptr), 0);
    EXPECT_EQ(AudioComponentFindNext(nullptr, nullptr), nullptr);
    EXPECT_EQ(AudioComponentCount(nullptr), 0u);
    EXPECT_EQ(AudioComponentInstanceNew(nullptr, nullptr), paramErr);
}

TEST(ComponentManager, RefusesWhatIsNoInstance)
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
        {number + 1,                             "beside an open one"},
        {number ^ 0x4000,                        "another generation"},
        {number ^ 0x80000000,                    "one bit off"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const auto instance = reinterpret_cast<ComponentInstance>(fact.handle);
        EXPECT_EQ(CloseComponent(instance), badInstance16) << fact.why;
        EXPECT_EQ(AudioComponentInstanceDispose(instance), badComponentInstance) << fact.why;
    }
    EXPECT_EQ(CloseComponent(open), noErr);
    EXPECT_EQ(CloseComponent(open), badInstance16) << "closed";
    EXPECT_EQ(static_cast<OSErr>(badComponentInstance & 0xFFFF), badInstance16);
    EXPECT_EQ(static_cast<UInt32>(badComponentInstance), 0x80008001u);
    EXPECT_EQ(static_cast<UInt32>(badComponentSelector), 0x80008002u);
}

/// Every call on a unit that is not there: its own status, whatever its other arguments are.
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

TEST(ComponentManager, OldHandlesStayBadThroughTenThousandOpenings)
{
    expectEveryCallRefused(nullptr);
    std::vector<ComponentInstance> old;
    for (int i = 0; i < 10000; ++i) {
        const ComponentInstance instance = OpenDefaultComponent('auou', i % 2 ? 'genr' : 'def ');
        ASSERT_NE(instance, nullptr);
        ASSERT_EQ(CloseComponent(instance), noErr);
        old.push_back(instance);
    }
    EXPECT_EQ(std::set<ComponentInstance>(old.begin(), old.end()).size(), old.size()) << "a handle came back";
    const ComponentInstance open = OpenDefaultComponent('auou', 'genr');
    for (ComponentInstance instance : old) {
        ASSERT_EQ(CloseComponent(instance), badInstance16);
        ASSERT_EQ(AudioUnitInitialize(instance), badComponentInstance);
    }
    expectEveryCallRefused(old.front());
    expectEveryCallRefused(old.back());
    EXPECT_EQ(AudioUnitInitialize(open), noErr);
    EXPECT_EQ(CloseComponent(open), noErr);
    EXPECT_EQ(openInstances(), 0u);
}

} // namespace
