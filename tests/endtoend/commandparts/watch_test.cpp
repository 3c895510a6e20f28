// The device watch of the command, with listeners of the library: each change prints one line.
#include "tests/endtoend/loaded_host.h"

#include "host/kvx/devices/demo.h"
#include "host/kvx/devices/device_text.h"
#include "host/kvx/devices/watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace {

using namespace endtoend;
using Lines = std::vector<std::string>;

constexpr std::size_t perSystem = 4, perDevice = 7; // listener counts

template <class T>
std::string bytes(T value)
{
    return kvx::bytesOf(value);
}

struct DeviceWatch : LoadedHostTest {
    std::optional<kvx::CoreAudio> core{loaded.host};
    Lines lines;
    std::optional<kvx::Watch> watch;

    DeviceWatch()
    {
        watch.emplace(loaded.host, *core, [this](const std::string& line) { lines.push_back(line); });
    }

    static KVXDeviceID plugIn(const char* name)
    {
        KVXSimulatedDevice description = {};
        description.name = name;
        return KVXPlatformAddSimulatedDevice(&description);
    }

    /// Wait until the watch has printed `last`, and return all lines since the last call. Without that line,
    /// the time limit of the test ends the wait.
    Lines linesUntil(const std::string& last)
    {
        while (std::find(lines.begin(), lines.end(), last) == lines.end()) watch->reportChanges(0.05);
        return std::exchange(lines, {});
    }

    void write(const kvx::PropertyAddress& address, const std::string& value)
    {
        ASSERT_EQ(core->write(address, value), 0) << kvx::formatCode(address.selector);
    }

    /// The number of live listeners, all of which the watch has added.
    std::size_t listenerCount() const { return loaded.host.leaks().countOfClass("CoreAudioListenerKVX"); }

    std::string named(const char* name, KVXDeviceID id)
    {
        return std::string(name) + " (id " + std::to_string(id) + ")";
    }
};

TEST_F(DeviceWatch, KnowsTheDevicesFromTheStart)
{
    ASSERT_EQ(watch->devices().size(), 2u);
    EXPECT_EQ(watch->devices()[0].id, KVXPlatformBuiltInSimulatedDevice());
    EXPECT_EQ(watch->roles().output, KVXPlatformBuiltInSimulatedDevice());
    EXPECT_EQ(listenerCount(), perSystem + 2 * perDevice);
    watch->reportChanges(0);
    EXPECT_EQ(lines, Lines{}) << "no changes";
}

TEST_F(DeviceWatch, NewDevicesGetListenersAndRemovedDevicesLoseThem)
{
    const auto desk = plugIn("Desk");
    EXPECT_EQ(linesUntil(named("Desk", desk) + ": came, 0 in, 2 out, 44100 Hz").size(), 1u);
    EXPECT_EQ(listenerCount(), perSystem + 3 * perDevice);
    write({desk, 'nsrt'}, bytes(48000.0));
    EXPECT_EQ(linesUntil(named("Desk", desk) + ": rate from 44100 to 48000 Hz").size(), 1u);
    KVXPlatformRemoveSimulatedDevice(desk);
    EXPECT_EQ(linesUntil(named("Desk", desk) + ": went").size(), 1u);
    EXPECT_EQ(listenerCount(), perSystem + 2 * perDevice);
    EXPECT_EQ(watch->devices().size(), 2u);
}

TEST_F(DeviceWatch, EachKindOfChangePrintsOneLine)
{
    const auto desk = plugIn("Desk");
    const std::string name = named("Desk", desk);
    linesUntil(name + ": came, 0 in, 2 out, 44100 Hz");
    const struct {
        kvx::PropertyAddress address;
        std::string value;
        const char* line;
    } facts[] = {
        {{desk, 'nsrt'}, bytes(96000.0), ": rate from 44100 to 96000 Hz"},
        {{desk, 'fsiz'}, bytes(std::uint32_t(64)), ": slice from 512 to 64 frames"},
        {{desk, 'volm', 'outp', 1}, bytes(0.5f), ": volume of channel 1 from 1 to 0.5"},
        {{desk, 'volm', 'outp', 2}, bytes(0.25f), ": volume of channel 2 from 1 to 0.25"},
        {{desk, 'mute', 'outp', 0}, bytes(std::uint32_t(1)), ": mute on"},
        {{desk, 'mute', 'outp', 2}, bytes(std::uint32_t(1)), ": mute of channel 2 on"},
        {{desk, 'mute', 'outp', 0}, bytes(std::uint32_t(0)), ": mute off"},
    };
    for (const auto& fact : facts) {
        write(fact.address, fact.value);
        EXPECT_EQ(linesUntil(name + fact.line), Lines{name + fact.line});
        write(fact.address, fact.value); // a write of the present value is not a change
        watch->reportChanges(0.02);
        EXPECT_EQ(lines, Lines{});
    }
    KVXPlatformConfigureDevice(desk, 0, 4, 0);
    EXPECT_EQ(linesUntil(name + ": output channels from 2 to 4").size(), 1u);
    KVXPlatformKillDevice(desk);
    EXPECT_EQ(linesUntil(name + ": no longer alive").size(), 1u);
    KVXPlatformRemoveSimulatedDevice(desk);
    EXPECT_EQ(linesUntil(name + ": went"), Lines{name + ": went"});
}

