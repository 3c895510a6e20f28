// A host may lack any service but the one by which the library declares itself. Nothing crashes; each outcome
// is the neutral one where the service was needed, and the usual one everywhere else.
#include "host/runtime/services/service_table.h"
#include "tests/endtoend/hostservices/scenario.h"
#include "tests/endtoend/hostservices/service_differences.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/support/null_call.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <ostream>

namespace {

using namespace endtoend;

const double hosts[] = {2011.5, 2012.0, 2013.0, 2015.03, 2016.0}; // one of each era

struct Withheld {
    std::string service;
    double version;
};

void PrintTo(const Withheld& withheld, std::ostream* out)
{
    *out << withheld.version << " without " << withheld.service;
}

std::vector<Withheld> withholdable()
{
    std::vector<Withheld> all;
    for (const host::Service& service : host::serviceTable())
        for (double version : hosts)
            if (host::findService(service.name, version) &&
                std::string(service.name) != "RegisterPluginVersion")
                all.push_back({service.name, version});
    return all;
}

std::string nameOf(const testing::TestParamInfo<Withheld>& info)
{
    return info.param.service + "_Host" + std::to_string(int(info.param.version));
}

using Results = std::map<std::string, std::string>; // by step

Results completeResults()
{
    Results results;
    for (const Outcome& outcome : completeOutcomes()) results[outcome.step] = outcome.result;
    return results;
}

/// What the scenario gives without that service; `differences` counts the steps that show it.
Results resultsWithout(const Withheld& withheld, std::size_t& differences)
{
    Results results = completeResults();
    const Era era = eraOf(withheld.version);
    for (const ServiceDifference& difference : serviceDifferences()) {
        if (withheld.service != difference.service || era < difference.first || era > difference.last)
            continue;
        for (const char* step : difference.steps) {
            std::string& result = results.at(step);
            result = difference.kind == ServiceDifference::besides ? result + difference.result
                                                                   : difference.result;
            ++differences;
        }
    }
    return results;
}

/// Without classes there are no objects, and so nothing but refusals; the device is there all the same.
Results resultsWithoutClasses()
{
    Results results = completeResults();
    for (auto& [step, result] : results) result = "refused";
    const struct {
        const char* step;
        const char* result;
    } others[] = {
        // clang-format off
        {"step 24", "0"},                   // nobody plays
        {"left", ""},                       // nor is anything heard
        {"right alike", "true"},            // of either side
        {"a change", "0"},                  // and nobody listens
        {"another", "0"},
        {"a change that nobody hears", "0"},
        {"destroy", ""},                    // what was never made
        {"destroy CoreAudioKVX", ""},
        {"destroy the other CoreAudioKVX", ""},
        {"destroy the listener", ""},
        {"left over", ""},
        // clang-format on
    };
    for (const auto& other : others) results.at(other.step) = other.result;
    return results;
}

std::size_t callsOf(const std::string& service, double version)
{
    for (const ServiceUse& use : serviceUses())
        if (service == use.service) return use.calls[eraOf(version)];
    return 0;
}

bool isUnseen(const std::string& service)
{
    const auto& all = unseenServices();
    return std::any_of(all.begin(), all.end(), [&](const auto& each) { return service == each.service; });
}

class WithheldService : public testing::TestWithParam<Withheld> {};

TEST_P(WithheldService, LeavesTheRestAsItIs)
{
    const Withheld& withheld = GetParam();
    host::Options options;
    options.version = withheld.version;
    options.withheld = {withheld.service};
    LoadedHost loaded(options);
    const bool hasClasses = withheld.service != "PluginRegisterClass";
    EXPECT_EQ(loaded.host.pluginClasses().size(), hasClasses ? 5u : 0u);

    const auto outcomes = walkScenario(loaded.host);
    std::size_t differences = 0;
    const Results expected = hasClasses ? resultsWithout(withheld, differences) : resultsWithoutClasses();
    EXPECT_EQ(outcomes.size(), completeOutcomes().size());
    EXPECT_EQ(outcomes.size(), expected.size()) << "no two steps go by one name";
    for (const Outcome& outcome : outcomes)
        EXPECT_EQ(outcome.result, expected.at(outcome.step)) << outcome.step;
    EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());

    // Each service that is called is missed somewhere, and no other.
    const bool isMissed = callsOf(withheld.service, withheld.version) > 0 && !isUnseen(withheld.service);
    EXPECT_EQ(differences > 0 || !hasClasses, isMissed);
}

INSTANTIATE_TEST_SUITE_P(Each, WithheldService, testing::ValuesIn(withholdable()), nameOf);

TEST(WithheldServices, WithoutAVersionEveryHostIsTheOldest)
{
    host::Options options;
    options.withheld = {"REALGetRBVersion"};
    LoadedHost loaded(options);
    ASSERT_EQ(loaded.host.pluginClasses().size(), 5u);
    for (const auto* each : loaded.host.pluginClasses()) EXPECT_EQ(each->layout, 9) << each->name;
    loaded.host.logServices(true);
    walkScenario(loaded.host);
    EXPECT_EQ(loaded.host.serviceLog().callsOf("REALConvertString"), callsOf("REALConvertString", 2011.5));
    EXPECT_EQ(loaded.host.serviceLog().callsOf("PluginGetStringData"), 0u);
}

TEST(WithheldServices, EveryRowNamesAServiceAndAStep)
{
    const Results steps = completeResults();
    const auto isService = [](const std::string& name) {
        const auto all = host::serviceTable();
        return std::any_of(all.begin(), all.end(), [&](const auto& each) { return name == each.name; });
    };
    for (const ServiceDifference& difference : serviceDifferences()) {
        EXPECT_TRUE(isService(difference.service)) << difference.service;
        EXPECT_LE(difference.first, difference.last);
        for (const char* step : difference.steps) EXPECT_TRUE(steps.count(step)) << step;
    }
    for (const ServiceUse& use : serviceUses()) EXPECT_TRUE(isService(use.service)) << use.service;
    for (const UnseenService& unseen : unseenServices())
        EXPECT_GT(callsOf(unseen.service, 2011.5) + callsOf(unseen.service, 2016.0), 0u) << unseen.service;
}

TEST(WithheldServicesDeathTest, WithoutTheClassLayoutNoLibraryCanBeLoaded)
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
