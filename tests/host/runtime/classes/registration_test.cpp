// Tests of the registration of classes: the test plug-in in every layout of the class records, and faulty
// class definitions.
#include "abi/accessor_sentinels.h"
#include "tests/host/runtime/plugin_host.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <ostream>

namespace {

using namespace host;
using test::misuses;
using test::service;
using test::version;

// ---- the test plug-in in each layout ----

struct LayoutFact {
    double version;
    int layout;
};

void PrintTo(const LayoutFact& fact, std::ostream* out) { *out << fact.version; }

class Layouts : public testing::TestWithParam<LayoutFact> {};

std::string versionName(const testing::TestParamInfo<LayoutFact>& info)
{
    return "Version" + std::to_string(std::lround(info.param.version * 100)); // in hundredths
}

INSTANTIATE_TEST_SUITE_P(Versions, Layouts,
                         testing::Values(LayoutFact{2010.5, 9}, LayoutFact{2011.5, 9}, LayoutFact{2012.0, 10},
                                         LayoutFact{2012.99, 10}, LayoutFact{2013.0, 11},
                                         LayoutFact{2013.02, 11}, LayoutFact{2013.03, 12},
                                         LayoutFact{2013.04, 13}, LayoutFact{2015.03, 13},
                                         LayoutFact{2016.0, 13}),
                         versionName);

TEST_P(Layouts, AreReadCompletely)
{
    {
        test::PluginHost plugin(version(GetParam().version));
        auto& host = plugin.host;
        ASSERT_EQ(host.pluginClasses().size(), 3u);
        const auto& info = *host.findClass("Probe");
        EXPECT_EQ(info.layout, GetParam().layout);
        EXPECT_EQ(info.name, "Probe");
        EXPECT_EQ(info.superName, "");
        EXPECT_EQ(info.flags, 4u);
        EXPECT_EQ(info.interfaces, "Readable");
        EXPECT_FALSE(info.isBuiltIn);
        EXPECT_EQ(info.dataSize % 16, 0u);
        EXPECT_EQ(info.dataOffset % 16, 0u);
        EXPECT_EQ(info.properties.size(), 33u);
        EXPECT_EQ(info.sharedProperties.size(), 2u);
        EXPECT_EQ(info.methods.size(), 66u);
        EXPECT_EQ(info.sharedMethods.size(), 4u);
        EXPECT_EQ(info.events.size(), 7u);
        EXPECT_EQ(info.constants.size(), 5u);

        EXPECT_EQ(info.properties.front().name, "FieldBoolean");
        EXPECT_EQ(info.properties.back().name, "WriteOnly")
            << "the last row is read correctly only with the correct row size";
        EXPECT_EQ(info.methods.back().text, "AskWithGarbage as ptr");
        EXPECT_EQ(info.events.back().declaration.name, "Negated");
        EXPECT_EQ(info.constants.back().text, "ConstFlag as Boolean = true");
        EXPECT_EQ(info.constants[0].typeText, "");
        EXPECT_EQ(info.constants[3].typeText, "Double");
        for (const auto& event : info.events) EXPECT_NE(event.systemUse, 0u);

        const auto& first = *info.property("First");
        EXPECT_EQ(first.group, "Functions");
        EXPECT_EQ(first.typeText, "Integer");
        EXPECT_EQ(first.editor, "Editor");
        EXPECT_EQ(first.getterAccess, Access::function);
        EXPECT_FALSE(first.isReadOnly());
        const auto& only = *info.property("OnlyInteger");
        EXPECT_EQ(only.flags, 6u);
        EXPECT_EQ(only.getterAccess, Access::field);
        EXPECT_TRUE(only.isReadOnly());
        EXPECT_EQ(info.methodsNamed("EchoInteger")[0]->flags, 4u);
        EXPECT_NE(info.methodsNamed("Slot")[0]->setter, nullptr);
        EXPECT_EQ(info.sharedMethodsNamed("Add").size(), 1u);
        EXPECT_EQ(host.findClass("probechild")->super, &info);

        // The host can use the members of the registered class.
        const auto probe = host.create("ProbeChild");
        probe.set("FieldDouble", 0.5);
        EXPECT_EQ(probe.get("FieldDouble").number(), 0.5);
        EXPECT_EQ(probe.call("Mixed", true, 1.5, 2, 3.5f, 4, "caf\xC3\xA9", 6, 7).text(),
                  "1 1.5 2 3.5 4 caf\xC3\xA9 6 7");
        EXPECT_EQ(probe.call("Sum", Array::of(std::vector<float>{1, 2})).number(), 1003);
        EXPECT_EQ(probe.call("Sum", Array::of(std::vector<HostInteger>{1, 2})).number(), 3);
        EXPECT_EQ(probe.call("Countdown", 2).array().numbers(), (std::vector<double>{2, 1}));
        EXPECT_THROW(probe.call("Fail", "NilObjectException", "x", 1), HostException);
        bool isFired = false;
        probe.on("Fired", [&](Object&, const std::vector<Value>&) {
            isFired = true;
            return Value();
        });
        EXPECT_TRUE(probe.call("Fire").boolean());
        EXPECT_TRUE(isFired);
        EXPECT_EQ(misuses(), "");
    }
}

TEST(Layouts9, IsUsedWithoutTheVersionService)
{
    Options options;
    options.withheld = {"REALGetRBVersion"};
    test::PluginHost plugin(options);
    EXPECT_EQ(plugin.host.findClass("Probe")->layout, 9);
    const auto probe = plugin.host.create("Probe");
    EXPECT_EQ(probe.call("Mixed", false, 0, 0, 0, 0, "read from the record", 0, 0).text(),
              "0 0 0 0 0 read from the record 0 0");
    EXPECT_EQ(misuses(), "");
}

TEST(Layouts13, HasNoClassesWithoutTheRegistrationService)
{
    Options options;
    options.withheld = {"PluginRegisterClass"};
    Host host(options);
    EXPECT_EQ(Host::resolver()("PluginRegisterClass"), nullptr);
    EXPECT_TRUE(host.pluginClasses().empty());
}

// ---- class definitions that the tests make ----

HostInteger anyFunction(REALobjectStruct*) { return 0; }
AnyFunction address() { return reinterpret_cast<AnyFunction>(anyFunction); }
AnyFunction fieldGetter() { return reinterpret_cast<AnyFunction>(REALstandardGetter); }

REALclassDefinition named(const char* name, int layout = 13)
{
    REALclassDefinition definition = {};
    definition.version = static_cast<Word>(layout);
    definition.name = name;
    definition.dataSize = 16;
    return definition;
}

void announce(std::int32_t layout) { service<void(std::int32_t)>("RegisterPluginVersion")(layout); }
void registerClass(REALclassDefinition& definition)
{
    service<void(REALclassDefinition*)>("PluginRegisterClass")(&definition);
}

TEST(Registration, WritesTheDataOffsetAndTheKeysOfEvents)
{
    Host host;
    announce(13);
    REALevent events[] = {{"One", 0, {5, 6}}, {"Two", 0, {7, 8}}};
    auto definition = named("Mine");
    definition.events = events;
    definition.eventCount = 2;
    definition.newer[6] = 0x55;
    registerClass(definition);
    const auto* info = host.findClass("Mine");
    ASSERT_TRUE(info);
    EXPECT_EQ(definition.dataOffset, info->dataOffset);
    EXPECT_NE(definition.dataOffset, 0u);
    EXPECT_EQ(events[0].systemUse, info->events[0].systemUse);
    EXPECT_EQ(events[1].systemUse, info->events[1].systemUse);
    EXPECT_NE(events[0].systemUse, events[1].systemUse);
    EXPECT_EQ(events[1].trailing[1], 8u) << "registration leaves the other words unchanged";
    EXPECT_EQ(definition.newer[6], 0x55u);
    EXPECT_EQ(misuses(), "");
}

TEST(Registration, ReadsTheShortRowsOfLayout9)
{
    Host host(version(2011.5));
    announce(9);
    REALevent9 events[] = {{"One", 0}, {"Two", 0}};
    REALmethod9 methods[] = {{address(), nullptr, "First as integer", 1},
                             {address(), address(), "Second(i as integer) as integer", 2}};
    REALproperty9 properties[] = {{"g", "A", "Integer", 6, fieldGetter(), nullptr, 0, nullptr, nullptr, 0},
                                  {"g", "B", "Double", 0, fieldGetter(), nullptr, 8, "e", nullptr, 9}};
    REALconstant9 constants[] = {{"C = 1", {}}, {"D as Double = 2", {}}};
    auto definition = named("Old", 9);
    definition.events = events;
    definition.eventCount = 2;
    definition.methods = methods;
    definition.methodCount = 2;
    definition.properties = properties;
    definition.propertyCount = 2;
    definition.constants = constants;
    definition.constantCount = 2;
    definition.sharedMethods = nullptr;
    definition.sharedMethodCount = 3; // The array is null, so the host must ignore its count.
    registerClass(definition);
    const auto* info = host.findClass("Old");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->layout, 9);
    EXPECT_EQ(info->events[1].declaration.name, "Two");
    EXPECT_EQ(events[1].systemUse, info->events[1].systemUse);
    EXPECT_EQ(info->methods[1].declaration.name, "Second");
    EXPECT_EQ(info->methods[1].flags, 2u);
    EXPECT_EQ(info->properties[1].name, "B");
    EXPECT_EQ(info->properties[1].editor, "e");
    EXPECT_EQ(info->constants[1].name, "D");
    EXPECT_TRUE(info->sharedMethods.empty());
    EXPECT_EQ(misuses(), "");
}

