// A host may lack any service except "RegisterPluginVersion". The features of the library that need a missing
// service fail with a stated result; all other features work.
#include "host/runtime/services/service_table.h"
#include "tests/endtoend/hostservices/library_features.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/support/null_call.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <ostream>

namespace {

using namespace endtoend;

/// The stated result of some features in a host without a service. All features work without a service that
/// has no row here, because the library does not need the service or has a substitute.
struct Loss {
    const char* service;
    double first; ///< first host version in which the features fail
    double end;   ///< first later host version in which the features work
    const char* result;
    std::vector<const char*> features;
};

constexpr double always = 0;
constexpr double forEver = std::numeric_limits<double>::infinity();

const char* const losesReference = "an argument loses a reference";
const char* const keepsReference = "an argument keeps a reference";
const char* const unknownProperty = "0 bytes, writable false, status who?";
const char* const noBlockOf4 = "OutOfMemoryException: Failed to allocate a memoryblock with 4 bytes in size.";
const char* const noBlockOf8 = "OutOfMemoryException: Failed to allocate a memoryblock with 8 bytes in size.";

const std::vector<const char*> textArguments = {"property IDs in UTF-8",
                                                "property IDs in Mac Roman",
                                                "property IDs as bytes",
                                                "property IDs beyond ASCII",
                                                "default device",
                                                "device properties",
                                                "units"};

// clang-format off
const Loss losses[] = {
    // The library cannot raise exceptions, so only a returned value reports an error.
    {"PluginNewInstance",       always, forEver, "false", {"nil blocks"}},
    {"RuntimeRaiseException",   always, forEver, "false", {"nil blocks"}},
    // The library cannot set the message of an exception.
    {"REALSetPropValueString",  always, forEver, "NilObjectException", {"nil blocks"}},
    // Without the service that retains arguments the library still releases them, and the other way round.
    {"REALLockObject",          always, forEver, losesReference, {"values in the caller's block"}},
    {"REALUnlockObject",        always, forEver, keepsReference, {"values in the caller's block"}},
    {"REALUnlockObject",        always, forEver, "NilObjectException; string", {"release of everything"}},
    {"REALLockString",          always, forEver, losesReference, textArguments},
    {"REALUnlockString",        always, forEver, keepsReference, textArguments},
    {"REALUnlockString",        always, forEver, "string", {"release of everything"}},
    {"PluginDisposeStringData", 2012.0, forEver, keepsReference, {"property IDs in Mac Roman", "units"}},
    {"PluginDisposeStringData", 2012.0, forEver, "string; string data", {"release of everything"}},
    // The library cannot make text: no messages, no results, and no copies in another encoding.
    {"REALBuildString",         always, forEver, "NilObjectException", {"nil blocks"}},
    {"REALBuildString",         always, forEver, "nil; unknown encoding", {"text constants"}},
    {"REALBuildString",         always, forEver, "nil, status 0", {"default device"}},
    {"REALBuildString",         always, forEver, "nil, status 0; unknown encoding", {"device properties"}},
    {"REALBuildString",         always, forEver, unknownProperty, {"property IDs beyond ASCII"}},
    // The library cannot read or set the encoding of text.
    {"REALGetStringEncoding",   always, forEver, unknownProperty, {"property IDs beyond ASCII"}},
    {"REALSetStringEncoding",   always, forEver, "unknown encoding", {"text constants", "device properties"}},
    {"REALSetStringEncoding",   always, forEver, unknownProperty, {"property IDs beyond ASCII"}},
    // The library cannot convert text: property IDs and component types become four spaces.
    {"REALConvertString",       always, 2012.0,  unknownProperty, {"property IDs in UTF-8", "property IDs in Mac Roman", "property IDs beyond ASCII"}},
    {"REALConvertString",       always, 2012.0,  "status who?; nil, status who?", {"default device"}},
    {"REALConvertString",       always, 2012.0,  "nil, status -1; unknown encoding; nil, status who?", {"device properties"}},
    {"REALConvertString",       always, 2012.0,  "no unit, status -1", {"units"}},
    {"PluginGetStringData",     2012.0, forEver, unknownProperty, {"property IDs in UTF-8", "property IDs in Mac Roman", "property IDs beyond ASCII"}},
    {"PluginGetStringData",     2012.0, forEver, "status who?; nil, status who?", {"default device"}},
    {"PluginGetStringData",     2012.0, forEver, "nil, status -1; unknown encoding; nil, status who?", {"device properties"}},
    {"PluginGetStringData",     2012.0, forEver, "no unit, status -1", {"units"}},
    // The library cannot read the bytes, or the length, of unconverted text.
    {"StringGetCString",        2012.0, forEver, unknownProperty, {"property IDs as bytes"}},
    {"StringGetCString",        2016.0, forEver, unknownProperty, {"property IDs beyond ASCII"}},
    {"StringGetCString",        2016.0, forEver, "status nope; another device", {"default device"}},
    {"REALLoadGlobalMethod",    2012.0, forEver, unknownProperty, {"property IDs as bytes"}},
    {"REALLoadGlobalMethod",    2016.0, forEver, unknownProperty, {"property IDs beyond ASCII"}},
    {"REALLoadGlobalMethod",    2016.0, forEver, "status !siz; another device", {"default device"}},
    // The library cannot make a memory block, or cannot write to a memory block that it has made.
    {"newMemoryBlock",          always, forEver, noBlockOf4, {"default device", "device properties", "units"}},
    {"newMemoryBlock",          always, forEver, noBlockOf8, {"values in a new block"}},
    {"memoryBlockGetPtr",       always, forEver, noBlockOf4, {"default device", "device properties", "units"}},
    {"memoryBlockGetPtr",       always, forEver, noBlockOf8, {"values in a new block"}},
    // The library cannot read a memory block, and refuses samples as if the memory block were nil.
    {"memoryBlockGetPtr",       always, forEver, "NilObjectException: Memoryblock is nil; 0 queued; silence", {"whole PCM16 blocks", "parts of PCM16 blocks"}},
    {"memoryBlockGetPtr",       always, forEver, "false; 0 queued; silence", {"whole float blocks", "parts of float blocks"}},
    {"memoryBlockGetPtr",       always, forEver, "nil, status !siz; status !siz", {"values in the caller's block"}},
    // Every memory block seems to have 0 bytes, so only calls with an explicit size play.
    {"memoryBlockGetSize",      always, forEver, "false; 0 queued; silence", {"whole PCM16 blocks", "whole float blocks"}},
    {"memoryBlockGetSize",      always, forEver, "nil, status !siz; status !siz", {"values in the caller's block"}},
    // Without this service, the plug-in library cannot look up the event handlers of a program.
    {"GetEventInstance",        always, forEver, "changes: 0", {"listeners"}},
};
// clang-format on

struct Withheld {
    std::string service;
    double version;
};

void PrintTo(const Withheld& withheld, std::ostream* out)
{
    *out << withheld.version << " without " << withheld.service;
}

std::string nameOf(const testing::TestParamInfo<Withheld>& info)
{
    return info.param.service + "_Host" + std::to_string(int(info.param.version));
}

/// Return all services except "RegisterPluginVersion", each with one host version for each set of services.
std::vector<Withheld> withholdable()
{
    std::vector<Withheld> all;
    for (const host::Service& service : host::serviceTable())
        for (double version : {2011.5, 2012.0, 2013.0, 2015.03, 2016.0})
            if (host::findService(service.name, version) &&
                std::string(service.name) != "RegisterPluginVersion")
                all.push_back({service.name, version});
    return all;
}

/// Without registered classes, every feature is refused.
std::string expectedResult(const Withheld& withheld, const std::string& feature)
{
    if (withheld.service == "PluginRegisterClass" && feature != "release of everything") return "refused";
    for (const Loss& loss : losses) {
        const bool applies =
            withheld.service == loss.service && withheld.version >= loss.first && withheld.version < loss.end;
        if (applies && std::find(loss.features.begin(), loss.features.end(), feature) != loss.features.end())
            return loss.result;
    }
    return "works";
}

void expectResults(host::Host& host, const Withheld& withheld)
{
    for (const auto& [feature, result] : useAllFeatures(host))
        EXPECT_EQ(result, expectedResult(withheld, feature)) << feature;
    EXPECT_EQ(host.misuses(), std::vector<std::string>());
}

class WithheldService : public testing::TestWithParam<Withheld> {};

TEST_P(WithheldService, LosesOnlyTheFeaturesThatNeedIt)
{
    const Withheld& withheld = GetParam();
    host::Options options;
    options.version = withheld.version;
    options.withheld = {withheld.service};
    LoadedHost loaded(options);
    EXPECT_EQ(loaded.host.pluginClasses().size(), withheld.service == "PluginRegisterClass" ? 0u : 5u);
    expectResults(loaded.host, withheld);
}

INSTANTIATE_TEST_SUITE_P(Each, WithheldService, testing::ValuesIn(withholdable()), nameOf);

TEST(WithheldServices, WithoutAVersionTheLibraryUsesOnlyTheOldestServices)
{
    host::Options options;
    options.withheld = {"REALGetRBVersion"};
    for (const host::Service& service : host::serviceTable())
        if (!host::findService(service.name, 2011.5)) options.withheld.insert(service.name);
    LoadedHost loaded(options);
    ASSERT_EQ(loaded.host.pluginClasses().size(), 5u);
    for (const auto* each : loaded.host.pluginClasses()) EXPECT_EQ(each->layout, 9) << each->name;
    expectResults(loaded.host, {"REALGetRBVersion", 2011.5});
}

TEST(WithheldServices, TableNamesOnlyServicesAndFeatures)
{
    LoadedHost loaded;
    const FeatureResults features = useAllFeatures(loaded.host);
    const std::initializer_list<host::Service> all = host::serviceTable();
    for (const Loss& loss : losses) {
        EXPECT_TRUE(std::any_of(all.begin(), all.end(), [&](const host::Service& service) {
            return std::string(service.name) == loss.service;
        })) << loss.service;
        EXPECT_LT(loss.first, loss.end);
        for (const char* feature : loss.features) EXPECT_TRUE(features.count(feature)) << feature;
    }
}

TEST(WithheldServicesDeathTest, LoadingWithoutRegisterPluginVersionCallsNull)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            host::Options options;
            options.withheld = {"RegisterPluginVersion"};
            LoadedHost loaded(options);
        },
        support::endedByNullCall, support::nullCallText);
}

} // namespace
