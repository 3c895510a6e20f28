// The library plays its part in every host version. Each version runs in a process of its own: a library is
// loaded into a host once.
#include "host/runtime/services/service_table.h"
#include "tests/endtoend/hostservices/scenario.h"
#include "tests/endtoend/hostservices/service_differences.h"
#include "tests/endtoend/loaded_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace {

using namespace endtoend;

struct Version {
    double version;
    int layout; // of the classes that it is given
};

void PrintTo(const Version& version, std::ostream* out)
{
    *out << version.version << ", layout " << version.layout;
}

class Versions : public testing::TestWithParam<Version> {};

TEST_P(Versions, RunTheScenario)
{
    host::Options options;
    options.version = GetParam().version;
    host::Host host(options);
    host.logServices(true);
    host.load(libraryPath);

    ASSERT_EQ(host.pluginClasses().size(), 5u);
    const char* const inOrder[] = {"AUPlayerKVX", "CoreAudioKVX", "CoreAudioListenerKVX",
                                   "CoreAudioPlayerKVX", "QTSoundStreamKVX"};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(host.pluginClasses()[i]->name, inOrder[i]);
        EXPECT_EQ(host.pluginClasses()[i]->layout, GetParam().layout) << inOrder[i];
    }

    const auto outcomes = walkScenario(host);
    const auto& expected = completeOutcomes();
    ASSERT_EQ(outcomes.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(outcomes[i].step, expected[i].step);
        EXPECT_EQ(outcomes[i].result, expected[i].result) << expected[i].step;
    }
    EXPECT_EQ(host.misuses(), std::vector<std::string>());

    // The outcomes are alike; how the host is asked for them is not.
    const auto& uses = serviceUses();
    for (const host::Service& service : host::serviceTable()) {
        const auto use = std::find_if(uses.begin(), uses.end(), [&](const ServiceUse& each) {
            return std::string(each.service) == service.name;
        });
        EXPECT_EQ(host.serviceLog().callsOf(service.name),
                  use == uses.end() ? 0u : use->calls[eraOf(GetParam().version)])
            << service.name;
    }
}

const Version versions[] = {
    {2010.5, 9},   {2011.5, 9},   {2011.99, 9},  {2012.0, 10},  {2012.99, 10}, {2013.0, 11}, {2013.02, 11},
    {2013.03, 12}, {2013.04, 13}, {2015.02, 13}, {2015.03, 13}, {2015.99, 13}, {2016.0, 13},
};

std::string nameOf(const testing::TestParamInfo<Version>& info)
{
    std::string name = "Host" + std::to_string(info.param.version);
    name[8] = '_';
    return name.substr(0, 11);
}

INSTANTIATE_TEST_SUITE_P(All, Versions, testing::ValuesIn(versions), nameOf);

} // namespace
