// The devices as a user and as a program sees them.
#include "host/kvx/devices/device_table.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

std::vector<kvx::DeviceFacts> someDevices()
{
    kvx::DeviceFacts speakers;
    speakers.id = 2;
    speakers.name = "Desk Speakers";
    speakers.maker = "Maker";
    speakers.uid = "desk:1";
    speakers.outputs = 2;
    speakers.rate = 44100;
    speakers.rates = {{44100, 44100}, {48000, 96000}};
    speakers.slice = 512;
    speakers.latency = 33;
    speakers.isAlive = true;
    speakers.isRunning = true;
    kvx::DeviceFacts mike;
    mike.id = 4;
    mike.name = "M\x1Bike";
    mike.inputs = 1;
    mike.rate = 22050.5;
    mike.slice = 64;
    mike.isAlive = true;
    kvx::DeviceFacts dead = mike;
    dead.id = 6;
    dead.name = "Old\xFF";
    dead.isAlive = false;
    return {speakers, mike, dead};
}

const kvx::Roles roles = {2, 2, 4};

TEST(DeviceTable, IsAlignedAndCutFreeWhereThereIsRoom)
{
    EXPECT_EQ(
        kvx::deviceTable(someDevices(), roles, 0),
        "no.  id  name           maker  UID     in  out     rate  rates              slice  latency  default "
        " "
        "state\n"
        "  0   2  Desk Speakers  Maker  desk:1   0    2    44100  44100 48000-96000    512       33  out sys "
        " "
        "running\n"
        "  1   4  M?ike                          1    0  22050.5                        64        0  in      "
        " "
        "idle\n"
        "  2   6  Old?                           1    0  22050.5                        64        0          "
        " "
        "dead\n");
}

TEST(DeviceTable, KeepsEverythingOnANarrowTerminal)
{
    EXPECT_EQ(kvx::deviceTable(someDevices(), roles, 80),
              "no.  id  name           in  out     rate  slice  latency  default  state\n"
              "  0   2  Desk Speakers   0    2    44100    512       33  out sys  running\n"
              "     maker Maker, UID desk:1, rates 44100 48000-96000\n"
              "  1   4  M?ike           1    0  22050.5     64        0  in       idle\n"
              "  2   6  Old?            1    0  22050.5     64        0           dead\n");
}

TEST(DeviceTable, AsJsonHasEveryFact)
{
    const auto json = nlohmann::json::parse(kvx::deviceJson(someDevices(), roles));
    ASSERT_EQ(json.size(), 3u);
    EXPECT_EQ(json[0], nlohmann::json({{"number", 0},
                                       {"id", 2},
                                       {"name", "Desk Speakers"},
                                       {"maker", "Maker"},
                                       {"uid", "desk:1"},
                                       {"inputChannels", 0},
                                       {"outputChannels", 2},
                                       {"rate", 44100.0},
                                       {"rates",
                                        {{{"minimum", 44100.0}, {"maximum", 44100.0}},
                                         {{"minimum", 48000.0}, {"maximum", 96000.0}}}},
                                       {"sliceFrames", 512},
                                       {"latencyFrames", 33},
                                       {"isDefaultOutput", true},
                                       {"isDefaultSystemOutput", true},
                                       {"isDefaultInput", false},
                                       {"isAlive", true},
                                       {"isRunning", true}}));
    EXPECT_EQ(json[1]["number"], 1);
    EXPECT_EQ(json[1]["name"], "M\x1Bike") << "a program gets the name as it is";
    EXPECT_EQ(json[1]["isDefaultInput"], true);
    EXPECT_EQ(json[1]["rates"].size(), 0u);
    EXPECT_EQ(json[2]["name"], "Old\xEF\xBF\xBD") << "but always UTF-8";
    EXPECT_EQ(json[2]["isAlive"], false);
    EXPECT_EQ(kvx::deviceJson({}, roles), "[]");
}

TEST(DeviceTable, PrintsRatesAsSinglesAndRanges)
{
    EXPECT_EQ(kvx::printRates({}), "");
    EXPECT_EQ(kvx::printRates({{44100, 44100}}), "44100");
    EXPECT_EQ(kvx::printRates({{1000, 768000}}), "1000-768000");
    EXPECT_EQ(kvx::printRates({{8000, 8000}, {11025.5, 48000}}), "8000 11025.5-48000");
}

} // namespace
