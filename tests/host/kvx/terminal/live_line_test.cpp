#include "host/kvx/terminal/live_line.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

constexpr std::size_t wide = 1000;

TEST(FormatLevel, PrintsABarAndANumber)
{
    const struct {
        float peak;
        const char* text;
        const char* why;
    } facts[] = {
        {1.0f, "[##########]   0.0 dB", "full scale"},
        {2.0f, "[##########]   6.0 dB", "above full scale, the bar is full"},
        {0.5f, "[#########-]  -6.0 dB", "half of full scale"},
        {0.00099f, "[----------] -60.1 dB", "below the range of the bar"},
        {0.00101f, "[#---------] -59.9 dB", "just above the lower limit of the bar"},
        {1e-9f, "[----------] -99.9 dB", "the number has a lower limit"},
        {0.0f, "[----------]   silent", "silence"},
        {std::numeric_limits<float>::quiet_NaN(), "[----------]   silent", "NaN"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::formatLevel(fact.peak), fact.text) << fact.why;
    EXPECT_EQ(kvx::formatLevel(std::numeric_limits<float>::infinity()).substr(0, 12), "[##########]");
}

kvx::PlayStatus playing()
{
    kvx::PlayStatus status;
    status.position = 2.45;
    status.duration = 6.5;
    status.peak = 0.34f;
    return status;
}

std::string lineOf(const kvx::PlayStatus& status, const kvx::FilePlaySettings& settings = {},
                   std::size_t width = wide)
{
    return fitLine(formatPlayStatus(status, settings), width);
}

TEST(ShareDone, PrintsTimesAndPercent)
{
    EXPECT_EQ(kvx::fitLine(kvx::formatShareDone(2.43, 6.5), 80), "  0:02.4 / 0:06.5   37 %");
    EXPECT_EQ(kvx::fitLine(kvx::formatShareDone(6.5, 6.5), 80), "  0:06.5 / 0:06.5  100 %");
    EXPECT_EQ(kvx::fitLine(kvx::formatShareDone(2.43, 6.5), 10), "   37 %");
}

TEST(PlayStatus, PrintsPositionLevelRateAndLoop)
{
    EXPECT_EQ(lineOf(playing()), "  0:02.4 / 0:06.5  [#########-]  -9.4 dB  rate 1.00  no loop");
}

TEST(PlayStatus, HasTheSamePositionAndLevelForEveryPlayMethod)
{
    EXPECT_EQ(fitLine(formatPlayStatus(playing()), wide), "  0:02.4 / 0:06.5  [#########-]  -9.4 dB");
    kvx::PlayStatus status = playing();
    status.volume = 0.5;
    EXPECT_EQ(fitLine(formatPlayStatus(status), wide),
              "  0:02.4 / 0:06.5  [#########-]  -9.4 dB  volume 50 %");
}

TEST(PlayStatus, PrintsSettingsThatDifferFromTheDefault)
{
    const struct {
        void (*change)(kvx::PlayStatus&, kvx::FilePlaySettings&);
        const char* afterLevel;
        const char* why;
    } facts[] = {
        {[](auto&, auto& s) { s.rate = 0.5; }, "rate 0.50  no loop", "slower"},
        {[](auto&, auto& s) { s.pitch = -100; }, "rate 1.00  no loop  pitch -100", "lower"},
        {[](auto&, auto& s) { s.pitch = 700; }, "rate 1.00  no loop  pitch +700", "higher"},
        {[](auto& p, auto&) { p.volume = 0.5; }, "rate 1.00  no loop  volume 50 %", "softer"},
        {[](auto& p, auto&) { p.volume = 0.999; }, "rate 1.00  no loop", "rounded to full volume"},
        {[](auto& p, auto&) { p.volume = 0; }, "rate 1.00  no loop  muted", "no volume"},
        {[](auto&, auto& s) { s.loopIn = 1, s.loopOut = 3, s.isLooping = true; },
         "rate 1.00  loop 0:01.0-0:03.0", "a loop"},
        {[](auto&, auto& s) { s.loopOut = 3; }, "rate 1.00  loop 0:00.0-0:03.0 off",
         "loop points without looping"},
        {[](auto&, auto& s) { s.loopIn = s.loopOut = 3; }, "rate 1.00  loop 0:03.0-",
         "a loop start without a loop end"},
        {[](auto& p, auto&) { p.note = "a note"; }, "a note  rate 1.00  no loop", "a note precedes the rate"},
    };
    for (const auto& fact : facts) {
        kvx::PlayStatus status = playing();
        kvx::FilePlaySettings settings;
        fact.change(status, settings);
        EXPECT_EQ(lineOf(status, settings),
                  std::string("  0:02.4 / 0:06.5  [#########-]  -9.4 dB  ") + fact.afterLevel)
            << fact.why;
    }
}

TEST(PlayStatus, PrintsNoLevelForSilenceAndPauses)
{
    kvx::PlayStatus status = playing();
    status.peak = 0;
    EXPECT_NE(lineOf(status).find("[----------]   silent"), std::string::npos);
    status.peak = 0.34f;
    status.isPaused = true;
    EXPECT_EQ(lineOf(status), "  0:02.4 / 0:06.5  [----------]   paused  rate 1.00  no loop");
}

TEST(PlayStatus, FitsInEightyColumnsWithALoop)
{
    kvx::FilePlaySettings settings;
    settings.loopIn = 1, settings.loopOut = 3;
    EXPECT_LT(lineOf(playing(), settings).size(), 80u);
}

TEST(PlayStatus, PrintsAtMostTheDuration)
{
    kvx::PlayStatus status = playing();
    status.position = 7;
    EXPECT_EQ(lineOf(status).rfind("  0:06.5 / 0:06.5", 0), 0u);
}

TEST(PlayStatus, LeavesOutWholeFieldsInANarrowTerminal)
{
    kvx::PlayStatus status = playing();
    status.volume = 0.5;
    kvx::FilePlaySettings settings;
    settings.pitch = 700;
    const struct {
        std::size_t width;
        const char* line;
    } facts[] = {
        {87, "  0:02.4 / 0:06.5  [#########-]  -9.4 dB  rate 1.00  no loop  pitch +700  volume 50 %"},
        {84, "  0:02.4 / 0:06.5  [#########-]  -9.4 dB  rate 1.00  pitch +700  volume 50 %"},
        {76, "  0:02.4 / 0:06.5  [#########-]  -9.4 dB  rate 1.00  pitch +700  volume 50 %"},
        {74, "  0:02.4 / 0:06.5  [#########-]  -9.4 dB  no loop  pitch +700  volume 50 %"},
        {73, "  0:02.4 / 0:06.5  [#########-]  -9.4 dB  pitch +700  volume 50 %"},
        {64, "  0:02.4 / 0:06.5  [#########-]  -9.4 dB  rate 1.00  volume 50 %"},
        {40, "  0:02.4 / 0:06.5  [#########-]  -9.4 dB"},
        {39, "  0:02.4 / 0:06.5  no loop  volume 50 %"},
        {17, "  0:02.4 / 0:06.5"},
        {16, "  0:02.4"},
        {8, "  0:02.4"},
        {7, "  0:02."},
        {0, ""},
    };
    for (const auto& fact : facts) EXPECT_EQ(lineOf(status, settings, fact.width), fact.line) << fact.width;
}

TEST(PlayStatus, KeepsTheNoteBeforeTheLevel)
{
    kvx::PlayStatus status = playing();
    status.note = "mark a loop with [ and ] first";
    EXPECT_EQ(lineOf(status, {}, 49), "  0:02.4 / 0:06.5  mark a loop with [ and ] first");
}

} // namespace