TEST_F(DeviceWatch, StartAndStopPrintOneLineEach)
{
    const auto desk = plugIn("Desk");
    const std::string name = named("Desk", desk);
    linesUntil(name + ": came, 0 in, 2 out, 44100 Hz");
    {
        const host::Object player = loaded.host.create(playerClass);
        player.set("OutputDeviceID", std::int64_t(desk));
        player.set("NoUnderflow", true);
        ASSERT_TRUE(player.call("Start").boolean());
        EXPECT_EQ(linesUntil(name + ": running"), Lines{name + ": running"});
        player.set("NoUnderflow", false);
        player.call("Stop");
    }
    EXPECT_EQ(linesUntil(name + ": stopped"), Lines{name + ": stopped"});
    KVXPlatformRemoveSimulatedDevice(desk);
    linesUntil(name + ": went");
}

TEST_F(DeviceWatch, RolesMoveToTheNewDefaultDevice)
{
    const auto builtIn = KVXPlatformBuiltInSimulatedDevice();
    const auto desk = plugIn("Desk");
    const std::string name = named("Desk", desk), former = named("Simulated Device", builtIn);
    linesUntil(name + ": came, 0 in, 2 out, 44100 Hz");
    write({kvx::systemObject, 'dOut'}, bytes(desk));
    EXPECT_EQ(linesUntil("default output: from " + former + " to " + name).size(), 1u);
    write({kvx::systemObject, 'sOut'}, bytes(desk));
    EXPECT_EQ(linesUntil("default system output: from " + former + " to " + name).size(), 1u);
    KVXPlatformRemoveSimulatedDevice(desk);
    const Lines seen = linesUntil(name + ": went");
    ASSERT_GE(seen.size(), 3u);
    EXPECT_EQ(Lines(seen.end() - 3, seen.end()),
              (Lines{"default output: from " + name + " to " + former,
                     "default system output: from " + name + " to " + former, name + ": went"}))
        << "the removed device is still named";
}

TEST_F(DeviceWatch, DevicesAddedAndRemovedBetweenTwoReportsLeaveNoListeners)
{
    for (int i = 0; i < 50; ++i) KVXPlatformRemoveSimulatedDevice(plugIn("Flash"));
    const auto desk = plugIn("Desk");
    linesUntil(named("Desk", desk) + ": came, 0 in, 2 out, 44100 Hz");
    EXPECT_EQ(watch->devices().size(), 3u);
    EXPECT_EQ(listenerCount(), perSystem + 3 * perDevice);
    KVXPlatformRemoveSimulatedDevice(desk);
    EXPECT_EQ(linesUntil(named("Desk", desk) + ": went").back(), named("Desk", desk) + ": went");
    EXPECT_EQ(listenerCount(), perSystem + 2 * perDevice);
}

TEST_F(DeviceWatch, EndsWithPendingEvents)
{
    const auto desk = plugIn("Desk");
    linesUntil(named("Desk", desk) + ": came, 0 in, 2 out, 44100 Hz");
    for (int i = 1; i <= 100; ++i) write({desk, 'nsrt'}, bytes(double(44100 + i)));
    watch.reset(); // destroy the watch while 100 events are pending
    KVXPlatformRemoveSimulatedDevice(desk);
    while (KVXPlatformDrainMainQueue(0.05) > 0) {
    }
    EXPECT_EQ(lines, Lines{}) << "no lines after the end of the watch";
}

TEST_F(DeviceWatch, DemoRemovesItsDevicesAtAnyStep)
{
    for (int steps = 0; steps <= 11; ++steps) {
        SCOPED_TRACE(steps);
        {
            kvx::Demo demo(loaded.host, *core, 0);
            for (int i = 0; i < steps; ++i) demo.stepIfDue();
        }
        EXPECT_EQ(KVXPlatformGetDevices(nullptr, 0), 2u);
    }
}

} // namespace
