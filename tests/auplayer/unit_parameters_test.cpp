// Levels and rates: the unit parameter of each property, and the value of `Lasterror`.
#include "tests/auplayer/watched_player_fixture.h"

#include <cmath>

namespace {

using namespace auplayer_test;

constexpr double inf = INFINITY;
constexpr OSStatus refused = -10878;

using UnitParameters = WatchedPlayerTest;

const struct {
    const char* name;
    const char* unit;
    const char* address; ///< parameter, scope and element, as the spy records them
    bool isOfRate;       ///< whether the setter also sets the varispeed unit
    bool isReadOnly;
} parameters[] = {
    {"OutputVolume", "mixer", "0, output, 0", false, false},
    {"Pan", "mixer", "2, input, 0", false, false},
    {"MeterLevel", "mixer", "3000, input, 0", false, true},
    {"TimeRate", "timePitch", "0, global, 0", true, false},
    {"PitchRate", "timePitch", "1, global, 0", true, false},
    {"Overlap", "timePitch", "4, global, 0", true, false},
};

// ---- reading ----

TEST_F(UnitParameters, AreReadFromTheirUnit)
{
    for (const auto& row : parameters)
        for (const float value : {0.0f, 1.0f, -0.5f, 0.1f, 1e-40f, 3e38f, -120.0f, float(inf)}) {
            SCOPED_TRACE(row.name);
            begin();
            spy::answer("AudioUnitGetParameter").parameter = value;
            EXPECT_EQ(members.get<double>(object(), row.name), static_cast<double>(value))
                << "the float is widened exactly";
            EXPECT_EQ(spy::calls(), Notes{getCall(row.unit, row.address)});
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, 0);
        }
}

TEST_F(UnitParameters, AreZeroAfterARefusal)
{
    for (const auto& row : parameters) {
        SCOPED_TRACE(row.name);
        begin();
        spy::answer("AudioUnitGetParameter").status = refused;
        EXPECT_EQ(members.get<double>(object(), row.name), 0.0);
        EXPECT_EQ(seen(), Lasterrors{-1});
        EXPECT_EQ(data().lasterror, refused);
    }
}

TEST_F(UnitParameters, CallThePlatformForReadsEvenBeforeALoad)
{
    for (const auto& row : parameters) {
        SCOPED_TRACE(row.name);
        beginEmpty();
        spy::answer("AudioUnitGetParameter").status = -50;
        EXPECT_EQ(members.get<double>(object(), row.name), 0.0);
        EXPECT_EQ(data().lasterror, -50);
        EXPECT_EQ(spy::calls(), Notes{getCall("null", row.address)});
    }
}

// ---- writing ----

TEST_F(UnitParameters, AreWrittenInSinglePrecision)
{
    const struct {
        double value;
        const char* text;
        const char* why;
    } values[] = {
        {0, "0", "zero"},
        {-0.0, "-0", "negative zero"},
        {1, "1", "one"},
        {-1, "-1", "minus one"},
        {0.1, "0.100000001", "the nearest float"},
        {-2400, "-2400", "cents"},
        {16777217, "16777216", "one bit too many"},
        {1e-50, "0", "too small"},
        {1e300, "inf", "too large"},
        {-1e300, "-inf", "too far below zero"},
        {inf, "inf", "infinity"},
        {NAN, "nan", "not-a-number"},
    };
    for (const auto& row : parameters) {
        SCOPED_TRACE(row.name);
        if (row.isReadOnly) {
            EXPECT_EQ(members.property(row.name).setter, nullptr);
            continue;
        }
        // TimeRate is rounded to hundredths first, which a later test covers.
        if (std::string(row.name) == "TimeRate") continue;
        for (const auto& value : values) {
            SCOPED_TRACE(value.why);
            begin();
            members.set<double>(object(), row.name, value.value);
            Notes expected = {setCall(row.unit, row.address, value.text)};
            if (row.isOfRate) expected.push_back(setCall("varispeed", row.address, value.text));
            EXPECT_EQ(spy::calls(), expected);
            EXPECT_EQ(seen(), row.isOfRate ? (Lasterrors{-1, 0}) : Lasterrors{-1});
            EXPECT_EQ(data().lasterror, 0);
        }
    }
}

TEST_F(UnitParameters, ARateIsSetOnBothUnitsAndTheFirstStatusIsKept)
{
    for (const auto& row : parameters) {
        if (!row.isOfRate) continue;
        for (const OSStatus timePitch : {OSStatus{0}, refused})
            for (const OSStatus varispeed : {0, -10879}) {
                SCOPED_TRACE(row.name);
                begin();
                spy::script().refusals = {{0, timePitch}, {1, varispeed}};
                members.set<double>(object(), row.name, 2);
                EXPECT_EQ(spy::calls(), (Notes{setCall("timePitch", row.address, "2"),
                                               setCall("varispeed", row.address, "2")}));
                EXPECT_EQ(seen(), (Lasterrors{-1, timePitch}));
                EXPECT_EQ(data().lasterror, timePitch);
            }
    }
}

TEST_F(UnitParameters, ARefusedLevelKeepsTheStatus)
{
    for (const char* name : {"OutputVolume", "Pan"}) {
        begin();
        spy::answer("AudioUnitSetParameter").status = refused;
        members.set<double>(object(), name, 2);
        EXPECT_EQ(seen(), Lasterrors{-1});
        EXPECT_EQ(data().lasterror, refused);
    }
}

