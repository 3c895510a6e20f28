// Tests of the functions that format devices and changes of devices as text or JSON.
#include "host/kvx/devices/device_text.h"

#include "host/kvx/classes_and_devices.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using kvx::DeviceFacts;

std::vector<DeviceFacts> someDevices()
{
    DeviceFacts speakers;
    speakers.id = 2;
    speakers.name = "Desk Speakers";
    speakers.system = "JACK";
    speakers.maker = "Maker";
    speakers.uid = "desk:1";
    speakers.outputs = 2;
    speakers.rate = 44100;
    speakers.rates = {{44100, 44100}, {48000, 96000}};
    speakers.slice = 512;
    speakers.latency = 33;
    speakers.isAlive = true;
    speakers.isRunning = true;
    DeviceFacts mike;
    mike.id = 4;
    mike.name = "M\x1Bike";
    mike.inputs = 1;
    mike.rate = 22050.5;
    mike.slice = 64;
    mike.isAlive = true;
    DeviceFacts dead = mike;
    dead.id = 6;
    dead.name = "Old\xFF";
    dead.isAlive = false;
    return {speakers, mike, dead};
}

const kvx::Roles roles = {2, 2, 4};

TEST(DeviceTable, IsAlignedAndUncutWithoutATerminal)
{
    EXPECT_EQ(kvx::deviceTable(someDevices(), roles, 0),
              "no.  id  name           system  maker  UID     in  out     rate  rates              slice  "
              "latency  default "
              " "
              "state\n"
              "  0   2  Desk Speakers  JACK    Maker  desk:1   0    2    44100  44100 48000-96000    512     "
              "  33  out sys "
              " "
              "running\n"
              "  1   4  M?ike                                  1    0  22050.5                        64     "
              "   0  in      "
              " "
              "idle\n"
              "  2   6  Old?                                   1    0  22050.5                        64     "
              "   0          "
              " "
              "dead\n");
}

TEST(DeviceTable, KeepsEveryCellOnANarrowTerminal)
{
    EXPECT_EQ(kvx::deviceTable(someDevices(), roles, 80),
              "no.  id  name           system  in  out     rate  slice  latency  default  state\n"
              "  0   2  Desk Speakers  JACK     0    2    44100    512       33  out sys  running\n"
              "     maker Maker, UID desk:1, rates 44100 48000-96000\n"
              "  1   4  M?ike                   1    0  22050.5     64        0  in       idle\n"
              "  2   6  Old?                    1    0  22050.5     64        0           dead\n");
}

