// The properties InputVolume and InputEnabled of the mixer inputs.
#include "tests/auplayer/watched_player_fixture.h"

#include <cmath>

namespace {

using namespace auplayer_test;

constexpr double inf = INFINITY;
constexpr OSStatus refused = -10878;

using MixerInputs = WatchedPlayerTest;

const std::uint32_t inputs[] = {0, 1, 7, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

std::string inputAddress(const char* parameter, std::uint32_t input)
{
    return std::string(parameter) + ", input, " + std::to_string(input);
}

template <class T>
void setOf(const char* method, Object object, std::uint32_t input, T value)
{
    reinterpret_cast<void (*)(Object, std::uint32_t, T)>(members.method(method).setter)(object, input, value);
}

TEST_F(MixerInputs, HaveAVolume)
{
    for (const std::uint32_t input : inputs)
        for (const OSStatus status : {OSStatus{0}, refused}) {
            begin();
            spy::answer("AudioUnitGetParameter").parameter = status ? 0 : 0.1f;
            spy::answer("AudioUnitGetParameter").status = status;
            EXPECT_EQ(members.call<double>("InputVolume", object(), input),
                      status ? 0.0 : static_cast<double>(0.1f));
            EXPECT_EQ(spy::calls(), Notes{getCall("mixer", inputAddress("0", input))});
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, status);

            watch();
            spy::answer("AudioUnitSetParameter").status = status;
            setOf<double>("InputVolume", object(), input, 0.1);
            EXPECT_EQ(spy::calls(), Notes{setCall("mixer", inputAddress("0", input), "0.100000001")});
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, status);
        }
}

TEST_F(MixerInputs, AreEnabledByTheLowByteOfAWholeNumber)
{
    const struct {
        float value;
        HostBoolean isEnabled;
        const char* why;
    } rows[] = {
        {0, 0, "zero"},
        {0.5f, 0, "0.5 truncates to 0"},
        {0.99999f, 0, "0.99999 truncates to 0"},
        {1, 1, "one"},
        {1.5f, 1, "1.5 truncates to 1"},
        {2, 1, "two"},
        {255, 1, "the largest byte"},
        {255.9f, 1, "255.9 truncates to 255"},
        {256, 0, "a low byte of 0"},
        {257, 1, "a low byte of 1"},
        {512, 0, "a low byte of 0"},
        {-0.5f, 0, "-0.5 truncates to 0"},
        {-1, 1, "a low byte of 255"},
        {-256, 0, "a low byte of 0"},
        {16777215, 1, "the largest odd float"},
        {2147483648.0f, 0, "above signed 32 bits"},
        {1e20f, 0, "above 64 bits"},
        {-1e20f, 0, "below 64 bits"},
        {float(inf), 0, "infinity"},
        {-float(inf), 0, "minus infinity"},
        {NAN, 0, "not-a-number"},
    };
    for (const std::uint32_t input : inputs)
        for (const auto& row : rows) {
            SCOPED_TRACE(row.why);
            begin();
            spy::answer("AudioUnitGetParameter").parameter = row.value;
            EXPECT_EQ(members.call<HostBoolean>("InputEnabled", object(), input), row.isEnabled);
            EXPECT_EQ(spy::calls(), Notes{getCall("mixer", inputAddress("1", input))});
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, 0);
        }
    begin();
    spy::answer("AudioUnitGetParameter").status = refused;
    EXPECT_EQ(members.call<HostBoolean>("InputEnabled", object(), 0u), 0);
    EXPECT_EQ(data().lasterror, refused);
}

TEST_F(MixerInputs, AreEnabledAndDisabled)
{
    for (const std::uint32_t input : inputs)
        for (const HostBoolean value : {0, 1, 2, 255})
            for (const OSStatus status : {OSStatus{0}, refused}) {
                begin();
                spy::answer("AudioUnitSetParameter").status = status;
                setOf<HostBoolean>("InputEnabled", object(), input, value);
                EXPECT_EQ(spy::calls(), Notes{setCall("mixer", inputAddress("1", input), value ? "1" : "0")});
                EXPECT_EQ(seen(), Lasterrors{-1});
                EXPECT_EQ(data().lasterror, status);
            }
}

TEST_F(MixerInputs, CallThePlatformEvenBeforeALoad)
{
    spy::answer("AudioUnitGetParameter").status = -50;
    spy::answer("AudioUnitSetParameter").status = -51;
    EXPECT_EQ(members.call<double>("InputVolume", object(), 3u), 0.0);
    EXPECT_EQ(data().lasterror, -50);
    setOf<double>("InputVolume", object(), 3, 1);
    EXPECT_EQ(data().lasterror, -51);
    EXPECT_EQ(members.call<HostBoolean>("InputEnabled", object(), 3u), 0);
    EXPECT_EQ(data().lasterror, -50);
    setOf<HostBoolean>("InputEnabled", object(), 3, 1);
    EXPECT_EQ(data().lasterror, -51);
    EXPECT_EQ(spy::calls(), (Notes{getCall("null", "0, input, 3"), setCall("null", "0, input, 3", "1"),
                                   getCall("null", "1, input, 3"), setCall("null", "1, input, 3", "1")}));
}

TEST_F(MixerInputs, CatchExceptionsOfThePlatform)
{
    begin();
    spy::script().inEachCall = [](std::size_t) { throw Thrown(); };
    EXPECT_NO_THROW(EXPECT_EQ(members.call<double>("InputVolume", object(), 0u), 0.0));
    EXPECT_NO_THROW(setOf<double>("InputVolume", object(), 0, 1));
    EXPECT_NO_THROW(EXPECT_EQ(members.call<HostBoolean>("InputEnabled", object(), 0u), 0));
    EXPECT_NO_THROW(setOf<HostBoolean>("InputEnabled", object(), 0, 1));
    EXPECT_EQ(spy::calls().size(), 4u);
    EXPECT_EQ(data().lasterror, -1);
}

} // namespace