TEST(Registration, GivesEachClassAnotherAlignedDataOffset)
{
    Host host;
    announce(13);
    std::set<Word> offsets;
    for (const char* name : {"A", "B", "C"}) {
        auto definition = named(name);
        registerClass(definition);
        EXPECT_EQ(definition.dataOffset % 16, 0u);
        offsets.insert(definition.dataOffset);
        const auto object = host.create(name);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object.classData()) % 16, 0u);
        const char zeros[16] = {};
        EXPECT_EQ(std::memcmp(object.classData(), zeros, sizeof zeros), 0);
    }
    EXPECT_EQ(offsets.size(), 3u);
}

TEST(Registration, RefusesFaultyClasses)
{
    Host host;
    auto early = named("Early");
    registerClass(early);
    EXPECT_EQ(misuses(), "a class was registered before the library's layout\n");
    host.clearMisuses();
    announce(13);

    auto wrongLayout = named("WrongLayout", 12), nameless = named(nullptr), empty = named(""),
         large = named("Large"), orphan = named("Orphan"), twice = named("Dictionary");
    large.dataSize = 1u << 30;
    orphan.superName = "NoSuch";
    registerClass(wrongLayout);
    registerClass(nameless);
    registerClass(empty);
    registerClass(large);
    registerClass(orphan);
    registerClass(twice);
    service<void(REALclassDefinition*)>("PluginRegisterClass")(nullptr);
    EXPECT_EQ(misuses(),
              "class WrongLayout is not registered: its layout is 12, but the library announced 13\n"
              "class  is not registered: it has no name\n"
              "class  is not registered: it has no name\n"
              "class Large is not registered: 1073741824 bytes of class data are too many\n"
              "class Orphan is not registered: its superclass NoSuch is not registered\n"
              "class Dictionary is not registered: there is a class of that name\n"
              "PluginRegisterClass was given no definition\n");
    EXPECT_TRUE(host.pluginClasses().empty());
}

