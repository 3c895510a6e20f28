// The play position and the loop points, which are seconds for host programs and frames in the record.
#include "tests/auplayer/player_fixture.h"

#include <cmath>
#include <limits>

namespace {

using namespace auplayer_test;

constexpr double inf = INFINITY, unset = auplayer::unset;

class Times : public PlayerTest {
protected:
    void setFile(std::uint32_t endFrame, double trackLength)
    {
        data().endFrame = endFrame;
        data().trackLength = trackLength;
    }

    /// Set a file of 10 seconds with 44100 frames per second.
    void setFile() { setFile(441000, 10); }

    void expectUntouched()
    {
        EXPECT_EQ(data().lasterror, 4711);
        EXPECT_EQ(spy::calls(), Notes());
        EXPECT_EQ(host().calls(), fake::Notes());
    }
};

/// Expect equal values, or not-a-number in both.
void expectSame(double value, double expected, const char* why)
{
    if (std::isnan(expected))
        EXPECT_TRUE(std::isnan(value)) << why << ": " << value;
    else
        EXPECT_EQ(value, expected) << why;
}

// ---- the play position ----

TEST_F(Times, TheCurrentTimeIsConvertedToFrames)
{
    const struct {
        std::uint32_t endFrame;
        double trackLength, seconds;
        std::uint32_t position;
        const char* why;
    } rows[] = {
        // clang-format off
        {441000, 10,        0,              0,          "the start"},
        {441000, 10,        -0.0,           0,          "negative zero"},
        {441000, 10,        2.5,            110250,     "a time"},
        {441000, 10,        10,             441000,     "the end"},
        {441000, 10,        20,             882000,     "nothing is clamped"},
        {441000, 10,        1.0 / 44100,    1,          "one frame"},
        {441000, 10,        0.99 / 44100,   0,          "less than one frame: truncated toward zero"},
        {441000, 10,        -0.99 / 44100,  0,          "truncated toward zero from below"},
        {441000, 10,        -1.0 / 44100,   0xFFFFFFFF, "one frame before the start"},
        {441000, 10,        -1,             0xFFFF53BC, "one second before the start wraps"},
        {4096, 4,           4194303.9990234375, 0xFFFFFFFF, "2^32 - 1 frames"},
        {4096, 4,           4194304,        0,          "2^32 frames wrap"},
        {4096, 4,           4194304.0009765625, 1,      "2^32 + 1 frames wrap"},
        {4096, 4,           -4194304,       0,          "-2^32 frames wrap"},
        {4096, 4,           9007199254740991.0, 0xFFFFFC00, "the largest 64-bit number"},
        {4096, 4,           9007199254740992.0, 0,      "2^63 frames"},
        {4096, 4,           -9007199254740992.0, 0,     "-2^63 frames"},
        {4096, 4,           -9007199254740991.0, 0x400, "one above -2^63 frames"},
        {441000, 10,        1e300,          0,          "a very large time"},
        {441000, 10,        -1e300,         0,          "a very large time before the start"},
        {441000, 10,        inf,            0,          "infinity"},
        {441000, 10,        -inf,           0,          "minus infinity"},
        {441000, 10,        NAN,            0,          "not-a-number"},
        {0, 0,              2.5,            0,          "before a load"},
        {0, 10,             2.5,            0,          "an empty file"},
        {441000, 0,         2.5,            0,          "a duration of 0"},
        {1000, 3,           1,              333,        "frames per second that are no sample rate"},
        {1000, 3,           2,              666,        "two seconds of them"},
        {1000, 3,           3,              1000,       "the whole file"},
        {16777217, 1,       1,              16777217,   "more digits than single precision has"},
        {4294967295u, 1,    1,              0xFFFFFFFF, "the longest file"},
        {4294967295u, 1,    2,              0xFFFFFFFE, "twice the longest file"},
        {441000, -10,       2.5,            0xFFFE5156, "a negative duration of the platform"},
        {441000, NAN,       2.5,            0,          "a duration of not-a-number"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        setFile(row.endFrame, row.trackLength);
        data().position = 77;
        data().lasterror = 4711;
        members.set<double>(object(), "CurrentTime", row.seconds);
        EXPECT_EQ(data().position, row.position);
        expectUntouched();
    }
}

TEST_F(Times, TheCurrentTimeIsReturnedInSeconds)
{
    const struct {
        std::uint32_t endFrame;
        double trackLength;
        std::uint32_t position;
        double seconds;
        const char* why;
    } rows[] = {
        {441000, 10, 0, 0.0, "the start"},
        {441000, 10, 1, 1.0 / 44100, "one frame"},
        {441000, 10, 110250, 2.5, "a time"},
        {441000, 10, 441000, 10.0, "the end"},
        {441000, 10, 0xFFFFFFFF, 4294967295.0 / 44100, "the position is unsigned"},
        {441000, 10, 0x80000000, 2147483648.0 / 44100, "the position is unsigned: 2^31"},
        {1000, 3, 500, 500 / (1000.0 / 3),
         "divided by the frames per second, not multiplied by a frame's duration"},
        {0, 0, 0, 0.0, "before a load"},
        {0, 0, 5, NAN, "a position before a load"},
        {0, 10, 5, inf, "a position in an empty file"},
        {441000, 0, 5, 0.0, "a duration of 0"},
    };
    for (const auto& row : rows) {
        setFile(row.endFrame, row.trackLength);
        data().position = row.position;
        data().lasterror = 4711;
        expectSame(members.get<double>(object(), "CurrentTime"), row.seconds, row.why);
        EXPECT_EQ(data().position, row.position);
        expectUntouched();
    }
    EXPECT_FALSE(std::signbit(members.get<double>(object(), "CurrentTime")));
}

TEST_F(Times, FramesPerSecondAreTheFramesReadOverTheDuration)
{
    ASSERT_TRUE(load()); // a file of 48000 Hz whose 1000 frames last 2.5 seconds by the estimate
    EXPECT_EQ(members.get<double>(object(), "SampleRate"), 48000.0);
    members.set<double>(object(), "CurrentTime", 1.0);
    EXPECT_EQ(data().position, 400u);
    members.set<double>(object(), "LoopIn", 1.5);
    EXPECT_EQ(data().loopIn, 600.0);
}

// ---- read-only properties ----

TEST_F(Times, TrackLengthReturnsTheField)
{
    for (const double length : {0.0, 2.5, 1e300, -1.0, inf}) {
        data().trackLength = length;
        data().lasterror = 4711;
        EXPECT_EQ(members.get<double>(object(), "TrackLength"), length);
        expectUntouched();
    }
    EXPECT_EQ(members.property("TrackLength").setter, nullptr);
}

TEST_F(Times, SampleRateReturnsTheFieldAndResetsLasterror)
{
    for (const double rate : {0.0, 44100.0, 192000.5}) {
        data().sampleRate = rate;
        data().lasterror = 4711;
        EXPECT_EQ(members.get<double>(object(), "SampleRate"), rate);
        EXPECT_EQ(data().lasterror, -1);
        EXPECT_EQ(spy::calls(), Notes());
    }
    EXPECT_EQ(members.property("SampleRate").setter, nullptr);
}

// ---- loop points ----

TEST_F(Times, LoopPointsAreConvertedToFrames)
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
        {{unset, unset}, in,  2,     {88200, 88200}, "a start moves an unset end"},
        {{unset, unset}, out, 2,     {-1, 88200},    "an end without a start"},
        {{unset, unset}, in,  0,     {0, 0},         "a start at the first frame"},
        {{unset, unset}, out, 0,     {-1, 0},        "an end at the first frame"},
        {{88200, 88200}, out, 3,     {88200, 132300}, "an end after the start"},
        {{88200, 88200}, out, 2,     {88200, 88200}, "an end at the start"},
        {{88200, 132300}, out, 1,    {88200, 88200}, "an end before the start becomes the start"},
        {{88200, 132300}, out, 0,    {88200, 88200}, "an end at the first frame becomes the start"},
        {{88200, 132300}, in, 1,     {44100, 132300}, "a start before the end keeps the end"},
        {{88200, 132300}, in, 3,     {132300, 132300}, "a start at the end"},
        {{88200, 132300}, in, 4,     {176400, 176400}, "a start after the end moves the end"},
        {{88200, 132300}, in, 0,     {0, 132300},    "a start at the first frame"},
        {{88200, 132300}, in, 2.99999 / 44100, {2, 132300}, "truncated toward zero"},
        {{88200, 132300}, in, -0.5 / 44100, {0, 132300}, "truncated toward zero from below"},
        {{88200, 132300}, in, -1,    {4294923196.0, 4294923196.0}, "one second before the start wraps"},
        {{88200, 132300}, out, -1,   {88200, 4294923196.0}, "an end one second before the start wraps"},
        {{88200, 132300}, in, NAN,   {0, 132300},    "not-a-number"},
        {{88200, 132300}, out, NAN,  {88200, 88200}, "an end of not-a-number is frame 0"},
        {{88200, 132300}, in, inf,   {0, 132300},    "infinity"},
        {{88200, 132300}, out, inf,  {88200, 88200}, "an end of infinity is frame 0"},
        {{88200, 132300}, in, -inf,  {0, 132300},    "minus infinity"},
        {{88200, 132300}, out, -inf, {88200, 88200}, "an end of minus infinity"},
        {{88200, 132300}, in, 1e300, {0, 132300},    "a very large time"},
        {{88200, 132300}, out, 1e300, {88200, 88200}, "an end at a very large time"},
        {{88200, 132300}, in, 100,   {4410000, 4410000}, "past the end of the file"},
        {{1000.75, 5000}, out, 0,    {1000.75, 1000}, "the end becomes the start, truncated"},
        {{-5, 5000}, out, 0,         {-5, 0},        "a negative start is before every frame"},
        {{5e9, 5000}, out, 1,        {5e9, 705032704}, "a start above 2^32 wraps"},
        {{1e300, 5000}, out, 1,      {1e300, 0},     "a very large start"},
        {{NAN, 5000}, out, 1,        {NAN, 44100},   "a start of not-a-number moves no end"},
        {{88200, NAN}, in, 1,        {44100, NAN},   "an end of not-a-number is not moved"},
        // clang-format on
    };
    for (const auto& row : rows)
        for (const HostBoolean isLooping : {0, 1}) {
            SCOPED_TRACE(row.why);
            setFile();
            data().loopIn = row.before.in;
            data().loopOut = row.before.out;
            data().isLooping = isLooping;
            data().lasterror = 4711;
            members.set<double>(object(), row.which == in ? "LoopIn" : "LoopOut", row.seconds);
            expectSame(data().loopIn, row.after.in, "in");
            expectSame(data().loopOut, row.after.out, "out");
            EXPECT_EQ(data().isLooping, isLooping) << "looping stays unchanged";
            EXPECT_EQ(data().position, 0u);
            expectUntouched();
        }
}

