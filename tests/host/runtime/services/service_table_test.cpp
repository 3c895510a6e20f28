#include "host/runtime/services/service_table.h"

#include "tests/host/runtime/services.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <thread>

namespace {

using namespace host;
using test::service;
using test::version;

constexpr double never = std::numeric_limits<double>::infinity();

const struct {
    const char* name;
    double first; // 0: always
    double gone;
} facts[] = {
    {"REALGetRBVersion", 0, never},
    {"RegisterPluginVersion", 0, never},
    {"REALinRuntime", 0, never},
    {"PluginRegisterClass", 0, never},
    {"PluginNewInstance", 0, never},
    {"REALLockObject", 0, never},
    {"REALUnlockObject", 0, never},
    {"REALLockString", 0, never},
    {"REALUnlockString", 0, never},
    {"REALBuildString", 0, never},
    {"REALBuildStringWithEncoding", 2012.0, never},
    {"REALGetStringEncoding", 0, never},
    {"REALSetStringEncoding", 0, never},
    {"REALConvertString", 0, never},
    {"StringGetCString", 2012.0, never},
    {"REALLoadGlobalMethod", 2012.0, never},
    {"PluginGetStringData", 2012.0, never},
    {"PluginDisposeStringData", 2012.0, never},
    {"newMemoryBlock", 0, never},
    {"memoryBlockGetPtr", 0, never},
    {"memoryBlockGetSize", 0, never},
    {"RuntimeArrayCreateSingleDimBoundedArray", 0, never},
    {"RuntimeUBound", 0, never},
    {"PluginIntegerArrayInsertProc", 2013.0, never},
    {"RuntimeArrayDirectGetInsertProc", 0, 2016.0},
    {"PluginIntegerArrayGetProc", 2013.0, never},
    {"PluginSingleArrayGetProc", 2013.0, never},
    {"PluginDoubleArrayGetProc", 2013.0, never},
    {"RuntimeArrayDirectGetGetProc", 0, 2016.0},
    {"StringToVariant", 0, never},
    {"IntegerToVariant", 2013.0, never},
    {"Int32ToVariant", 0, never},
    {"REALSetPropValueString", 0, never},
    {"REALSetPropValueInteger", 2013.0, never},
    {"REALSetPropValueInt", 0, never},
    {"REALLoadObjectMethod", 0, never},
    {"GetEventInstance", 0, never},
    {"RuntimeRaiseException", 0, never},
    {"REALYieldToRB", 0, never},
    {"REALFSRefFromFolderItem", 0, never},
};

TEST(ServiceTable, HasEveryNameOnce)
{
    std::set<std::string> names;
    for (const auto& row : serviceTable()) {
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        EXPECT_NE(row.function, nullptr) << row.name;
    }
    std::set<std::string> expected;
    for (const auto& fact : facts) expected.insert(fact.name);
    EXPECT_EQ(names, expected);
}

TEST(ServiceTable, FindsEachServiceInItsVersions)
{
    for (double v : {0.0, 2010.5, 2011.5, 2011.99, 2012.0, 2012.99, 2013.0, 2013.02, 2013.03, 2013.04,
                     2015.02, 2015.03, 2015.99, 2016.0, 2023.1}) {
        Host host(version(v));
        const auto resolver = Host::resolver();
        for (const auto& fact : facts) {
            const bool exists = v >= fact.first && v < fact.gone;
            EXPECT_EQ(resolver(fact.name) != nullptr, exists) << fact.name << " at " << v;
            EXPECT_EQ(findService(fact.name, v) != nullptr, exists) << fact.name << " at " << v;
        }
    }
}

TEST(ServiceTable, EachNameCanBeWithheldAndProvidedAgain)
{
    Host host(version(2015.99));
    const auto resolver = Host::resolver();
    for (const auto& fact : facts) {
        host.withhold(fact.name);
        EXPECT_EQ(resolver(fact.name), nullptr) << fact.name;
        for (const auto& other : facts) {
            if (std::string(other.name) != fact.name) {
                EXPECT_NE(resolver(other.name), nullptr);
            }
        }
        host.provide(fact.name);
        EXPECT_NE(resolver(fact.name), nullptr) << fact.name;
    }
}

TEST(ServiceTable, OnlyNamesOfServicesCanBeWithheld)
{
    auto options = version(2016.0);
    options.withheld = {"REALLokObject"};
    EXPECT_THROW(Host{options}, ProgramError) << "a test with a misspelt name would prove nothing";
    EXPECT_EQ(Host::currentOrNull(), nullptr);
    Host host;
    EXPECT_THROW(host.withhold("REALLokObject"), ProgramError);
}

TEST(ServiceTable, UnknownNamesHaveNoService)
{
    EXPECT_EQ(Host::resolver()("REALLockObject"), nullptr) << "without a host, no service is found";
    Host host;
    for (const char* name : {"", "REALLockObjec", "reallockobject", "REALLockObject "})
        EXPECT_EQ(Host::resolver()(name), nullptr) << name;
    EXPECT_EQ(Host::resolver()(nullptr), nullptr);
}

TEST(ServiceTable, VersionServiceReturnsTheVersionOfTheOptions)
{
    for (double v : {2010.5, 2013.04, 2016.0}) {
        Host host(version(v));
        EXPECT_EQ(service<double()>("REALGetRBVersion")(), v);
        EXPECT_EQ(host.visibleVersion(), v);
        EXPECT_EQ(host.allowsDirectAccess(), v < 2016.0);
        host.withhold("REALGetRBVersion");
        EXPECT_EQ(host.visibleVersion(), 0.0);
        EXPECT_TRUE(host.allowsDirectAccess());
    }
}

TEST(ServiceTable, TwoNamesOfOneFunctionAreRefusedUnderTheirOwnNames)
{
    Host host;
    const Object exception = host.create("RuntimeException");
    for (const std::string name : {"REALSetPropValueInt", "REALSetPropValueInteger"}) {
        host.clearMisuses();
        const auto set = service<void(REALobjectStruct*, const char*, HostInteger)>(name.c_str());
        std::thread([&] { set(exception.get(), "ErrorNumber", 1); }).join();
        ASSERT_EQ(host.misuses().size(), 1u) << name;
        EXPECT_EQ(host.misuses()[0], name + " was called off the main thread, and refused");
        EXPECT_EQ(exception.get("ErrorNumber").integer(), 0) << name;
        set(exception.get(), "ErrorNumber", 2);
        EXPECT_EQ(exception.get("ErrorNumber").integer(), 2) << name;
        exception.set("ErrorNumber", 0);
    }
}

TEST(Services, AreRefusedOffTheMainThread)
{
    Host host;
    const auto block = MemoryBlock::ofSize(4);
    const auto size = service<HostInteger(REALmemoryBlockStruct*)>("memoryBlockGetSize");
    HostInteger answer = -1;
    std::thread([&] { answer = size(block.get()); }).join();
    EXPECT_EQ(answer, 0);
    ASSERT_EQ(host.misuses().size(), 1u);
    EXPECT_EQ(host.misuses()[0], "memoryBlockGetSize was called off the main thread, and refused");
    EXPECT_EQ(size(block.get()), 4);
}

} // namespace
