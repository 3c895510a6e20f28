// Every feature of the library works in every host version. Each version has a separate process, because a
// host can load the library only once in a process.
#include "tests/endtoend/hostservices/library_features.h"
#include "tests/endtoend/loaded_host.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

using namespace endtoend;

struct Version {
    double version;
    int layout; ///< layout number of the class definitions that the library registers
};

void PrintTo(const Version& version, std::ostream* out)
{
    *out << version.version << ", layout " << version.layout;
}

class Versions : public testing::TestWithParam<Version> {};

TEST_P(Versions, SupportEveryFeature)
{
    host::Options options;
    options.version = GetParam().version;
    LoadedHost loaded(options);

    ASSERT_EQ(loaded.host.pluginClasses().size(), 5u);
    const char* const inOrder[] = {"AUPlayerKVX", "CoreAudioKVX", "CoreAudioListenerKVX",
                                   "CoreAudioPlayerKVX", "QTSoundStreamKVX"};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(loaded.host.pluginClasses()[i]->name, inOrder[i]);
        EXPECT_EQ(loaded.host.pluginClasses()[i]->layout, GetParam().layout) << inOrder[i];
    }
    for (const auto& [feature, result] : useAllFeatures(loaded.host)) EXPECT_EQ(result, "works") << feature;
    EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
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
