// Seconds as host programs see them, frames as the record has them.
#include "tests/auplayer/player_test.h"

#include <cmath>
#include <limits>

namespace {

using namespace auplayer_test;

constexpr double inf = INFINITY, unset = auplayer::unset;

class Times : public PlayerTest {
protected:
    void measure(std::uint32_t endFrame, double trackLength)
    {
        data().endFrame = endFrame;
        data().trackLength = trackLength;
    }

    /// A file of 44 100 frames a second, ten seconds long.
    void measure() { measure(441000, 10); }

    void expectUntouched()
    {
        EXPECT_EQ(data().lasterror, 4711);
        EXPECT_EQ(graph_spy::calls(), Notes());
        EXPECT_EQ(host().calls(), fake::Notes());
    }
};

/// Equal, or not-a-number both.
void expectSame(double value, double expected, const char* why)
{
    if (std::isnan(expected))
        EXPECT_TRUE(std::isnan(value)) << why << ": " << value;
    else
        EXPECT_EQ(value, expected) << why;
}

// ---- the position ----

TEST_F(Times, TheCurrentTimeIsWrittenInFrames)
{
    const struct {
        std::uint32_t endFrame;
        double trackLength, seconds;
        std::uint32_t position;
        const char* why;
    } rows[] = {
        // clang-format off
        {441000, 10,        0,              0,          "the start"},
        {441000, 10,        -0.0,           0,          "from the other side"},
        {441000, 10,        2.5,            110250,     "a time"},
        {441000, 10,        10,             441000,     "the end"},
        {441000, 10,        20,             882000,     "nothing is clamped"},
        {441000, 10,        1.0 / 44100,    1,          "a frame"},
        {441000, 10,        0.99 / 44100,   0,          "not quite: toward zero"},
        {441000, 10,        -0.99 / 44100,  0,          "from below, too"},
        {441000, 10,        -1.0 / 44100,   0xFFFFFFFF, "a frame before the start"},
        {441000, 10,        -1,             0xFFFF53BC, "a second before the start wraps"},
        {4096, 4,           4194303.9990234375, 0xFFFFFFFF, "2^32 frames less one"},
        {4096, 4,           4194304,        0,          "2^32 frames wrap"},
        {4096, 4,           4194304.0009765625, 1,      "and one more"},
        {4096, 4,           -4194304,       0,          "downwards"},
        {4096, 4,           9007199254740991.0, 0xFFFFFC00, "the greatest that 64 bits hold"},
        {4096, 4,           9007199254740992.0, 0,      "2^63 frames"},
        {4096, 4,           -9007199254740992.0, 0,     "-2^63 frames"},
        {4096, 4,           -9007199254740991.0, 0x400, "and the one in front of it"},
        {441000, 10,        1e300,          0,          "a huge time"},
        {441000, 10,        -1e300,         0,          "a huge time before the start"},
        {441000, 10,        inf,            0,          "infinity"},
        {441000, 10,        -inf,           0,          "minus infinity"},
        {441000, 10,        NAN,            0,          "no number"},
        {0, 0,              2.5,            0,          "before a load"},
        {0, 10,             2.5,            0,          "an empty file"},
        {441000, 0,         2.5,            0,          "frames in no time"},
        {1000, 3,           1,              333,        "frames that are no sample rate"},
        {1000, 3,           2,              666,        "twice them"},
        {1000, 3,           3,              1000,       "all of them"},
        {16777217, 1,       1,              16777217,   "more digits than single precision has"},
        {4294967295u, 1,    1,              0xFFFFFFFF, "the longest file"},
        {4294967295u, 1,    2,              0xFFFFFFFE, "twice that"},
        {441000, -10,       2.5,            0xFFFE5156, "a length before the start is the platform's doing"},
        {441000, NAN,       2.5,            0,          "and so is none"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        measure(row.endFrame, row.trackLength);
        data().position = 77;
        data().lasterror = 4711;
        set<double>(object(), "CurrentTime", row.seconds);
        EXPECT_EQ(data().position, row.position);
        expectUntouched();
    }
}

TEST_F(Times, TheCurrentTimeIsReadInSeconds)
{
    const struct {
        std::uint32_t endFrame;
        double trackLength;
        std::uint32_t position;
        double seconds;
        const char* why;
    } rows[] = {
        {441000, 10, 0, 0.0, "the start"},
        {441000, 10, 1, 1.0 / 44100, "a frame"},
        {441000, 10, 110250, 2.5, "a time"},
        {441000, 10, 441000, 10.0, "the end"},
        {441000, 10, 0xFFFFFFFF, 4294967295.0 / 44100, "a position is never negative"},
        {441000, 10, 0x80000000, 2147483648.0 / 44100, "nor this one"},
        {1000, 3, 500, 500 / (1000.0 / 3), "divided by frames a second, not times a frame's length"},
        {0, 0, 0, 0.0, "before a load"},
        {0, 0, 5, NAN, "a position before a load"},
        {0, 10, 5, inf, "and in an empty file"},
        {441000, 0, 5, 0.0, "frames in no time"},
    };
    for (const auto& row : rows) {
        measure(row.endFrame, row.trackLength);
        data().position = row.position;
        data().lasterror = 4711;
        expectSame(get<double>(object(), "CurrentTime"), row.seconds, row.why);
        EXPECT_EQ(data().position, row.position);
        expectUntouched();
    }
    EXPECT_FALSE(std::signbit(get<double>(object(), "CurrentTime")));
}

TEST_F(Times, TheFramesOfASecondAreThoseReadOverTheLengthNotTheRate)
{
    ASSERT_TRUE(load()); // 1000 frames in 2.5 seconds, of a file of 48000 Hz
    EXPECT_EQ(get<double>(object(), "SampleRate"), 48000.0);
    set<double>(object(), "CurrentTime", 1.0);
    EXPECT_EQ(data().position, 400u);
    set<double>(object(), "LoopIn", 1.5);
    EXPECT_EQ(data().loopIn, 600.0);
}

// ---- what is only read ----

TEST_F(Times, TheLengthIsTheField)
{
    for (const double length : {0.0, 2.5, 1e300, -1.0, inf}) {
        data().trackLength = length;
        data().lasterror = 4711;
        EXPECT_EQ(get<double>(object(), "TrackLength"), length);
        expectUntouched();
    }
    EXPECT_EQ(propertyRow("TrackLength").setter, nullptr);
}

TEST_F(Times, TheRateIsTheFieldAndForgetsTheLastError)
{
    for (const double rate : {0.0, 44100.0, 192000.5}) {
        data().sampleRate = rate;
        data().lasterror = 4711;
        EXPECT_EQ(get<double>(object(), "SampleRate"), rate);
        EXPECT_EQ(data().lasterror, -1);
        EXPECT_EQ(graph_spy::calls(), Notes());
    }
    EXPECT_EQ(propertyRow("SampleRate").setter, nullptr);
}

// ---- loop points ----

TEST_F(Times, LoopPointsAreWrittenInFrames)
{
    struct Points {
        double in, out;
    };
    enum Which { in, out };
    const struct {
        Points before;
        Which which;
        double seconds;
        Points after;
        const char* why;
    } rows[] = {
        // clang-format off
        {{unset, unset}, in,  2,     {88200, 88200}, "a start takes an end along that was not set"},
        {{unset, unset}, out, 2,     {-1, 88200},    "an end alone"},
        {{unset, unset}, in,  0,     {0, 0},         "the first frame is a start"},
        {{unset, unset}, out, 0,     {-1, 0},        "and an end"},
        {{88200, 88200}, out, 3,     {88200, 132300}, "an end behind the start"},
        {{88200, 88200}, out, 2,     {88200, 88200}, "at the start"},
        {{88200, 132300}, out, 1,    {88200, 88200}, "in front of it: it becomes the start"},
        {{88200, 132300}, out, 0,    {88200, 88200}, "the first frame, too"},
        {{88200, 132300}, in, 1,     {44100, 132300}, "a start in front of the end leaves it"},
        {{88200, 132300}, in, 3,     {132300, 132300}, "at the end"},
        {{88200, 132300}, in, 4,     {176400, 176400}, "behind it: the end comes along"},
        {{88200, 132300}, in, 0,     {0, 132300},    "back to the first frame"},
        {{88200, 132300}, in, 2.99999 / 44100, {2, 132300}, "toward zero"},
        {{88200, 132300}, in, -0.5 / 44100, {0, 132300}, "from below, too"},
        {{88200, 132300}, in, -1,    {4294923196.0, 4294923196.0}, "a second before the start wraps"},
        {{88200, 132300}, out, -1,   {88200, 4294923196.0}, "for an end, too"},
        {{88200, 132300}, in, NAN,   {0, 132300},    "no number"},
        {{88200, 132300}, out, NAN,  {88200, 88200}, "an end that is none is in front of the start"},
        {{88200, 132300}, in, inf,   {0, 132300},    "infinity"},
        {{88200, 132300}, out, inf,  {88200, 88200}, "is not late"},
        {{88200, 132300}, in, -inf,  {0, 132300},    "minus infinity"},
        {{88200, 132300}, out, -inf, {88200, 88200}, "likewise"},
        {{88200, 132300}, in, 1e300, {0, 132300},    "a huge time"},
        {{88200, 132300}, out, 1e300, {88200, 88200}, "likewise"},
        {{88200, 132300}, in, 100,   {4410000, 4410000}, "behind the end of the file"},
        {{1000.75, 5000}, out, 0,    {1000.75, 1000}, "the start that an end becomes is a frame"},
        {{-5, 5000}, out, 0,         {-5, 0},        "a start that is no frame is in front of all"},
        {{5e9, 5000}, out, 1,        {5e9, 705032704}, "one that is too large wraps"},
        {{1e300, 5000}, out, 1,      {1e300, 0},     "and a huge one"},
        {{NAN, 5000}, out, 1,        {NAN, 44100},   "none is in front of nothing"},
        {{88200, NAN}, in, 1,        {44100, NAN},   "nor behind it"},
        // clang-format on
    };
    for (const auto& row : rows)
        for (const HostBoolean isLooping : {0, 1}) {
            SCOPED_TRACE(row.why);
            measure();
            data().loopIn = row.before.in;
            data().loopOut = row.before.out;
            data().isLooping = isLooping;
            data().lasterror = 4711;
            set<double>(object(), row.which == in ? "LoopIn" : "LoopOut", row.seconds);
            expectSame(data().loopIn, row.after.in, "in");
            expectSame(data().loopOut, row.after.out, "out");
            EXPECT_EQ(data().isLooping, isLooping) << "looping is not changed";
            EXPECT_EQ(data().position, 0u);
            expectUntouched();
        }
}

TEST_F(Times, LoopPointsAreMeasuredInSinglePrecision)
{
    const struct {
        std::uint32_t endFrame;
        double trackLength, seconds;
        double loopPoint;       ///< frames
        std::uint32_t position; ///< what double precision makes of the same time
        const char* why;
    } rows[] = {
        {441000, 10, 2, 88200, 88200, "where both are exact"},
        {16777217, 1, 1, 16777216, 16777217, "one digit too many: down to the even one"},
        {16777219, 1, 1, 16777220, 16777219, "up to the even one"},
        {4294967295u, 1, 1, 0, 4294967295u, "2^32 - 1 becomes 2^32, and wraps"},
        {1000, 3, 3, 1000, 1000, "a third, rounded up to single precision"},
        {1000, 3, 3e6, 1000000030, 1000000000, "which shows after a while"},
        {44100, 11, 11, 44099, 44100, "an eleventh, rounded down, shows at once"},
        {1, 3, 3, 1, 1, "a file of a frame"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        measure(row.endFrame, row.trackLength);
        data().loopIn = data().loopOut = unset;
        set<double>(object(), "LoopIn", row.seconds);
        EXPECT_EQ(data().loopIn, row.loopPoint);
        EXPECT_EQ(data().loopOut, row.loopPoint);

        data().loopIn = data().loopOut = unset;
        set<double>(object(), "LoopOut", row.seconds);
        EXPECT_EQ(data().loopIn, unset);
        EXPECT_EQ(data().loopOut, row.loopPoint);

        set<double>(object(), "CurrentTime", row.seconds);
        EXPECT_EQ(data().position, row.position) << "the position is measured in double precision";
    }
}

TEST_F(Times, LoopPointsAreReadInSeconds)
{
    const struct {
        std::uint32_t endFrame;
        double trackLength, frames, seconds;
        const char* why;
    } rows[] = {
        {441000, 10, unset, 0.0, "not set"},
        {441000, 10, 0, 0.0, "the first frame"},
        {441000, 10, 1, 1.0 / 44100, "a frame"},
        {441000, 10, 88200, 2.0, "a time"},
        {441000, 10, 0.5, 0.5 / 44100, "anything above zero"},
        {441000, 10, -44100, 0.0, "and nothing below"},
        {441000, 10, 4294967295.0, 4294967295.0 / 44100, "the last frame there can be"},
        {441000, 10, NAN, 0.0, "none is not above it"},
        {1000, 3, 500, 500 / (1000.0 / 3), "in double precision"},
        {0, 0, unset, 0.0, "before a load, not set"},
        {0, 0, 0, 0.0, "before a load"},
        {0, 0, 7, NAN, "frames before a load"},
        {441000, 0, 7, 0.0, "frames in no time"},
        {0, 10, 7, inf, "frames of an empty file"},
    };
    for (const auto& row : rows)
        for (const bool isIn : {true, false}) {
            measure(row.endFrame, row.trackLength);
            data().loopIn = isIn ? row.frames : 123;
            data().loopOut = isIn ? 123 : row.frames;
            data().lasterror = 4711;
            expectSame(get<double>(object(), isIn ? "LoopIn" : "LoopOut"), row.seconds, row.why);
            expectUntouched();
        }
}

TEST_F(Times, BeforeALoadEveryTimeIsTheStart)
{
    for (const double seconds : {0.0, 2.0, -1.0, 1e300, double(NAN), inf}) {
        set<double>(object(), "CurrentTime", seconds);
        set<double>(object(), "LoopIn", seconds);
        set<double>(object(), "LoopOut", seconds);
        EXPECT_EQ(data().position, 0u);
        EXPECT_EQ(data().loopIn, 0.0);
        EXPECT_EQ(data().loopOut, 0.0);
        for (const char* name : {"CurrentTime", "LoopIn", "LoopOut", "TrackLength", "SampleRate"})
            EXPECT_EQ(get<double>(object(), name), 0.0) << name;
    }
}

TEST_F(Times, AStartWithoutAnEndReadsBackAsBoth)
{
    measure();
    set<double>(object(), "LoopIn", 2.0);
    EXPECT_EQ(data().loopIn, 88200.0);
    EXPECT_EQ(data().loopOut, 88200.0);
    EXPECT_EQ(get<double>(object(), "LoopIn"), 2.0);
    EXPECT_EQ(get<double>(object(), "LoopOut"), 2.0);
}

// ---- looping ----

TEST_F(Times, LoopingTakesBothPointsInOrder)
{
    const struct {
        double in, out;
        bool isTaken;
        const char* why;
    } rows[] = {
        {unset, unset, false, "neither is set"},
        {0, unset, false, "no end"},
        {unset, 88200, false, "no start"},
        {0, 0, true, "the first frame, again and again"},
        {0, 88200, true, "from the start"},
        {44100, 88200, true, "somewhere"},
        {88200, 88200, true, "no frame long"},
        {88201, 88200, false, "turned around by a frame"},
        {88200, 44100, false, "turned around"},
        {-2, 88200, true, "only -1 is not set"},
        {-0.5, 88200, true, "not nearly -1"},
        {NAN, 88200, true, "no number is not -1, nor behind anything"},
    };
    for (const auto& row : rows)
        for (const HostBoolean before : {0, 1})
            for (const HostBoolean value : {0, 1, 2, 255}) {
                SCOPED_TRACE(testing::Message() << row.why << ": " << int(before) << " = " << int(value));
                data().loopIn = row.in;
                data().loopOut = row.out;
                data().isLooping = before;
                data().lasterror = 4711;
                set<HostBoolean>(object(), "Looping", value);
                EXPECT_EQ(data().isLooping, value && row.isTaken ? 1 : 0);
                EXPECT_EQ(get<HostBoolean>(object(), "Looping"), data().isLooping);
                expectSame(data().loopIn, row.in, "in");
                expectSame(data().loopOut, row.out, "out");
                expectUntouched();
            }
}

TEST_F(Times, LoopingIsNotTakenBeforeALoad)
{
    set<HostBoolean>(object(), "Looping", 1);
    EXPECT_EQ(get<HostBoolean>(object(), "Looping"), 0);
}

TEST_F(Times, ALoadLeavesNoLoopAndTheStart)
{
    set<double>(object(), "LoopIn", 1.0);
    set<double>(object(), "LoopOut", 1.0);
    set<HostBoolean>(object(), "Looping", 1);
    data().position = 55;
    EXPECT_EQ(get<HostBoolean>(object(), "Looping"), 1);
    ASSERT_TRUE(load());
    EXPECT_EQ(get<HostBoolean>(object(), "Looping"), 0);
    EXPECT_EQ(data().loopIn, unset);
    EXPECT_EQ(data().loopOut, unset);
    EXPECT_EQ(get<double>(object(), "CurrentTime"), 0.0);
    EXPECT_FALSE(graph_spy::platform().isRunning);
}

} // namespace
