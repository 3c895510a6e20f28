// The property TimePitchUnit, which chooses between the two rate units.
#include "tests/auplayer/watched_player_fixture.h"

#include <cstdint>

namespace {

using namespace auplayer_test;

constexpr OSStatus refused = -10878;

using RateUnit = WatchedPlayerTest;

std::string bypassCall(const std::string& unit, const char* value)
{
    return "AudioUnitSetProperty(" + unit + ", 21, global, 0, " + value + ", 4 bytes)";
}

TEST_F(RateUnit, IsChosenByBypassingTheOther)
{
    for (const HostInteger before : {0, 1, 2, 5, -1})
        for (HostInteger value = -1; value <= 7; ++value)
            for (const OSStatus first : {OSStatus{0}, refused})
                for (const OSStatus second : {0, -10879}) {
                    SCOPED_TRACE(testing::Message() << before << " = " << value);
                    begin();
                    data().timePitchUnit = before;
                    spy::script().refusals = {{0, first}, {1, second}};
                    members.set<HostInteger>(object(), "TimePitchUnit", value);

                    const HostInteger mode = value == 0 ? 1 : value;
                    const bool isChange = (mode == 1 || mode == 2) && mode != before;
                    if (!isChange) {
                        EXPECT_EQ(spy::calls(), Notes());
                        EXPECT_EQ(data().lasterror, -1);
                        EXPECT_EQ(data().timePitchUnit, before);
                        continue;
                    }
                    EXPECT_EQ(spy::calls(),
                              mode == 2
                                  ? (Notes{bypassCall("timePitch", "1"), bypassCall("varispeed", "0")})
                                  : (Notes{bypassCall("varispeed", "1"), bypassCall("timePitch", "0")}));
                    EXPECT_EQ(seen(), (Lasterrors{-1, first}));
                    EXPECT_EQ(data().lasterror, second);
                    EXPECT_EQ(data().timePitchUnit, mode) << "also after a refusal";
                }
}

TEST_F(RateUnit, AnUnknownNumberChangesNothing)
{
    for (const HostInteger value : {HostInteger{3}, HostInteger{256}, HostInteger{257}, HostInteger{258},
                                    HostInteger{INT32_MAX}, HostInteger{INT32_MIN}}) {
        begin();
        data().timePitchUnit = 2;
        members.set<HostInteger>(object(), "TimePitchUnit", value);
        EXPECT_EQ(spy::calls(), Notes());
        EXPECT_EQ(data().timePitchUnit, 2);
        EXPECT_EQ(data().lasterror, -1);
    }
}

TEST_F(RateUnit, IsStoredBeforeALoadEvenIfThePlatformRefuses)
{
    for (const HostInteger value : {0, 1, 2}) {
        beginEmpty();
        spy::answer("AudioUnitSetProperty").status = -50;
        members.set<HostInteger>(object(), "TimePitchUnit", value);
        EXPECT_EQ(spy::calls(), (Notes{bypassCall("null", "1"), bypassCall("null", "0")}));
        EXPECT_EQ(data().lasterror, -50);
        EXPECT_EQ(data().timePitchUnit, value == 2 ? 2 : 1);
    }
}

TEST_F(RateUnit, IsNotStoredIfThePlatformThrows)
{
    for (const std::size_t throwing : {0u, 1u}) {
        begin();
        throwInCall(throwing);
        EXPECT_NO_THROW(members.set<HostInteger>(object(), "TimePitchUnit", 2));
        EXPECT_EQ(spy::calls().size(), throwing + 1);
        EXPECT_EQ(data().timePitchUnit, 0);
    }
}

} // namespace
