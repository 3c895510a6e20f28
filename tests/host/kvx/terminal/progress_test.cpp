#include "host/kvx/terminal/progress.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

TEST(FormatLevel, PrintsABarAndANumber)
{
    const struct {
        float peak;
        const char* text;
        const char* why;
    } facts[] = {
        {1.0f, "[####################]   0.0 dB", "full scale"},
        {2.0f, "[####################]   6.0 dB", "above full scale, the bar is full"},
        {0.5f, "[##################--]  -6.0 dB", "half of full scale"},
        {0.00099f, "[--------------------] -60.1 dB", "below the range of the bar"},
        {0.00101f, "[#-------------------] -59.9 dB", "just above the lower limit of the bar"},
        {1e-9f, "[--------------------] -99.9 dB", "the number has a lower limit"},
        {0.0f, "[--------------------]   silent", "silence"},
        {std::numeric_limits<float>::quiet_NaN(), "[--------------------]   silent", "NaN"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::formatLevel(fact.peak), fact.text) << fact.why;
    EXPECT_EQ(kvx::formatLevel(std::numeric_limits<float>::infinity()).substr(0, 22),
              "[####################]");
}

TEST(FormatPosition, PrintsAtMostTheTotalTime)
{
    EXPECT_EQ(kvx::formatPosition(11, 10, 0), "  0:10.0 / 0:10.0  [--------------------]   silent");
}

kvx::PlayStatus playing()
{
    kvx::PlayStatus status;
    status.position = 2.45;
    status.duration = 6.5;
    status.level = -9.3;
    return status;
}

TEST(PlayStatus, PrintsPositionLevelRateAndLoop)
{
    EXPECT_EQ(kvx::formatPlayStatus(playing()),
              "  0:02.4 / 0:06.5  [#########-]  -9.3 dB  rate 1.00  no loop");
}

TEST(PlayStatus, PrintsSettingsThatDifferFromTheDefault)
{
    const struct {
        void (*change)(kvx::PlayStatus&);
        const char* afterLevel;
        const char* why;
    } facts[] = {
        {[](auto& s) { s.rate = 0.5; }, "rate 0.50  no loop", "slower"},
        {[](auto& s) { s.pitch = -100; }, "rate 1.00  no loop  pitch -100", "lower"},
        {[](auto& s) { s.pitch = 700; }, "rate 1.00  no loop  pitch +700", "higher"},
        {[](auto& s) { s.volume = 0.5; }, "rate 1.00  no loop  volume 50 %", "softer"},
        {[](auto& s) { s.volume = 0.999; }, "rate 1.00  no loop", "rounded to full volume"},
        {[](auto& s) { s.loopIn = 1, s.loopOut = 3, s.isLooping = true; }, "rate 1.00  loop 0:01.0-0:03.0",
         "a loop"},
        {[](auto& s) { s.loopOut = 3; }, "rate 1.00  loop 0:00.0-0:03.0 off", "loop points without looping"},
        {[](auto& s) { s.loopIn = s.loopOut = 3; }, "rate 1.00  loop 0:03.0-",
         "a loop start without a loop end"},
        {[](auto& s) { s.note = "a note"; }, "a note  rate 1.00  no loop", "a note precedes the rate"},
    };
    for (const auto& fact : facts) {
        kvx::PlayStatus status = playing();
        fact.change(status);
        EXPECT_EQ(kvx::formatPlayStatus(status),
                  std::string("  0:02.4 / 0:06.5  [#########-]  -9.3 dB  ") + fact.afterLevel)
            << fact.why;
    }
}

TEST(PlayStatus, PrintsNoLevelForSilenceAndPauses)
{
    kvx::PlayStatus status = playing();
    status.level = -120;
    EXPECT_NE(kvx::formatPlayStatus(status).find("[----------]   silent"), std::string::npos);
    status.level = -9.3;
    status.isPaused = true;
    EXPECT_EQ(kvx::formatPlayStatus(status), "  0:02.4 / 0:06.5  [----------]   paused  rate 1.00  no loop");
}

TEST(PlayStatus, FitsInEightyColumnsWithALoop)
{
    kvx::PlayStatus status = playing();
    status.loopIn = 1, status.loopOut = 3;
    EXPECT_LT(kvx::formatPlayStatus(status).size(), 80u);
}

TEST(PlayStatus, PrintsAtMostTheDuration)
{
    kvx::PlayStatus status = playing();
    status.position = 7;
    EXPECT_EQ(kvx::formatPlayStatus(status).rfind("  0:06.5 / 0:06.5", 0), 0u);
}

/// The text that a Progress writes to a file while `use` calls its functions.
std::string written(kvx::Verbosity verbosity, const std::function<void(kvx::Progress&)>& use)
{
    std::FILE* file = std::tmpfile();
    kvx::Progress progress(verbosity, file);
    use(progress);
    std::rewind(file);
    std::string text;
    for (int c; (c = std::fgetc(file)) != EOF;) text += char(c);
    std::fclose(file);
    return text;
}

TEST(Progress, ShowsTheLiveLineOnATerminalOnly)
{
    const auto use = [](kvx::Progress& progress) {
        progress.say("begin");
        progress.showLine(kvx::formatPosition(1, 10, 0.5f));
        progress.say("end");
    };
    EXPECT_EQ(written(kvx::Verbosity::quiet, use), "");
    EXPECT_EQ(written(kvx::Verbosity::plain, use), "begin\nend\n");
    const std::string line = "  0:01.0 / 0:10.0  [##################--]  -6.0 dB";
    EXPECT_EQ(written(kvx::Verbosity::live, use), "begin\n" + line + "\x1b[J\r" + "\x1b[J" + "end\n")
        << "the cursor rests at the start of the line, and erasing begins there";
}

TEST(Progress, CutsALineBeforeTheTerminalsLastColumn)
{
    const struct {
        unsigned short columns;
        std::size_t shown;
        const char* why;
    } facts[] = {
        {33, 32, "the last column stays free"},
        {0, 79, "a terminal that reports no width counts as 80 columns"},
    };
    for (const auto& fact : facts) {
        int outer = -1, inner = -1;
        const winsize size = {24, fact.columns, 0, 0};
        ASSERT_EQ(openpty(&outer, &inner, nullptr, nullptr, &size), 0);
        std::FILE* const out = fdopen(inner, "w");
        EXPECT_TRUE(kvx::Progress(kvx::Verbosity::live, out).showLine(std::string(200, 'x')));
        std::string text;
        for (char byte; (text.empty() || text.back() != '\r') && read(outer, &byte, 1) == 1;) text += byte;
        EXPECT_EQ(text, std::string(fact.shown, 'x') + "\x1b[J\r") << fact.why;
        std::fclose(out);
        close(outer);
    }
    const auto text = written(kvx::Verbosity::live,
                              [](kvx::Progress& progress) { progress.showLine(std::string(200, 'x')); });
    EXPECT_EQ(text, std::string(79, 'x') + "\x1b[J\r") << "a file counts as 80 columns";
}

TEST(Progress, ShowsAtMostTenLinesPerSecondUnlessHurried)
{
    const auto text = written(kvx::Verbosity::live, [](kvx::Progress& progress) {
        EXPECT_TRUE(progress.showLine("a"));
        EXPECT_FALSE(progress.showLine("b"));
        progress.hurry();
        EXPECT_TRUE(progress.showLine("c"));
    });
    EXPECT_EQ(text, "a\x1b[J\rc\x1b[J\r");
}

TEST(Progress, WarnsOnStandardErrorEvenIfQuiet)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(written(kvx::Verbosity::quiet,
                      [](kvx::Progress& progress) {
                          EXPECT_EQ(progress.exitCode(), 0);
                          progress.warn("a.wav is cut short");
                          EXPECT_EQ(progress.exitCode(), 1);
                      }),
              "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "kvx: a.wav is cut short\n");

    testing::internal::CaptureStderr();
    EXPECT_EQ(written(kvx::Verbosity::live,
                      [](kvx::Progress& progress) {
                          progress.showLine("a");
                          progress.warn("b");
                      }),
              "a\x1b[J\r\x1b[J")
        << "the live line is erased";
    testing::internal::GetCapturedStderr();
}

TEST(Progress, IsPlainWithoutATerminal)
{
    std::FILE* file = std::tmpfile();
    EXPECT_EQ(kvx::verbosityFor(false, file), kvx::Verbosity::plain);
    EXPECT_EQ(kvx::verbosityFor(true, file), kvx::Verbosity::quiet);
    std::fclose(file);
}

} // namespace