TEST_F(UnitParameters, CallThePlatformForWritesEvenBeforeALoad)
{
    for (const auto& row : parameters) {
        if (row.isReadOnly) continue;
        SCOPED_TRACE(row.name);
        beginEmpty();
        spy::answer("AudioUnitSetParameter").status = -50;
        members.set<double>(object(), row.name, 1);
        Notes expected = {setCall("null", row.address, "1")};
        if (row.isOfRate) expected.push_back(expected.front());
        EXPECT_EQ(spy::calls(), expected);
        EXPECT_EQ(data().lasterror, -50);
    }
}

TEST_F(UnitParameters, TheTimeRateIsRoundedDownToHundredths)
{
    const struct {
        double value;
        float applied;
        const char* why;
    } rows[] = {
        {0, 0, "zero"},
        {1, 1, "one"},
        {1.239, 1.23f, "rounded down"},
        {1.231, 1.23f, "rounded down"},
        {1.24, 1.24f, "whole hundredths"},
        {-0.001, -0.01f, "below zero, down is away from zero"},
        {-1.5, -1.5f, "negative whole hundredths"},
        {-1.501, -1.51f, "rounded down below zero"},
        {0.29, 0.28f, "100 times the double is below 29"},
        {1.15, 1.14f, "100 times the double is below 115"},
        {0.57, 0.56f, "100 times the double is below 57"},
        {0.28, 0.28f, "100 times the double is above 28"},
        {0.07, 0.07f, "100 times the double is above 7"},
        {std::nextafter(1.0, 0.0), 0.99f, "just below one"},
        {std::nextafter(1.0, 2.0), 1, "just above one"},
        {0.009999, 0, "less than a hundredth"},
        {2, 2, "two"},
        {32, 32, "thirty-two"},
        {167772.17, 167772.17f, "narrowed after the rounding"},
        {1e306, float(inf), "above single precision"},
        {1e307, float(inf), "100 times it is infinite"},
        {-1e300, -float(inf), "below single precision"},
        {inf, float(inf), "infinity"},
        {-inf, -float(inf), "minus infinity"},
        {NAN, NAN, "not-a-number"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        begin();
        char text[40];
        std::snprintf(text, sizeof text, "%.9g", static_cast<double>(row.applied));
        members.set<double>(object(), "TimeRate", row.value);
        EXPECT_EQ(spy::calls(), (Notes{setCall("timePitch", "0, global, 0", text),
                                       setCall("varispeed", "0, global, 0", text)}));
    }
}

TEST_F(UnitParameters, PeakLockingIsEnabledAboveOneHalf)
{
    const struct {
        float value;
        OSStatus status;
        HostBoolean isEnabled;
    } rows[] = {{0, 0, 0},
                {0.5f, 0, 0},
                {0.50001f, 0, 1},
                {std::nextafter(0.5f, 1.0f), 0, 1},
                {std::nextafter(0.5f, 0.0f), 0, 0},
                {1, 0, 1},
                {256, 0, 1},
                {-1, 0, 0},
                {float(inf), 0, 1},
                {NAN, 0, 0},
                {0, refused, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        begin();
        spy::answer("AudioUnitGetParameter").parameter = row.value;
        spy::answer("AudioUnitGetParameter").status = row.status;
        EXPECT_EQ(members.get<HostBoolean>(object(), "EnablePeakLocking"), row.isEnabled);
        EXPECT_EQ(spy::calls(), Notes{getCall("timePitch", "6, global, 0")});
        EXPECT_EQ(seen(), Lasterrors{-1});
        EXPECT_EQ(data().lasterror, row.status);
    }
}

TEST_F(UnitParameters, PeakLockingIsSetOnBothUnits)
{
    for (const HostBoolean value : {0, 1, 2, 255})
        for (const OSStatus timePitch : {OSStatus{0}, refused}) {
            begin();
            spy::script().refusals = {{0, timePitch}, {1, -10879}};
            members.set<HostBoolean>(object(), "EnablePeakLocking", value);
            const char* const text = value ? "1" : "0";
            EXPECT_EQ(spy::calls(), (Notes{setCall("timePitch", "6, global, 0", text),
                                           setCall("varispeed", "6, global, 0", text)}));
            EXPECT_EQ(seen(), (Lasterrors{-1, timePitch}));
            EXPECT_EQ(data().lasterror, timePitch);
        }
}

// ---- exceptions ----

TEST_F(UnitParameters, CatchExceptionsOfThePlatform)
{
    for (const std::size_t throwing : {0u, 1u}) {
        for (const auto& row : parameters) {
            SCOPED_TRACE(row.name);
            begin();
            throwInCall(throwing);
            EXPECT_NO_THROW(EXPECT_EQ(members.get<double>(object(), row.name), 0.0));
            if (row.isReadOnly) continue;
            begin();
            throwInCall(throwing);
            EXPECT_NO_THROW(members.set<double>(object(), row.name, 1));
            EXPECT_EQ(data().lasterror, throwing == 0 ? -1 : 0);
        }
        begin();
        throwInCall(throwing);
        EXPECT_NO_THROW(EXPECT_EQ(members.get<HostBoolean>(object(), "EnablePeakLocking"), 0));
        begin();
        throwInCall(throwing);
        EXPECT_NO_THROW(members.set<HostBoolean>(object(), "EnablePeakLocking", 1));
    }
}

} // namespace
