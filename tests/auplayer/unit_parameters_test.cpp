// Levels and rates: which number of which unit, and what `Lasterror` says of it.
#include "tests/auplayer/watched_player_test.h"

#include <cmath>

namespace {

using namespace auplayer_test;

constexpr double inf = INFINITY;
constexpr OSStatus refused = -10878;

using UnitParameters = WatchedPlayerTest;

const struct {
    const char* name;
    const char* unit;
    const char* place; ///< parameter, scope, element
    bool isOfRate;     ///< also set on the varispeed
    bool isReadOnly;
} numbers[] = {
    {"OutputVolume", "mixer", "0, output, 0", false, false},
    {"Pan", "mixer", "2, input, 0", false, false},
    {"MeterLevel", "mixer", "3000, input, 0", false, true},
    {"TimeRate", "timePitch", "0, global, 0", true, false},
    {"PitchRate", "timePitch", "1, global, 0", true, false},
    {"Overlap", "timePitch", "4, global, 0", true, false},
};

std::string getCall(const std::string& unit, const std::string& place)
{
    return "AudioUnitGetParameter(" + unit + ", " + place + ")";
}
std::string setCall(const std::string& unit, const std::string& place, const std::string& value)
{
    return "AudioUnitSetParameter(" + unit + ", " + place + ", " + value + ", 0)"; // at the slice's start
}

// ---- reading ----

TEST_F(UnitParameters, AreReadFromTheirUnit)
{
    for (const auto& row : numbers)
        for (const float value : {0.0f, 1.0f, -0.5f, 0.1f, 1e-40f, 3e38f, -120.0f, float(inf)}) {
            SCOPED_TRACE(row.name);
            begin();
            graph_spy::answer("AudioUnitGetParameter").number = value;
            EXPECT_EQ(get<double>(object(), row.name), static_cast<double>(value)) << "not a digit is added";
            EXPECT_EQ(graph_spy::calls(), Notes{getCall(row.unit, row.place)});
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, 0);
        }
}

TEST_F(UnitParameters, ReadZeroWhereTheUnitRefuses)
{
    for (const auto& row : numbers) {
        SCOPED_TRACE(row.name);
        begin();
        graph_spy::answer("AudioUnitGetParameter").status = refused;
        EXPECT_EQ(get<double>(object(), row.name), 0.0);
        EXPECT_EQ(seen(), Lasterrors{-1});
        EXPECT_EQ(data().lasterror, refused);
    }
}

TEST_F(UnitParameters, OfNoUnitAreAskedOfThePlatformAllTheSame)
{
    for (const auto& row : numbers) {
        SCOPED_TRACE(row.name);
        beginEmpty();
        graph_spy::answer("AudioUnitGetParameter").status = -50;
        EXPECT_EQ(get<double>(object(), row.name), 0.0);
        EXPECT_EQ(data().lasterror, -50);
        EXPECT_EQ(graph_spy::calls(), Notes{getCall("null", row.place)});
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
        {-0.0, "-0", "from the other side"},
        {1, "1", "one"},
        {-1, "-1", "minus one"},
        {0.1, "0.100000001", "the nearest that there is"},
        {-2400, "-2400", "cents"},
        {16777217, "16777216", "one digit too many"},
        {1e-50, "0", "too small"},
        {1e300, "inf", "too large"},
        {-1e300, "-inf", "on the other side"},
        {inf, "inf", "infinity"},
        {NAN, "nan", "no number"},
    };
    for (const auto& row : numbers) {
        SCOPED_TRACE(row.name);
        if (row.isReadOnly) {
            EXPECT_EQ(propertyRow(row.name).setter, nullptr);
            continue;
        }
        if (std::string(row.name) == "TimeRate") continue; // rounds first: below
        for (const auto& value : values) {
            SCOPED_TRACE(value.why);
            begin();
            set<double>(object(), row.name, value.value);
            Notes expected = {setCall(row.unit, row.place, value.text)};
            if (row.isOfRate) expected.push_back(setCall("varispeed", row.place, value.text));
            EXPECT_EQ(graph_spy::calls(), expected);
            EXPECT_EQ(seen(), row.isOfRate ? (Lasterrors{-1, 0}) : Lasterrors{-1});
            EXPECT_EQ(data().lasterror, 0);
        }
    }
}

