// The line that stands while a file plays.
#include "host/kvx/terminal/status_line.h"

#include <gtest/gtest.h>

namespace {

kvx::PlayStatus playing()
{
    kvx::PlayStatus status;
    status.position = 2.45;
    status.duration = 6.5;
    status.level = -9.3;
    return status;
}

TEST(StatusLine, TellsPlaceLevelRateAndLoop)
{
    EXPECT_EQ(kvx::printPlayStatus(playing()),
              "  0:02.4 / 0:06.5  [#########-]  -9.3 dB  rate 1.00  no loop");
}

TEST(StatusLine, AddsWhatIsNotAsUsual)
{
    const struct {
        void (*change)(kvx::PlayStatus&);
        const char* behindLevel;
        const char* why;
    } facts[] = {
        {[](auto& s) { s.rate = 0.5; }, "rate 0.50  no loop", "slower"},
        {[](auto& s) { s.pitch = -100; }, "rate 1.00  no loop  pitch -100", "lower"},
        {[](auto& s) { s.pitch = 700; }, "rate 1.00  no loop  pitch +700", "higher"},
        {[](auto& s) { s.volume = 0.5; }, "rate 1.00  no loop  volume 50 %", "softer"},
        {[](auto& s) { s.volume = 0.999; }, "rate 1.00  no loop", "as good as full"},
        {[](auto& s) { s.loopIn = 1, s.loopOut = 3, s.isLooping = true; }, "rate 1.00  loop 0:01.0-0:03.0",
         "in a loop"},
        {[](auto& s) { s.loopOut = 3; }, "rate 1.00  loop 0:00.0-0:03.0 off", "points, but no loop"},
        {[](auto& s) { s.loopIn = s.loopOut = 3; }, "rate 1.00  loop 0:03.0-", "a begin without an end"},
        {[](auto& s) { s.note = "so it is"; }, "so it is  rate 1.00  no loop", "a note comes early"},
    };
    for (const auto& fact : facts) {
        kvx::PlayStatus status = playing();
        fact.change(status);
        EXPECT_EQ(kvx::printPlayStatus(status),
                  std::string("  0:02.4 / 0:06.5  [#########-]  -9.3 dB  ") + fact.behindLevel)
            << fact.why;
    }
}

TEST(StatusLine, ShowsNoLevelWhereNothingSounds)
{
    kvx::PlayStatus status = playing();
    status.level = -120;
    EXPECT_NE(kvx::printPlayStatus(status).find("[----------]   silent"), std::string::npos);
    status.level = -9.3;
    status.isPaused = true;
    EXPECT_EQ(kvx::printPlayStatus(status), "  0:02.4 / 0:06.5  [----------]   paused  rate 1.00  no loop");
}

TEST(StatusLine, FitsInEightyColumnsWithALoop)
{
    kvx::PlayStatus status = playing();
    status.loopIn = 1, status.loopOut = 3;
    EXPECT_LT(kvx::printPlayStatus(status).size(), 80u);
}

TEST(StatusLine, DoesNotRunPastTheEnd)
{
    kvx::PlayStatus status = playing();
    status.position = 7;
    EXPECT_EQ(kvx::printPlayStatus(status).rfind("  0:06.5 / 0:06.5", 0), 0u);
}

} // namespace