TEST(DeviceJson, HasEveryPropertyInUtf8)
{
    const auto json = nlohmann::json::parse(kvx::deviceJson(someDevices(), roles));
    ASSERT_EQ(json.size(), 3u);
    EXPECT_EQ(json[0], nlohmann::json({{"number", 0},
                                       {"id", 2},
                                       {"name", "Desk Speakers"},
                                       {"system", "JACK"},
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
    EXPECT_EQ(json[1]["name"], "M\x1Bike") << "the name is unchanged, with its control character";
    EXPECT_EQ(json[1]["isDefaultInput"], true);
    EXPECT_EQ(json[1]["rates"].size(), 0u);
    EXPECT_EQ(json[2]["name"], "Old\xEF\xBF\xBD") << "an invalid byte becomes the replacement character";
    EXPECT_EQ(json[2]["isAlive"], false);
    EXPECT_EQ(kvx::deviceJson({}, roles), "[]");
}

TEST(DeviceRates, ArePrintedAsNumbersAndRanges)
{
    EXPECT_EQ(kvx::formatRates({}), "");
    EXPECT_EQ(kvx::formatRates({{44100, 44100}}), "44100");
    EXPECT_EQ(kvx::formatRates({{1000, 768000}}), "1000-768000");
    EXPECT_EQ(kvx::formatRates({{8000, 8000}, {11025.5, 48000}}), "8000 11025.5-48000");
}

using Lines = std::vector<std::string>;

DeviceFacts desk()
{
    DeviceFacts device;
    device.id = 7;
    device.name = "Desk";
    device.outputs = 2;
    device.rate = 44100;
    device.slice = 512;
    device.isAlive = true;
    device.volumes = {{1, 1.0f}, {2, 1.0f}};
    device.mutes = {{0, false}, {1, false}, {2, false}};
    return device;
}

TEST(DeviceChanges, HaveOneLineEach)
{
    const struct {
        void (*change)(DeviceFacts&);
        Lines lines;
    } facts[] = {
        {[](DeviceFacts&) {}, {}},
        {[](DeviceFacts& d) { d.rate = 48000; }, {"Desk (id 7): rate from 44100 to 48000 Hz"}},
        {[](DeviceFacts& d) { d.slice = 64; }, {"Desk (id 7): slice from 512 to 64 frames"}},
        {[](DeviceFacts& d) { d.outputs = 1; }, {"Desk (id 7): output channels from 2 to 1"}},
        {[](DeviceFacts& d) { d.inputs = 1; }, {"Desk (id 7): input channels from 0 to 1"}},
        {[](DeviceFacts& d) { d.volumes[2] = 0.25f; }, {"Desk (id 7): volume of channel 2 from 1 to 0.25"}},
        {[](DeviceFacts& d) { d.mutes[0] = true; }, {"Desk (id 7): mute on"}},
        {[](DeviceFacts& d) { d.mutes[2] = true; }, {"Desk (id 7): mute of channel 2 on"}},
        {[](DeviceFacts& d) { d.isRunning = true; }, {"Desk (id 7): running"}},
        {[](DeviceFacts& d) { d.isAlive = false; }, {"Desk (id 7): no longer alive"}},
        {[](DeviceFacts& d) { d.latency = 5; }, {}},
        {[](DeviceFacts& d) {
             d.rate = 48000;
             d.volumes = {{1, 0.5f}, {2, 0.5f}};
             d.isRunning = true;
         },
         {"Desk (id 7): rate from 44100 to 48000 Hz", "Desk (id 7): volume of channel 1 from 1 to 0.5",
          "Desk (id 7): volume of channel 2 from 1 to 0.5", "Desk (id 7): running"}},
        {[](DeviceFacts& d) { d.volumes.erase(2), d.volumes[3] = 0; }, {}},
    };
    for (const auto& fact : facts) {
        DeviceFacts after = desk();
        fact.change(after);
        EXPECT_EQ(kvx::changesOfDevice(desk(), after), fact.lines);
    }
    DeviceFacts before = desk();
    before.isRunning = before.mutes[0] = true;
    before.isAlive = false;
    EXPECT_EQ(kvx::changesOfDevice(before, desk()),
              (Lines{"Desk (id 7): mute off", "Desk (id 7): stopped", "Desk (id 7): alive"}));
}

TEST(RoleChanges, NameBothDevices)
{
    const auto nameOf = [](kvx::ObjectID id) { return id ? "#" + std::to_string(id) : std::string("none"); };
    EXPECT_EQ(kvx::changesOfRoles({2, 2, 4}, {2, 2, 4}, nameOf), Lines{});
    EXPECT_EQ(kvx::changesOfRoles({2, 2, 4}, {6, 2, 4}, nameOf), Lines{"default output: from #2 to #6"});
    EXPECT_EQ(kvx::changesOfRoles({2, 2, 4}, {2, 6, 0}, nameOf),
              (Lines{"default system output: from #2 to #6", "default input: from #4 to none"}));
}

TEST(DeviceText, PrintsArrivalAndDepartureWithAPlainName)
{
    DeviceFacts device = desk();
    device.name = "De\nsk";
    EXPECT_EQ(kvx::formatArrival(device), "De?sk (id 7): came, 0 in, 2 out, 44100 Hz");
    EXPECT_EQ(kvx::formatDeparture(device), "De?sk (id 7): went");
}

} // namespace