TEST_F(UnitParameters, ARateIsSetOnBothUnitsAndTheFirstTellsOfIt)
{
    for (const auto& row : numbers) {
        if (!row.isOfRate) continue;
        for (const OSStatus timePitch : {OSStatus{0}, refused})
            for (const OSStatus varispeed : {0, -10879}) {
                SCOPED_TRACE(row.name);
                begin();
                graph_spy::platform().refusals = {{0, timePitch}, {1, varispeed}};
                set<double>(object(), row.name, 2);
                EXPECT_EQ(graph_spy::calls(), (Notes{setCall("timePitch", row.place, "2"),
                                                     setCall("varispeed", row.place, "2")}));
                EXPECT_EQ(seen(), (Lasterrors{-1, timePitch}));
                EXPECT_EQ(data().lasterror, timePitch);
            }
    }
}

TEST_F(UnitParameters, ALevelThatIsRefusedTellsSo)
{
    for (const char* name : {"OutputVolume", "Pan"}) {
        begin();
        graph_spy::answer("AudioUnitSetParameter").status = refused;
        set<double>(object(), name, 2);
        EXPECT_EQ(seen(), Lasterrors{-1});
        EXPECT_EQ(data().lasterror, refused);
    }
}

TEST_F(UnitParameters, OfNoUnitAreGivenToThePlatformAllTheSame)
{
    for (const auto& row : numbers) {
        if (row.isReadOnly) continue;
        SCOPED_TRACE(row.name);
        beginEmpty();
        graph_spy::answer("AudioUnitSetParameter").status = -50;
        set<double>(object(), row.name, 1);
        Notes expected = {setCall("null", row.place, "1")};
        if (row.isOfRate) expected.push_back(expected.front());
        EXPECT_EQ(graph_spy::calls(), expected);
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
        {1.239, 1.23f, "down"},
        {1.231, 1.23f, "down, too"},
        {1.24, 1.24f, "a hundredth"},
        {-0.001, -0.01f, "down is away from zero below it"},
        {-1.5, -1.5f, "but not from a hundredth"},
        {-1.501, -1.51f, "down from it"},
        {0.29, 0.28f, "a hundred times it is less than 29"},
        {1.15, 1.14f, "and less than 115"},
        {0.57, 0.56f, "and less than 57"},
        {0.28, 0.28f, "but a hundred times this is 28 and more"},
        {0.07, 0.07f, "and this is more than 7"},
        {std::nextafter(1.0, 0.0), 0.99f, "just below one"},
        {std::nextafter(1.0, 2.0), 1, "just above it"},
        {0.009999, 0, "less than one of them"},
        {2, 2, "two"},
        {32, 32, "thirty-two"},
        {167772.17, 167772.17f, "single precision comes after the rounding"},
        {1e306, float(inf), "a huge one"},
        {1e307, float(inf), "whose hundredths are infinitely many"},
        {-1e300, -float(inf), "below"},
        {inf, float(inf), "infinity"},
        {-inf, -float(inf), "minus infinity"},
        {NAN, NAN, "no number"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        begin();
        char text[40];
        std::snprintf(text, sizeof text, "%.9g", static_cast<double>(row.applied));
        set<double>(object(), "TimeRate", row.value);
        EXPECT_EQ(graph_spy::calls(), (Notes{setCall("timePitch", "0, global, 0", text),
                                             setCall("varispeed", "0, global, 0", text)}));
    }
}

TEST_F(UnitParameters, ThePeakLockingIsMoreThanAHalf)
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
        graph_spy::answer("AudioUnitGetParameter").number = row.value;
        graph_spy::answer("AudioUnitGetParameter").status = row.status;
        EXPECT_EQ(get<HostBoolean>(object(), "EnablePeakLocking"), row.isEnabled);
        EXPECT_EQ(graph_spy::calls(), Notes{getCall("timePitch", "6, global, 0")});
        EXPECT_EQ(seen(), Lasterrors{-1});
        EXPECT_EQ(data().lasterror, row.status);
    }
}

TEST_F(UnitParameters, ThePeakLockingIsSetOnBothUnits)
{
    for (const HostBoolean value : {0, 1, 2, 255})
        for (const OSStatus timePitch : {OSStatus{0}, refused}) {
            begin();
            graph_spy::platform().refusals = {{0, timePitch}, {1, -10879}};
            set<HostBoolean>(object(), "EnablePeakLocking", value);
            const char* const text = value ? "1" : "0";
            EXPECT_EQ(graph_spy::calls(), (Notes{setCall("timePitch", "6, global, 0", text),
                                                 setCall("varispeed", "6, global, 0", text)}));
            EXPECT_EQ(seen(), (Lasterrors{-1, timePitch}));
            EXPECT_EQ(data().lasterror, timePitch);
        }
}

// ---- the mixer's inputs ----

