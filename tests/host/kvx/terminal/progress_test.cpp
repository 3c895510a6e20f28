#include "host/kvx/terminal/progress.h"

#include <gtest/gtest.h>

#include <functional>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

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
        progress.showLine(kvx::formatPlayStatus({1, 10, 0.5f}));
        progress.say("end");
    };
    EXPECT_EQ(written(kvx::Verbosity::quiet, use), "");
    EXPECT_EQ(written(kvx::Verbosity::plain, use), "begin\nend\n");
    const std::string line = "  0:01.0 / 0:10.0  [#########-]  -6.0 dB";
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
        EXPECT_TRUE(kvx::Progress(kvx::Verbosity::live, out).showLine({{std::string(200, 'x'), 0}}));
        std::string text;
        for (char byte; (text.empty() || text.back() != '\r') && read(outer, &byte, 1) == 1;) text += byte;
        EXPECT_EQ(text, std::string(fact.shown, 'x') + "\x1b[J\r") << fact.why;
        std::fclose(out);
        close(outer);
    }
    const auto text = written(kvx::Verbosity::live, [](kvx::Progress& progress) {
        progress.showLine({{std::string(200, 'x'), 0}});
    });
    EXPECT_EQ(text, std::string(79, 'x') + "\x1b[J\r") << "a file counts as 80 columns";
}

TEST(Progress, ShowsAtMostTenLinesPerSecondUnlessHurried)
{
    const auto text = written(kvx::Verbosity::live, [](kvx::Progress& progress) {
        EXPECT_TRUE(progress.isLineDue());
        EXPECT_TRUE(progress.showLine({{"a", 0}}));
        EXPECT_FALSE(progress.isLineDue());
        EXPECT_FALSE(progress.showLine({{"b", 0}}));
        progress.hurry();
        EXPECT_TRUE(progress.showLine({{"c", 0}}));
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
                          progress.showLine({{"a", 0}});
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
