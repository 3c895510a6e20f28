// The properties for the graph's output device and the system's default device.
#include "tests/auplayer/watched_player_fixture.h"

namespace {

using namespace auplayer_test;

class Device : public WatchedPlayerTest {};

const std::uint32_t ids[] = {0, 1, 2, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

TEST_F(Device, IsReadFromTheOutputUnit)
{
    for (const std::uint32_t id : ids) {
        begin();
        spy::answer("AudioUnitGetProperty").value = graph_spy::bytesOf(id);
        EXPECT_EQ(members.get<std::uint32_t>(object(), "CurrentDeviceID"), id);
        EXPECT_EQ(spy::calls(), Notes{"AudioUnitGetProperty(output, 2000, global, 0, size 4)"});
        EXPECT_EQ(seen(), Lasterrors{-1});
        EXPECT_EQ(data().lasterror, 0);
    }
}

TEST_F(Device, IsSetOnTheOutputUnit)
{
    for (const std::uint32_t id : ids)
        for (const OSStatus status : {0, -10851}) {
            begin();
            spy::answer("AudioUnitSetProperty").status = status;
            members.set<std::uint32_t>(object(), "CurrentDeviceID", id);
            EXPECT_EQ(spy::calls(), Notes{"AudioUnitSetProperty(output, 2000, global, 0, " +
                                          std::to_string(id) + ", 4 bytes)"});
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, status);
        }
}

TEST_F(Device, IsZeroAfterARefusal)
{
    begin();
    spy::answer("AudioUnitGetProperty").status = -10879;
    spy::answer("AudioUnitGetProperty").leavesGarbage = false;
    EXPECT_EQ(members.get<std::uint32_t>(object(), "CurrentDeviceID"), 0u);
    EXPECT_EQ(data().lasterror, -10879);
}

TEST_F(Device, CallsThePlatformEvenBeforeALoad)
{
    beginEmpty();
    spy::answer("AudioUnitGetProperty").status = -50;
    spy::answer("AudioUnitGetProperty").leavesGarbage = false;
    spy::answer("AudioUnitSetProperty").status = -51;
    EXPECT_EQ(members.get<std::uint32_t>(object(), "CurrentDeviceID"), 0u);
    EXPECT_EQ(data().lasterror, -50);
    members.set<std::uint32_t>(object(), "CurrentDeviceID", 3);
    EXPECT_EQ(data().lasterror, -51);
    EXPECT_EQ(spy::calls(), (Notes{"AudioUnitGetProperty(null, 2000, global, 0, size 4)",
                                   "AudioUnitSetProperty(null, 2000, global, 0, 3, 4 bytes)"}));
}

TEST_F(Device, OfTheSystemIsReadFromTheHardware)
{
    for (const std::uint32_t id : ids) {
        beginEmpty();
        spy::answer("AudioHardwareGetProperty").value = graph_spy::bytesOf(id);
        EXPECT_EQ(members.get<std::uint32_t>(object(), "DefaultDeviceID"), id);
        EXPECT_EQ(spy::calls(), Notes{"AudioHardwareGetProperty('dOut', size 4)"});
        EXPECT_EQ(seen(), Lasterrors{-1});
        EXPECT_EQ(data().lasterror, 0);
    }
    spy::answer("AudioHardwareGetProperty").status = 'stop';
    spy::answer("AudioHardwareGetProperty").leavesGarbage = false;
    EXPECT_EQ(members.get<std::uint32_t>(object(), "DefaultDeviceID"), 0u);
    EXPECT_EQ(data().lasterror, 'stop');
    EXPECT_EQ(members.property("DefaultDeviceID").setter, nullptr);
}

TEST_F(Device, CatchesExceptionsOfThePlatform)
{
    begin();
    spy::script().inEachCall = [](std::size_t) { throw Thrown(); };
    EXPECT_NO_THROW(EXPECT_EQ(members.get<std::uint32_t>(object(), "CurrentDeviceID"), 0u));
    EXPECT_NO_THROW(members.set<std::uint32_t>(object(), "CurrentDeviceID", 1));
    EXPECT_NO_THROW(EXPECT_EQ(members.get<std::uint32_t>(object(), "DefaultDeviceID"), 0u));
    EXPECT_EQ(data().lasterror, -1);
}

} // namespace