const std::uint32_t inputs[] = {0, 1, 7, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

std::string inputPlace(const char* parameter, std::uint32_t input)
{
    return std::string(parameter) + ", input, " + std::to_string(input);
}

template <class T>
void setOf(const char* method, Object object, std::uint32_t input, T value)
{
    reinterpret_cast<void (*)(Object, std::uint32_t, T)>(methodRow(method).setter)(object, input, value);
}

TEST_F(UnitParameters, AnInputHasAVolume)
{
    for (const std::uint32_t input : inputs)
        for (const OSStatus status : {OSStatus{0}, refused}) {
            begin();
            graph_spy::answer("AudioUnitGetParameter").number = status ? 0 : 0.1f;
            graph_spy::answer("AudioUnitGetParameter").status = status;
            EXPECT_EQ(call<double>("InputVolume", object(), input), status ? 0.0 : static_cast<double>(0.1f));
            EXPECT_EQ(graph_spy::calls(), Notes{getCall("mixer", inputPlace("0", input))});
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, status);

            watch();
            graph_spy::answer("AudioUnitSetParameter").status = status;
            setOf<double>("InputVolume", object(), input, 0.1);
            EXPECT_EQ(graph_spy::calls(), Notes{setCall("mixer", inputPlace("0", input), "0.100000001")});
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, status);
        }
}

TEST_F(UnitParameters, AnInputIsEnabledByTheLowByteOfAWholeNumber)
{
    const struct {
        float value;
        HostBoolean isEnabled;
        const char* why;
    } rows[] = {
        {0, 0, "zero"},
        {0.5f, 0, "a half is no whole number"},
        {0.99999f, 0, "nor is nearly one"},
        {1, 1, "one"},
        {1.5f, 1, "and something"},
        {2, 1, "two"},
        {255, 1, "the greatest byte"},
        {255.9f, 1, "and something"},
        {256, 0, "its low byte is zero"},
        {257, 1, "and this one's is not"},
        {512, 0, "twice it"},
        {-0.5f, 0, "toward zero"},
        {-1, 1, "below zero"},
        {-256, 0, "a low byte of zero"},
        {16777215, 1, "the last odd one"},
        {2147483648.0f, 0, "more than 32 bits with a sign"},
        {1e20f, 0, "more than 64"},
        {-1e20f, 0, "below"},
        {float(inf), 0, "infinity"},
        {-float(inf), 0, "minus infinity"},
        {NAN, 0, "no number"},
    };
    for (const std::uint32_t input : inputs)
        for (const auto& row : rows) {
            SCOPED_TRACE(row.why);
            begin();
            graph_spy::answer("AudioUnitGetParameter").number = row.value;
            EXPECT_EQ(call<HostBoolean>("InputEnabled", object(), input), row.isEnabled);
            EXPECT_EQ(graph_spy::calls(), Notes{getCall("mixer", inputPlace("1", input))});
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, 0);
        }
    begin();
    graph_spy::answer("AudioUnitGetParameter").status = refused;
    EXPECT_EQ(call<HostBoolean>("InputEnabled", object(), 0u), 0);
    EXPECT_EQ(data().lasterror, refused);
}

TEST_F(UnitParameters, AnInputIsEnabledAndDisabled)
{
    for (const std::uint32_t input : inputs)
        for (const HostBoolean value : {0, 1, 2, 255})
            for (const OSStatus status : {OSStatus{0}, refused}) {
                begin();
                graph_spy::answer("AudioUnitSetParameter").status = status;
                setOf<HostBoolean>("InputEnabled", object(), input, value);
                EXPECT_EQ(graph_spy::calls(),
                          Notes{setCall("mixer", inputPlace("1", input), value ? "1" : "0")});
                EXPECT_EQ(seen(), Lasterrors{-1});
                EXPECT_EQ(data().lasterror, status);
            }
}

TEST_F(UnitParameters, InputsOfNoMixerAreAskedOfThePlatformAllTheSame)
{
    graph_spy::answer("AudioUnitGetParameter").status = -50;
    graph_spy::answer("AudioUnitSetParameter").status = -51;
    EXPECT_EQ(call<double>("InputVolume", object(), 3u), 0.0);
    EXPECT_EQ(data().lasterror, -50);
    setOf<double>("InputVolume", object(), 3, 1);
    EXPECT_EQ(data().lasterror, -51);
    EXPECT_EQ(call<HostBoolean>("InputEnabled", object(), 3u), 0);
    EXPECT_EQ(data().lasterror, -50);
    setOf<HostBoolean>("InputEnabled", object(), 3, 1);
    EXPECT_EQ(data().lasterror, -51);
    EXPECT_EQ(graph_spy::calls(),
              (Notes{getCall("null", "0, input, 3"), setCall("null", "0, input, 3", "1"),
                     getCall("null", "1, input, 3"), setCall("null", "1, input, 3", "1")}));
}

// ---- which rate unit works ----

std::string bypassCall(const std::string& unit, const char* value)
{
    return "AudioUnitSetProperty(" + unit + ", 21, global, 0, " + value + ", 4 bytes)";
}

