// Start, stop and reset: the platform calls, and the value of `Lasterror`.
#include "tests/auplayer/watched_player_fixture.h"

namespace {

using namespace auplayer_test;

class Transport : public WatchedPlayerTest {
protected:
    /// Load a file and set a play position.
    void begin()
    {
        WatchedPlayerTest::begin();
        data().position = 321;
    }
};

const Notes queried = {"AUGraphIsRunning(graph1)"};
const Notes started = {"AUGraphIsRunning(graph1)", "AUGraphStart(graph1)"};
const Notes stopped = {"AUGraphIsRunning(graph1)", "AUGraphStop(graph1)"};

constexpr OSStatus badQuery = -10860, badStart = -10863, badStop = -10862;

TEST_F(Transport, StartsAStoppedGraphAndStopsARunningOne)
{
    enum Member { play, pause, playing };
    const struct {
        Member member;
        HostBoolean value; ///< of `Playing`
        bool isRunning;
        OSStatus query, start, stop;
        const Notes& calls;
        HostInteger lasterror;
        bool runsAfterwards;
        const char* why;
    } rows[] = {
        // clang-format off
        //                 running query     start     stop
        {play,    0,       false, 0,        0,        0,       started, 0,        true,  "Play"},
        {play,    0,       true,  0,        0,        0,       queried, 0,        true,  "Play while running"},
        {play,    0,       false, 0,        badStart, 0,       started, badStart, false, "Play, refused"},
        {play,    0,       false, badQuery, 0,        0,       started, 0,        true,  "Play, state unknown"},
        {play,    0,       true,  badQuery, 0,        0,       started, 0,        true,  "Play while running, state unknown"},
        {play,    0,       false, badQuery, badStart, 0,       started, badStart, false, "Play, state unknown, refused"},
        {pause,   0,       true,  0,        0,        0,       stopped, 0,        false, "Pause"},
        {pause,   0,       false, 0,        0,        0,       queried, 0,        false, "Pause while stopped"},
        {pause,   0,       true,  0,        0,        badStop, stopped, badStop,  true,  "Pause, refused"},
        {pause,   0,       true,  badQuery, 0,        0,       queried, badQuery, true,  "Pause while running, state unknown"},
        {pause,   0,       false, badQuery, 0,        0,       queried, badQuery, false, "Pause while stopped, state unknown"},
        {playing, 1,       false, 0,        0,        0,       started, 0,        true,  "Playing = true"},
        {playing, 1,       true,  0,        0,        0,       queried, 0,        true,  "Playing = true while running"},
        {playing, 1,       false, 0,        badStart, 0,       started, badStart, false, "Playing = true, refused"},
        {playing, 1,       false, badQuery, 0,        0,       started, 0,        true,  "Playing = true, state unknown"},
        {playing, 0,       true,  0,        0,        0,       stopped, 0,        false, "Playing = false"},
        {playing, 0,       false, 0,        0,        0,       queried, 0,        false, "Playing = false while stopped"},
        {playing, 0,       true,  0,        0,        badStop, stopped, badStop,  true,  "Playing = false, refused"},
        {playing, 0,       true,  badQuery, 0,        0,       queried, badQuery, true,  "Playing = false, state unknown"},
        {playing, 2,       false, 0,        0,        0,       queried, 0,        false, "2 is not true"},
        {playing, 2,       true,  0,        0,        0,       queried, 0,        true,  "2 is not false"},
        {playing, 255,     false, 0,        0,        0,       queried, 0,        false, "255 is not true"},
        {playing, 255,     true,  0,        0,        0,       queried, 0,        true,  "255 is not false"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        begin();
        graph_spy::platform().isRunning = row.isRunning;
        spy::answer("AUGraphIsRunning").status = row.query;
        spy::answer("AUGraphStart").status = row.start;
        spy::answer("AUGraphStop").status = row.stop;
        switch (row.member) {
        case play:
            members.call<void>("Play", object());
            break;
        case pause:
            members.call<void>("Pause", object());
            break;
        case playing:
            members.set<HostBoolean>(object(), "Playing", row.value);
        }
        EXPECT_EQ(spy::calls(), row.calls);
        EXPECT_EQ(data().lasterror, row.lasterror);
        ASSERT_FALSE(seen().empty());
        EXPECT_EQ(seen().front(), -1);
        EXPECT_EQ(graph_spy::platform().isRunning, row.runsAfterwards);
        EXPECT_EQ(data().position, 321u);
        EXPECT_EQ(raised(), Notes());
    }
}

TEST_F(Transport, ReturnsWhetherTheGraphRuns)
{
    const struct {
        bool isRunning;
        OSStatus status;
        HostBoolean isPlaying;
    } rows[] = {{false, 0, 0}, {true, 0, 1}, {true, badQuery, 0}, {false, badQuery, 0}, {true, 1, 0}};
    for (const auto& row : rows) {
        begin();
        graph_spy::platform().isRunning = row.isRunning;
        spy::answer("AUGraphIsRunning").status = row.status;
        EXPECT_EQ(members.get<HostBoolean>(object(), "Playing"), row.isPlaying);
        EXPECT_EQ(spy::calls(), queried);
        EXPECT_EQ(data().lasterror, row.status);
        EXPECT_EQ(seen(), Lasterrors{-1});
    }
}

TEST_F(Transport, PlayAndPauseMakeNoCallWithoutAGraph)
{
    for (const char* method : {"Play", "Pause"}) {
        data().lasterror = 4711;
        members.call<void>(method, object());
        EXPECT_EQ(data().lasterror, -1);
        EXPECT_EQ(spy::calls(), Notes());
    }
}

TEST_F(Transport, PlayingCallsThePlatformEvenWithoutAGraph)
{
    spy::answer("AUGraphIsRunning").status = -50;
    spy::answer("AUGraphStart").status = -51;
    data().lasterror = 4711;
    EXPECT_EQ(members.get<HostBoolean>(object(), "Playing"), 0);
    EXPECT_EQ(data().lasterror, -50);
    members.set<HostBoolean>(object(), "Playing", 0);
    EXPECT_EQ(data().lasterror, -50);
    members.set<HostBoolean>(object(), "Playing", 1);
    EXPECT_EQ(data().lasterror, -51);
    EXPECT_EQ(spy::calls(), (Notes{"AUGraphIsRunning(null)", "AUGraphIsRunning(null)",
                                   "AUGraphIsRunning(null)", "AUGraphStart(null)"}));
}

TEST_F(Transport, RestartsTheGraphRepeatedly)
{
    begin();
    for (int i = 0; i < 3; ++i) {
        members.call<void>("Play", object());
        EXPECT_EQ(members.get<HostBoolean>(object(), "Playing"), 1);
        members.call<void>("Pause", object());
        EXPECT_EQ(members.get<HostBoolean>(object(), "Playing"), 0);
    }
}

// ---- reset ----

TEST_F(Transport, ResetsFiveUnitsInOrder)
{
    begin();
    members.call<void>("Reset", object());
    EXPECT_EQ(spy::calls(),
              (Notes{"AudioUnitReset(mixer, global, 0)", "AudioUnitReset(timePitch, global, 0)",
                     "AudioUnitReset(varispeed, global, 0)", "AudioUnitReset(equalizer, global, 0)",
                     "AudioUnitReset(output, global, 0)"}));
    EXPECT_EQ(seen(), (Lasterrors{-1, 0, 0, 0, 0}));
    EXPECT_EQ(data().lasterror, 0);
    EXPECT_EQ(data().position, 321u);
}

TEST_F(Transport, ResetsAllUnitsAfterARefusal)
{
    for (std::size_t refusing = 0; refusing < 5; ++refusing) {
        begin();
        spy::script().refusals = {{refusing, -10867}};
        members.call<void>("Reset", object());
        EXPECT_EQ(spy::calls().size(), 5u);
        EXPECT_EQ(data().lasterror, refusing == 4 ? -10867 : 0) << "the last status is kept";
        EXPECT_EQ(data().position, 321u);
    }
}

TEST_F(Transport, ResetsOnlyExistingUnits)
{
    const struct {
        AudioUnit auplayer::AUPlayerData::*unit;
        const char* name;
    } units[] = {{&auplayer::AUPlayerData::mixer, "mixer"},
                 {&auplayer::AUPlayerData::timePitch, "timePitch"},
                 {&auplayer::AUPlayerData::varispeed, "varispeed"},
                 {&auplayer::AUPlayerData::equalizer, "equalizer"},
                 {&auplayer::AUPlayerData::output, "output"}};
    for (unsigned present = 0; present < 32; ++present) {
        begin();
        Notes expected;
        for (unsigned i = 0; i < 5; ++i)
            if (present >> i & 1)
                expected.push_back(std::string("AudioUnitReset(") + units[i].name + ", global, 0)");
            else
                data().*units[i].unit = nullptr;
        members.call<void>("Reset", object());
        EXPECT_EQ(spy::calls(), expected);
        EXPECT_EQ(data().lasterror, present ? 0 : -1);
    }
}

TEST_F(Transport, ResetsNothingBeforeALoad)
{
    data().lasterror = 4711;
    members.call<void>("Reset", object());
    EXPECT_EQ(spy::calls(), Notes());
    EXPECT_EQ(data().lasterror, -1);
}

// ---- exceptions ----

TEST_F(Transport, CatchesExceptionsOfThePlatform)
{
    const struct {
        const char* function;
        const char* method;
        bool isRunning;
    } rows[] = {
        {"AUGraphIsRunning", "Play", false}, {"AUGraphStart", "Play", false},
        {"AUGraphIsRunning", "Pause", true}, {"AUGraphStop", "Pause", true},
        {"AudioUnitReset", "Reset", false},
    };
    for (const auto& row : rows) {
        begin();
        graph_spy::platform().isRunning = row.isRunning;
        spy::answer(row.function).during = [] { throw Thrown(); };
        EXPECT_NO_THROW(members.call<void>(row.method, object())) << row.function;
        EXPECT_EQ(data().position, 321u);
    }
    begin();
    spy::answer("AUGraphIsRunning").during = [] { throw Thrown(); };
    EXPECT_NO_THROW(EXPECT_EQ(members.get<HostBoolean>(object(), "Playing"), 0));
    EXPECT_NO_THROW(members.set<HostBoolean>(object(), "Playing", 1));
}

} // namespace
