// What happened to a device, in words.
#include "host/kvx/devices/device_changes.h"

#include <gtest/gtest.h>

namespace {

using kvx::DeviceFacts;
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

TEST(DeviceChanges, AreALineEach)
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

TEST(DeviceChanges, OfRolesNameBothDevices)
{
    const auto nameOf = [](kvx::ObjectID id) { return id ? "#" + std::to_string(id) : std::string("none"); };
    EXPECT_EQ(kvx::changesOfRoles({2, 2, 4}, {2, 2, 4}, nameOf), Lines{});
    EXPECT_EQ(kvx::changesOfRoles({2, 2, 4}, {6, 2, 4}, nameOf), Lines{"default output: from #2 to #6"});
    EXPECT_EQ(kvx::changesOfRoles({2, 2, 4}, {2, 6, 0}, nameOf),
              (Lines{"default system output: from #2 to #6", "default input: from #4 to none"}));
}

TEST(DeviceChanges, TellComingAndGoing)
{
    DeviceFacts device = desk();
    device.name = "De\nsk";
    EXPECT_EQ(kvx::printArrival(device), "De?sk (id 7): came, 0 in, 2 out, 44100 Hz");
    EXPECT_EQ(kvx::printDeparture(device), "De?sk (id 7): went");
}

} // namespace