TEST_F(UnitParameters, TheRateUnitIsChosenByBypassingTheOther)
{
    for (const HostInteger before : {0, 1, 2, 5, -1})
        for (HostInteger value = -1; value <= 7; ++value)
            for (const OSStatus first : {OSStatus{0}, refused})
                for (const OSStatus second : {0, -10879}) {
                    SCOPED_TRACE(testing::Message() << before << " = " << value);
                    begin();
                    data().timePitchUnit = before;
                    graph_spy::platform().refusals = {{0, first}, {1, second}};
                    set<HostInteger>(object(), "TimePitchUnit", value);

                    const HostInteger mode = value == 0 ? 1 : value;
                    const bool isChange = (mode == 1 || mode == 2) && mode != before;
                    if (!isChange) {
                        EXPECT_EQ(graph_spy::calls(), Notes());
                        EXPECT_EQ(data().lasterror, -1);
                        EXPECT_EQ(data().timePitchUnit, before);
                        continue;
                    }
                    EXPECT_EQ(graph_spy::calls(),
                              mode == 2
                                  ? (Notes{bypassCall("timePitch", "1"), bypassCall("varispeed", "0")})
                                  : (Notes{bypassCall("varispeed", "1"), bypassCall("timePitch", "0")}));
                    EXPECT_EQ(seen(), (Lasterrors{-1, first}));
                    EXPECT_EQ(data().lasterror, second);
                    EXPECT_EQ(data().timePitchUnit, mode) << "whatever the units say to it";
                }
}

TEST_F(UnitParameters, TheRateUnitsNumbersAreFewAndOthersChangeNothing)
{
    for (const HostInteger value : {HostInteger{3}, HostInteger{256}, HostInteger{257}, HostInteger{258},
                                    HostInteger{INT32_MAX}, HostInteger{INT32_MIN}}) {
        begin();
        data().timePitchUnit = 2;
        set<HostInteger>(object(), "TimePitchUnit", value);
        EXPECT_EQ(graph_spy::calls(), Notes());
        EXPECT_EQ(data().timePitchUnit, 2);
        EXPECT_EQ(data().lasterror, -1);
    }
}

TEST_F(UnitParameters, TheRateUnitIsChosenBeforeALoadWhateverThePlatformSays)
{
    for (const HostInteger value : {0, 1, 2}) {
        beginEmpty();
        graph_spy::answer("AudioUnitSetProperty").status = -50;
        set<HostInteger>(object(), "TimePitchUnit", value);
        EXPECT_EQ(graph_spy::calls(), (Notes{bypassCall("null", "1"), bypassCall("null", "0")}));
        EXPECT_EQ(data().lasterror, -50);
        EXPECT_EQ(data().timePitchUnit, value == 2 ? 2 : 1);
    }
}

// ---- exceptions ----

TEST_F(UnitParameters, LetNoExceptionOfThePlatformThrough)
{
    for (std::size_t throwing : {0u, 1u}) {
        const auto beginThrowing = [&] {
            begin();
            graph_spy::platform().inEachCall = [=](std::size_t number) {
                if (number == throwing) throw Thrown();
            };
        };
        for (const auto& row : numbers) {
            SCOPED_TRACE(row.name);
            beginThrowing();
            EXPECT_NO_THROW(EXPECT_EQ(get<double>(object(), row.name), 0.0));
            if (row.isReadOnly) continue;
            beginThrowing();
            EXPECT_NO_THROW(set<double>(object(), row.name, 1));
            EXPECT_EQ(data().lasterror, throwing == 0 ? -1 : 0);
        }
        beginThrowing();
        EXPECT_NO_THROW(EXPECT_EQ(get<HostBoolean>(object(), "EnablePeakLocking"), 0));
        beginThrowing();
        EXPECT_NO_THROW(set<HostBoolean>(object(), "EnablePeakLocking", 1));
        beginThrowing();
        EXPECT_NO_THROW(EXPECT_EQ(call<double>("InputVolume", object(), 0u), 0.0));
        beginThrowing();
        EXPECT_NO_THROW(setOf<double>("InputVolume", object(), 0, 1));
        beginThrowing();
        EXPECT_NO_THROW(EXPECT_EQ(call<HostBoolean>("InputEnabled", object(), 0u), 0));
        beginThrowing();
        EXPECT_NO_THROW(setOf<HostBoolean>("InputEnabled", object(), 0, 1));
        beginThrowing();
        EXPECT_NO_THROW(set<HostInteger>(object(), "TimePitchUnit", 2));
        EXPECT_EQ(data().timePitchUnit, 0) << "not chosen";
    }
}

} // namespace
