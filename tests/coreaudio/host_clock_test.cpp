// The shared methods of the host clock return the platform's values unchanged.
#include "tests/coreaudio/subject.h"

#include <cstring>

namespace {

using namespace subject;
using spy::Calls;

using HostClock = Subject;

TEST_F(HostClock, HasThePlatformsFrequency)
{
    for (const double frequency : {0.0, 1e9, 1000000000.0 / 3, 1.5, -1.0, 1e300}) {
        property_spy::reset();
        std::memcpy(&spy::answer("AudioGetHostClockFrequency").bits, &frequency, sizeof frequency);
        EXPECT_EQ(members.callShared<double>("CoreAudioGetHostClockFrequencyKVX"), frequency);
        EXPECT_EQ(spy::calls(), Calls{"AudioGetHostClockFrequency()"});
    }
}

TEST_F(HostClock, HasThePlatformsSmallestStep)
{
    for (const std::uint32_t step : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        property_spy::reset();
        spy::answer("AudioGetHostClockMinimumTimeDelta").bits = step;
        EXPECT_EQ(
            static_cast<std::uint32_t>(members.callShared<HostInteger>("GetHostClockMinimumTimeDeltaKVX")),
            step);
        EXPECT_EQ(spy::calls(), Calls{"AudioGetHostClockMinimumTimeDelta()"});
    }
}

TEST_F(HostClock, PassesTimesOf64Bits)
{
    const std::uint64_t times[] = {
        0,         1,          0x7FFFFFFF,       0x80000000,         0xFFFFFFFF,         0x100000000,
        123456789, 1ull << 53, (1ull << 53) + 1, 0x7FFFFFFFFFFFFFFF, 0x8000000000000000, 0xFFFFFFFFFFFFFFFF,
    };
    char shown[64];
    for (const std::uint64_t time : times) {
        SCOPED_TRACE(time);
        property_spy::reset();
        spy::answer("AudioGetCurrentHostTime").bits = time;
        EXPECT_EQ(members.callShared<std::uint64_t>("CoreAudioGetCurrentHostTimeKVX"), time);
        EXPECT_EQ(spy::calls(), Calls{"AudioGetCurrentHostTime()"});

        spy::forgetCalls();
        spy::answer("AudioConvertHostTimeToNanos").bits = ~time;
        EXPECT_EQ(members.callShared<std::uint64_t>("CoreAudioConvertHostTimeToNanosKVX", time), ~time);
        std::snprintf(shown, sizeof shown, "AudioConvertHostTimeToNanos(0x%llX)",
                      static_cast<unsigned long long>(time));
        EXPECT_EQ(spy::calls(), Calls{shown});

        spy::forgetCalls();
        spy::answer("AudioConvertNanosToHostTime").bits = time ^ 0x5555555555555555;
        EXPECT_EQ(members.callShared<std::uint64_t>("CoreAudioConvertNanosToHostTimeKVX", time),
                  time ^ 0x5555555555555555);
        std::snprintf(shown, sizeof shown, "AudioConvertNanosToHostTime(0x%llX)",
                      static_cast<unsigned long long>(time));
        EXPECT_EQ(spy::calls(), Calls{shown});
    }
}

TEST_F(HostClock, PassesNoExceptionToTheHost)
{
    for (const char* function :
         {"AudioGetHostClockFrequency", "AudioGetHostClockMinimumTimeDelta", "AudioGetCurrentHostTime",
          "AudioConvertHostTimeToNanos", "AudioConvertNanosToHostTime"})
        throwInPlatform(function);
    EXPECT_NO_THROW({
        EXPECT_EQ(members.callShared<double>("CoreAudioGetHostClockFrequencyKVX"), 0.0);
        EXPECT_EQ(members.callShared<HostInteger>("GetHostClockMinimumTimeDeltaKVX"), 0);
        EXPECT_EQ(members.callShared<std::uint64_t>("CoreAudioGetCurrentHostTimeKVX"), 0u);
        EXPECT_EQ(members.callShared<std::uint64_t>("CoreAudioConvertHostTimeToNanosKVX", std::uint64_t{5}),
                  0u);
        EXPECT_EQ(members.callShared<std::uint64_t>("CoreAudioConvertNanosToHostTimeKVX", std::uint64_t{5}),
                  0u);
    });
}

TEST_F(HostClock, CallsNoHostServiceAndKeepsLasterror)
{
    lasterror() = 4711;
    members.callShared<std::uint64_t>("CoreAudioGetCurrentHostTimeKVX");
    members.callShared<double>("CoreAudioGetHostClockFrequencyKVX");
    EXPECT_EQ(lasterror(), 4711) << "a shared method has no object";
    EXPECT_EQ(host().notes(), fake::Notes());
}

} // namespace
