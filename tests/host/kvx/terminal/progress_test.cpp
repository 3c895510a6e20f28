// Time and level as the user reads them.
#include "host/kvx/terminal/progress.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace {

TEST(Progress, PrintsTime)
{
    const struct {
        double seconds;
        const char* text;
        const char* why;
    } facts[] = {
        {0, "0:00.0", "the start"},
        {0.05, "0:00.0", "cut, not rounded"},
        {7.39, "0:07.3", "seconds have two places"},
        {59.99, "0:59.9", "the edge of a minute"},
        {60, "1:00.0", "likewise"},
        {3599.9, "59:59.9", "the edge of an hour"},
        {3600, "1:00:00.0", "likewise"},
        {36061.5, "10:01:01.5", "minutes of an hour have two places"},
        {-1, "0:00.0", "nothing lies before the start"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::printTime(fact.seconds), fact.text) << fact.why;
}

TEST(Progress, PrintsLevel)
{
    const struct {
        float peak;
        const char* text;
        const char* why;
    } facts[] = {
        {1.0f, "[####################]   0.0 dB", "full scale"},
        {2.0f, "[####################]   6.0 dB", "beyond it the figures go on, the bar does not"},
        {0.5f, "[##################--]  -6.0 dB", "half"},
        {0.00099f, "[--------------------] -60.1 dB", "below the bar's foot"},
        {0.00101f, "[#-------------------] -59.9 dB", "just above it"},
        {1e-9f, "[--------------------] -99.9 dB", "the figures keep their width"},
        {0.0f, "[--------------------]   silent", "silence has no level"},
        {std::numeric_limits<float>::quiet_NaN(), "[--------------------]   silent",
         "nor has what is no number"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::printLevel(fact.peak), fact.text) << fact.why;
    EXPECT_EQ(kvx::printLevel(std::numeric_limits<float>::infinity()).substr(0, 22),
              "[####################]");
}

// What is written to a file instead of a terminal.
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

TEST(Progress, ShowsALineThatIsWrittenOverOnATerminalOnly)
{
    const auto use = [](kvx::Progress& progress) {
        progress.say("begin");
        progress.show(1, 10, 0.5f);
        progress.say("end");
    };
    EXPECT_EQ(written(kvx::Verbosity::quiet, use), "");
    EXPECT_EQ(written(kvx::Verbosity::plain, use), "begin\nend\n");
    const std::string line = "  0:01.0 / 0:10.0  [##################--]  -6.0 dB";
    EXPECT_EQ(written(kvx::Verbosity::live, use), "begin\n" + line + "\x1b[J\r" + "\x1b[J" + "end\n")
        << "the cursor rests at its begin; what stands is erased from there";
}

TEST(Progress, CutsALineBeforeTheTerminalsLastColumn)
{
    const auto text = written(kvx::Verbosity::live,
                              [](kvx::Progress& progress) { progress.showLine(std::string(200, 'x')); });
    EXPECT_EQ(text, std::string(79, 'x') + "\x1b[J\r") << "80 columns where a file does not tell";
}

TEST(Progress, ShowsTenLinesASecondAtMostUnlessHurried)
{
    const auto text = written(kvx::Verbosity::live, [](kvx::Progress& progress) {
        EXPECT_TRUE(progress.showLine("a"));
        EXPECT_FALSE(progress.showLine("b"));
        progress.hurry();
        EXPECT_TRUE(progress.showLine("c"));
    });
    EXPECT_EQ(text, "a\x1b[J\rc\x1b[J\r");
}

TEST(Progress, DoesNotRunPastTheEnd)
{
    const auto text =
        written(kvx::Verbosity::live, [](kvx::Progress& progress) { progress.show(11, 10, 0); });
    EXPECT_NE(text.find("0:10.0 / 0:10.0"), std::string::npos) << text;
}

TEST(Progress, WarnsOnStandardErrorAlsoWhenQuiet)
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
        << "the live line goes first";
    testing::internal::GetCapturedStderr();
}

TEST(Progress, IsPlainWhereThereIsNoTerminal)
{
    std::FILE* file = std::tmpfile();
    EXPECT_EQ(kvx::verbosityFor(false, file), kvx::Verbosity::plain);
    EXPECT_EQ(kvx::verbosityFor(true, file), kvx::Verbosity::quiet);
    std::fclose(file);
}

} // namespace