TEST_F(Times, LoopPointsUseARateInSinglePrecision)
{
    const struct {
        std::uint32_t endFrame;
        double trackLength, seconds;
        double loopPoint;       ///< loop point for the time, in frames
        std::uint32_t position; ///< position for the same time, computed in double precision
        const char* why;
    } rows[] = {
        {441000, 10, 2, 88200, 88200, "both are exact"},
        {16777217, 1, 1, 16777216, 16777217, "one bit too many: rounds to even, down"},
        {16777219, 1, 1, 16777220, 16777219, "one bit too many: rounds to even, up"},
        {4294967295u, 1, 1, 0, 4294967295u, "2^32 - 1 becomes 2^32, and wraps"},
        {1000, 3, 3, 1000, 1000, "a third, rounded up to single precision"},
        {1000, 3, 3e6, 1000000030, 1000000000, "the error grows with time"},
        {44100, 11, 11, 44099, 44100, "an eleventh, rounded down"},
        {1, 3, 3, 1, 1, "a file of one frame"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        setFile(row.endFrame, row.trackLength);
        data().loopIn = data().loopOut = unset;
        members.set<double>(object(), "LoopIn", row.seconds);
        EXPECT_EQ(data().loopIn, row.loopPoint);
        EXPECT_EQ(data().loopOut, row.loopPoint);

        data().loopIn = data().loopOut = unset;
        members.set<double>(object(), "LoopOut", row.seconds);
        EXPECT_EQ(data().loopIn, unset);
        EXPECT_EQ(data().loopOut, row.loopPoint);

        members.set<double>(object(), "CurrentTime", row.seconds);
        EXPECT_EQ(data().position, row.position) << "the position uses double precision";
    }
}

TEST_F(Times, LoopPointsAreReturnedInSeconds)
{
    const struct {
        std::uint32_t endFrame;
        double trackLength, frames, seconds;
        const char* why;
    } rows[] = {
        {441000, 10, unset, 0.0, "not set"},
        {441000, 10, 0, 0.0, "the first frame"},
        {441000, 10, 1, 1.0 / 44100, "one frame"},
        {441000, 10, 88200, 2.0, "a time"},
        {441000, 10, 0.5, 0.5 / 44100, "a fraction of a frame"},
        {441000, 10, -44100, 0.0, "below zero"},
        {441000, 10, 4294967295.0, 4294967295.0 / 44100, "the highest frame number"},
        {441000, 10, NAN, 0.0, "not-a-number is not above zero"},
        {1000, 3, 500, 500 / (1000.0 / 3), "in double precision"},
        {0, 0, unset, 0.0, "an unset point before a load"},
        {0, 0, 0, 0.0, "the first frame before a load"},
        {0, 0, 7, NAN, "frames before a load"},
        {441000, 0, 7, 0.0, "a duration of 0"},
        {0, 10, 7, inf, "frames of an empty file"},
    };
    for (const auto& row : rows)
        for (const bool isIn : {true, false}) {
            setFile(row.endFrame, row.trackLength);
            data().loopIn = isIn ? row.frames : 123;
            data().loopOut = isIn ? 123 : row.frames;
            data().lasterror = 4711;
            expectSame(members.get<double>(object(), isIn ? "LoopIn" : "LoopOut"), row.seconds, row.why);
            expectUntouched();
        }
}

TEST_F(Times, BeforeALoadEveryTimeIsZero)
{
    for (const double seconds : {0.0, 2.0, -1.0, 1e300, double(NAN), inf}) {
        members.set<double>(object(), "CurrentTime", seconds);
        members.set<double>(object(), "LoopIn", seconds);
        members.set<double>(object(), "LoopOut", seconds);
        EXPECT_EQ(data().position, 0u);
        EXPECT_EQ(data().loopIn, 0.0);
        EXPECT_EQ(data().loopOut, 0.0);
        for (const char* name : {"CurrentTime", "LoopIn", "LoopOut", "TrackLength", "SampleRate"})
            EXPECT_EQ(members.get<double>(object(), name), 0.0) << name;
    }
}

TEST_F(Times, AStartWithoutAnEndSetsBoth)
{
    setFile();
    members.set<double>(object(), "LoopIn", 2.0);
    EXPECT_EQ(data().loopIn, 88200.0);
    EXPECT_EQ(data().loopOut, 88200.0);
    EXPECT_EQ(members.get<double>(object(), "LoopIn"), 2.0);
    EXPECT_EQ(members.get<double>(object(), "LoopOut"), 2.0);
}

// ---- looping ----

TEST_F(Times, LoopingNeedsBothPointsInOrder)
{
    const struct {
        double in, out;
        bool isAccepted;
        const char* why;
    } rows[] = {
        {unset, unset, false, "neither is set"},
        {0, unset, false, "no end"},
        {unset, 88200, false, "no start"},
        {0, 0, true, "an empty loop at the first frame"},
        {0, 88200, true, "from the start"},
        {44100, 88200, true, "inside the file"},
        {88200, 88200, true, "an empty loop"},
        {88201, 88200, false, "the start is one frame after the end"},
        {88200, 44100, false, "the start is after the end"},
        {-2, 88200, true, "only -1 means unset"},
        {-0.5, 88200, true, "-0.5 is set"},
        {NAN, 88200, true, "not-a-number is set, and not after the end"},
    };
    for (const auto& row : rows)
        for (const HostBoolean before : {0, 1})
            for (const HostBoolean value : {0, 1, 2, 255}) {
                SCOPED_TRACE(testing::Message() << row.why << ": " << int(before) << " = " << int(value));
                data().loopIn = row.in;
                data().loopOut = row.out;
                data().isLooping = before;
                data().lasterror = 4711;
                members.set<HostBoolean>(object(), "Looping", value);
                EXPECT_EQ(data().isLooping, value && row.isAccepted ? 1 : 0);
                EXPECT_EQ(members.get<HostBoolean>(object(), "Looping"), data().isLooping);
                expectSame(data().loopIn, row.in, "in");
                expectSame(data().loopOut, row.out, "out");
                expectUntouched();
            }
}

TEST_F(Times, LoopingIsRefusedBeforeALoad)
{
    members.set<HostBoolean>(object(), "Looping", 1);
    EXPECT_EQ(members.get<HostBoolean>(object(), "Looping"), 0);
}

TEST_F(Times, ALoadResetsLoopAndPosition)
{
    members.set<double>(object(), "LoopIn", 1.0);
    members.set<double>(object(), "LoopOut", 1.0);
    members.set<HostBoolean>(object(), "Looping", 1);
    data().position = 55;
    EXPECT_EQ(members.get<HostBoolean>(object(), "Looping"), 1);
    ASSERT_TRUE(load());
    EXPECT_EQ(members.get<HostBoolean>(object(), "Looping"), 0);
    EXPECT_EQ(data().loopIn, unset);
    EXPECT_EQ(data().loopOut, unset);
    EXPECT_EQ(members.get<double>(object(), "CurrentTime"), 0.0);
    EXPECT_FALSE(graph_spy::platform().isRunning);
}

} // namespace
