// A host may lack any service but the one by which the library declares itself. Nothing crashes; each outcome
// is the neutral one where the service was needed, and the usual one everywhere else.
#include "host/runtime/service_table.h"
#include "tests/endtoend/loaded.h"
#include "tests/endtoend/scenario.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace endtoend;

struct Difference {
    const char* service;
    const char* step;
    const char* result;
    const char* why;
};

// clang-format off
const Difference differences[] = {
    {"RuntimeRaiseException",  "AddAudio, nil",               "false",              "nothing can be raised: the refusal is all"},
    {"RuntimeRaiseException",  "PlayAudioStereo, second nil", "false",              "likewise"},
    {"PluginNewInstance",      "AddAudio, nil",               "false",              "no exception object can be made"},
    {"PluginNewInstance",      "PlayAudioStereo, second nil", "false",              "likewise"},
    {"REALSetPropValueString", "AddAudio, nil",               "NilObjectException", "the message cannot be set"},
    {"REALSetPropValueString", "PlayAudioStereo, second nil", "NilObjectException", "likewise"},
    {"REALBuildString",        "AddAudio, nil",               "NilObjectException", "nor made"},
    {"REALBuildString",        "PlayAudioStereo, second nil", "NilObjectException", "likewise"},
    {"REALUnlockObject", "left over", "2 objects of class NilObjectException\n2 strings\n", "nothing can be given back"},
    {"REALUnlockString", "left over", "2 strings\n", "nor the messages"},
    {"memoryBlockGetPtr", "AddAudio", "NilObjectException: Memoryblock is nil", "no bytes: as if the block were nil"},
    {"memoryBlockGetPtr", "AddAudio, a count", "NilObjectException: Memoryblock is nil", "no bytes: as if the block were nil"},
    {"memoryBlockGetPtr", "AddAudio, 15 bits", "NilObjectException: Memoryblock is nil", "no bytes: as if the block were nil"},
    {"memoryBlockGetPtr", "AddAudioStereo", "NilObjectException: Memoryblock is nil", "no bytes: as if the block were nil"},
    {"memoryBlockGetPtr", "PlayAudio", "NilObjectException: Memoryblock is nil", "no bytes: as if the block were nil"},
    {"memoryBlockGetPtr", "PlayAudioStereo", "NilObjectException: Memoryblock is nil", "no bytes: as if the block were nil"},
    {"memoryBlockGetPtr", "AddFloatAudio", "false", "no bytes, nothing raised"},
    {"memoryBlockGetPtr", "AddFloatAudio, a count", "false", "no bytes, nothing raised"},
    {"memoryBlockGetPtr", "AddFloatAudioStereo", "false", "no bytes, nothing raised"},
    {"memoryBlockGetPtr", "PlayFloatAudio", "false", "no bytes, nothing raised"},
    {"memoryBlockGetPtr", "PlayFloatAudioStereo", "false", "no bytes, nothing raised"},
    {"memoryBlockGetPtr", "AddFloatAudio, clearing", "false", "no bytes, nothing raised"},
    {"memoryBlockGetPtr", "FreeSpace", "200", "nothing was added"},
    {"memoryBlockGetPtr", "FreeSpace, playing", "200", "likewise"},
    {"memoryBlockGetPtr", "FreeSpace, cleared", "200", "likewise"},
    {"memoryBlockGetPtr", "left", "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0", "silence"},
    {"memoryBlockGetPtr", "OutputPosition, played", "0", "an underflow from the start"},
    {"memoryBlockGetSize", "AddAudio", "false", "no size: without a count there is nothing to add"},
    {"memoryBlockGetSize", "AddFloatAudio", "false", "no size: without a count there is nothing to add"},
    {"memoryBlockGetSize", "AddAudioStereo", "false", "no size: without a count there is nothing to add"},
    {"memoryBlockGetSize", "AddFloatAudioStereo", "false", "no size: without a count there is nothing to add"},
    {"memoryBlockGetSize", "FreeSpace", "197", "what has a count is added"},
    {"memoryBlockGetSize", "left", "0.25 0.25 0.125 0.875 0 0 0 0 0 0 0 0 0 0 0 0", "and heard"},
    {"memoryBlockGetSize", "OutputPosition, played", "8", "one slice; then it is dry"},
};
// clang-format on

std::vector<std::string> withholdable()
{
    std::vector<std::string> names;
    for (const host::Service& service : host::serviceTable())
        if (std::string(service.name) != "RegisterPluginVersion") names.push_back(service.name);
    return names;
}

class WithheldService : public testing::TestWithParam<std::string> {};

// What the scenario gives without the services that the player cannot do without.
void expectSilence(const std::vector<Outcome>& outcomes, const char* service)
{
    for (const Outcome& outcome : outcomes) {
        if (outcome.step == "left over") EXPECT_EQ(outcome.result, "") << service;
        if (outcome.step == "left" || outcome.step == "AddFloatAudio")
            EXPECT_TRUE(outcome.result == "false" || outcome.result == "refused" ||
                        outcome.result.find('.') == outcome.result.npos)
                << outcome.step << ": " << outcome.result;
    }
}

TEST_P(WithheldService, LeavesTheRestAsItIs)
{
    const std::string& service = GetParam();
    host::Options options;
    options.withheld = {service};
    Loaded loaded(options);
    const auto outcomes = walkScenario(loaded.host);
    if (service == "PluginRegisterClass") {
        EXPECT_TRUE(loaded.host.pluginClasses().empty());
        EXPECT_EQ(outcomes.front().result, "refused") << "there is no such class";
        return expectSilence(outcomes, service.c_str());
    }

    std::map<std::string, std::string> expected;
    for (const Outcome& outcome : completeOutcomes()) expected[outcome.step] = outcome.result;
    for (const Difference& difference : differences)
        if (service == difference.service) expected[difference.step] = difference.result;
    for (const Outcome& outcome : outcomes) EXPECT_EQ(outcome.result, expected[outcome.step]) << outcome.step;
    EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
}

std::string nameOf(const testing::TestParamInfo<std::string>& info) { return info.param; }

INSTANTIATE_TEST_SUITE_P(Each, WithheldService, testing::ValuesIn(withholdable()), nameOf);

TEST(WithheldServices, EveryDifferenceNamesAServiceAndAStep)
{
    for (const Difference& difference : differences) {
        EXPECT_NE(host::findService(difference.service, 2016.0), nullptr) << difference.service;
        const auto& all = completeOutcomes();
        EXPECT_TRUE(std::any_of(all.begin(), all.end(), [&](const auto& each) {
            return each.step == difference.step;
        })) << difference.step;
    }
}

TEST(WithheldServicesDeathTest, WithoutTheClassLayoutNoLibraryCanBeLoaded)
{
    EXPECT_DEATH(
        {
            host::Options options;
            options.withheld = {"RegisterPluginVersion"};
            Loaded loaded(options);
        },
        "");
}

} // namespace