TEST(Registration, RefusesLayoutsThatTheHostCannotRead)
{
    {
        Host host;
        announce(14);
        auto definition = named("Future", 14);
        registerClass(definition);
        EXPECT_EQ(host.misuses().size(), 3u) << misuses();
        EXPECT_EQ(host.findClass("Future"), nullptr);
    }
    {
        Host host(version(2013.03));
        announce(13);
        EXPECT_EQ(misuses(),
                  "the library announced class layout 13, newer than host version 2013.03 knows\n");
    }
    Host host(version(2013.03));
    announce(12);
    announce(9);
    EXPECT_EQ(misuses(), "") << "every host reads the older layouts";
}

TEST(Registration, LeavesFaultyMembersOut)
{
    Host host;
    announce(13);
    REALproperty properties[] = {
        {"", nullptr, "Integer", 0, address(), nullptr, 0, nullptr, nullptr, 0, {}},
        {"", "NoType", "", 0, address(), nullptr, 0, nullptr, nullptr, 0, {}},
        {"", "NoAccess", "Integer", 0, nullptr, nullptr, 0, nullptr, nullptr, 0, {}},
        {"", "LastByte", "Boolean", 0, fieldGetter(), nullptr, 15, nullptr, nullptr, 0, {}},
        {"", "PastTheEnd", "Boolean", 0, fieldGetter(), nullptr, 16, nullptr, nullptr, 0, {}},
        {"", "Straddling", "Double", 0, fieldGetter(), nullptr, 12, nullptr, nullptr, 0, {}},
        {"", "BeforeTheStart", "Boolean", 0, fieldGetter(), nullptr, -1, nullptr, nullptr, 0, {}},
    };
    REALproperty sharedProperties[] = {
        {"", "SharedField", "Integer", 0, fieldGetter(), nullptr, 0, nullptr, nullptr, 0, {}},
    };
    REALmethod methods[] = {
        {address(), nullptr, "Good as integer", 0, {}},
        {address(), nullptr, "Bad(", 0, {}},
        {address(), nullptr, nullptr, 0, {}},
        {nullptr, nullptr, "Empty", 0, {}},
    };
    REALevent events[] = {{"Lends(byref a as integer)", 0, {}}, {"Happened", 0, {}}};
    REALconstant constants[] = {{"NoValue", {}}, {"Value = 1", {}}};
    auto definition = named("Mixed");
    definition.properties = properties;
    definition.propertyCount = std::size(properties);
    definition.sharedProperties = sharedProperties;
    definition.sharedPropertyCount = 1;
    definition.methods = methods;
    definition.methodCount = std::size(methods);
    definition.events = events;
    definition.eventCount = 2;
    definition.constants = constants;
    definition.constantCount = 2;
    registerClass(definition);
    const auto* info = host.findClass("Mixed");
    ASSERT_TRUE(info);
    ASSERT_EQ(info->properties.size(), 1u);
    EXPECT_EQ(info->properties[0].name, "LastByte");
    EXPECT_TRUE(info->sharedProperties.empty());
    ASSERT_EQ(info->methods.size(), 1u);
    EXPECT_EQ(info->methods[0].declaration.name, "Good");
    ASSERT_EQ(info->events.size(), 1u);
    EXPECT_EQ(events[1].systemUse, info->events[0].systemUse);
    ASSERT_EQ(info->constants.size(), 1u);
    EXPECT_EQ(host.misuses().size(), 12u) << misuses();
    EXPECT_NE(misuses().find(
                  "class Mixed: property Straddling is left out: its field of 8 bytes at 12 is outside the "
                  "class data of 16 bytes"),
              std::string::npos);
}

} // namespace
