// `kvx play` at a terminal: keys, the live line, and the restored terminal.
#include "tests/endtoend/command/play_fixture.h"
#include "tests/endtoend/command/pty_child.h"

#include <csignal>

namespace {

using namespace endtoend;

struct PlayTerminal : Play {};

TEST_F(PlayTerminal, KeysChangeVolumeRateAndPitchOfTheNextFilesToo)
{
    write(support::makeNoise(44100, 2, 44100 * 4), "1.wav");
    PtyChild child(kvxCommand({"play", "--device", "simulated", folder / "1.wav", writeLong()}));
    ASSERT_TRUE(child.waitFor(" / 0:04.0")) << child.shown();
    child.type("\x1b[B\x1b[B++>");
    ASSERT_TRUE(child.waitFor("rate 1.10  no loop  pitch +100  volume 90 %")) << child.shown();
    ASSERT_TRUE(child.waitFor("Playing in.wav")) << child.shown();
    ASSERT_TRUE(child.waitFor(" / 2:00.0")) << child.shown();
    EXPECT_TRUE(child.waitFor("rate 1.10  no loop  pitch +100  volume 90 %")) << child.shown();
    child.type("q");
    EXPECT_EQ(child.wait(), 0) << child.shown();
}

TEST_F(PlayTerminal, KeysControlPlayback)
{
    PtyChild child(kvxCommand({"play", "--start", "60", writeLong()}));
    ASSERT_TRUE(child.waitFor("Keys: space pause")) << child.shown();
    ASSERT_TRUE(child.waitFor("  1:00."));
    EXPECT_FALSE(child.isLineByLine());
    const struct {
        const char *keys, *shown;
    } facts[] = {
        {"l", "mark a loop with [ and ] first"},
        {" ", "paused"},
        {"+", "rate 1.05"},
        {"-", "rate 1.00"},
        {">", "pitch +100"},
        {"<<", "pitch -100"},
        {"\x1b[B\x1b[B", "volume 90 %"},
        {"[", "loop 1:00."},
        {"\x1b[C", "  1:05."},
        {"]", " off"}, // both loop points are set, but the loop is off
        {"l", "loop 1:00"},
        {" ", "  1:00."}, // the position jumps to the loop start when playback continues
    };
    for (const auto& fact : facts) {
        child.type(fact.keys);
        ASSERT_TRUE(child.waitFor(fact.shown)) << fact.keys << "\n" << child.shown();
    }
    child.type("q");
    EXPECT_EQ(child.wait(), 0) << child.shown();
    EXPECT_NE(child.shown().find("Done."), std::string::npos) << child.shown();
    EXPECT_TRUE(child.isLineByLine());
}

TEST_F(PlayTerminal, KeysOfEveryPlayMethodWorkOnAList)
{
    // No file ends while the test waits for the file after it.
    for (const char* name : {"1.wav", "2.wav", "3.wav"}) write(support::makeNoise(8000, 1, 8000 * 600), name);
    for (const Arguments& more : {Arguments{}, {"--buffered"}}) {
        SCOPED_TRACE(testing::PrintToString(more));
        PtyChild child(kvxCommand(joined({"play", "--device", "simulated", "1.wav", "2.wav", "3.wav"}, more)),
                       120, folder.path());
        const struct {
            const char *keys, *shown;
        } facts[] = {
            {"", "Keys: space pause, q quit, ? all keys"},
            {"", "Playing 1.wav"},
            {"?", "  m      mute, or back to the volume before"},
            {"", "  q      quit"},
            {"p", "  0:00."},
            {"n", "Playing 2.wav"},
            {"p", "Playing 1.wav"},
            {"nn", "Playing 3.wav"},
            {"n", "this is the last file"},
            {"\x1b[B", "volume 95 %"},
            {"m", "  muted"},
            {"m", "  volume 95 %"},
            {" ", "   paused"},
            {"\x1b[C\x1b[C", "  0:1"},
            {"m", "  muted"},
            {"m", "  volume 95 %"},
            {" ", " dB"},
            {"p", "  0:00."}, // after three seconds, the start of the file
            {"p", "Playing 2.wav"},
            {"", "  volume 95 %"},
        };
        for (const auto& fact : facts) {
            child.type(fact.keys);
            ASSERT_TRUE(child.waitFor(fact.shown)) << fact.keys << "\n" << child.shown();
        }
        child.type("q");
        EXPECT_EQ(child.wait(), 0) << child.shown();
        EXPECT_TRUE(child.isLineByLine());
    }
}

TEST_F(PlayTerminal, LoopAllStartsAgainAfterTheLastFile)
{
    for (const char* name : {"1.wav", "2.wav"}) write(support::makeNoise(44100, 2, 44100 / 4), name);
    for (const Arguments& more : {Arguments{}, {"--buffered"}}) {
        SCOPED_TRACE(testing::PrintToString(more));
        PtyChild child(
            kvxCommand(joined({"play", "--device", "simulated", "--loop-all", "1.wav", "2.wav"}, more)), 100,
            folder.path());
        for (const char* name : {"1.wav", "2.wav", "1.wav", "2.wav", "1.wav"})
            ASSERT_TRUE(child.waitFor(std::string("Playing ") + name)) << child.shown();
        child.type("q");
        EXPECT_EQ(child.wait(), 0) << child.shown();
    }
}

TEST_F(PlayTerminal, LoopKeyRepeatsTheWholeFile)
{
    write(support::makeNoise(44100, 2, 44100 * 2), "1.wav");
    PtyChild child(kvxCommand({"play", "--device", "simulated", folder / "1.wav"}));
    ASSERT_TRUE(child.waitFor("  0:00.")) << child.shown();
    child.type("w");
    for (const char* shown : {"  loop 0:00.0-0:02.0", "  0:01.", "  0:00.", "  0:01."})
        ASSERT_TRUE(child.waitFor(shown)) << child.shown();
    child.type("w");
    EXPECT_TRUE(child.waitFor("loop 0:00.0-0:02.0 off")) << child.shown();
    EXPECT_TRUE(child.waitFor("Done.")) << child.shown();
    EXPECT_EQ(child.wait(), 0);
}

TEST_F(PlayTerminal, ArrowKeysSeekByFiveSeconds)
{
    PtyChild child(kvxCommand({"play", "--start", "60", writeLong()}));
    ASSERT_TRUE(child.waitFor("  1:00."));
    child.type(" ");
    ASSERT_TRUE(child.waitFor("paused"));
    child.type("\x1b[D\x1b[D");
    EXPECT_TRUE(child.waitFor("  0:5")) << child.shown();
    child.type("\x1b[C\x1b[C\x1b[C");
    EXPECT_TRUE(child.waitFor("  1:0")) << child.shown();
    for (int i = 0; i < 20; ++i) child.type("\x1b[D");
    EXPECT_TRUE(child.waitFor("  0:00.0 / 2:00.0")) << "limited to the start";
    for (int i = 0; i < 30; ++i) child.type("\x1b[C");
    EXPECT_TRUE(child.waitFor("  2:00.0 / 2:00.0")) << "limited to the end";
    child.type(" ");
    EXPECT_EQ(child.wait(), 0) << "playback continues at the end, and ends";
}

TEST_F(PlayTerminal, ProgressFitsOneLine)
{
    PtyChild child(kvxCommand({"play", writeLong()}), 60);
    const auto checkLines = [&](std::size_t from, std::size_t columns) {
        for (std::size_t at = child.shown().find(" / 2:00.0", from); at != std::string::npos;
             at = child.shown().find(" / 2:00.0", at + 1)) {
            const auto begin = child.shown().rfind('\r', at), end = child.shown().find('\x1b', at);
            if (end == std::string::npos) break;
            const auto first =
                begin == std::string::npos ? 0 : begin + 1 + (child.shown()[begin + 1] == '\n');
            EXPECT_LT(end - first, columns) << child.shown().substr(first, end - first);
        }
    };
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(child.waitFor(" / 2:00.0")) << child.shown();
    checkLines(0, 60);
    child.resize(30);
    child.type(" ");
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(child.waitFor(" / 2:00.0")) << child.shown();
    const std::size_t narrow = child.shown().rfind(" / 2:00.0");
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(child.waitFor(" / 2:00.0")) << child.shown();
    checkLines(narrow, 30);
    child.type("q");
    EXPECT_EQ(child.wait(), 0);
}

// The peak of the device's output: half of full scale, times the volume.
TEST_F(PlayTerminal, EveryPlayMethodShowsTheSameLevel)
{
    const std::string file = write({44100, 2, std::vector<float>(44100 * 2 * 30, 0.5f)}, "half.wav");
    const struct {
        Arguments arguments;
        const char* shown;
    } facts[] = {
        {{"play"}, "  [#########-]  -6.0 dB  rate 1.00"},
        {{"play", "--volume", "0.5"}, "  [########--] -12.0 dB  rate 1.00"},
        {{"play", "--buffered"}, "  [#########-]  -6.0 dB"},
        {{"play", "--buffered", "--gain", "-6.0206"}, "  [########--] -12.0 dB"},
        {{"soundstream"}, "  [#########-]  -6.0 dB"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        PtyChild child(kvxCommand(joined(fact.arguments, {"--device", "simulated", file})));
        EXPECT_TRUE(child.waitFor(fact.shown)) << child.shown();
        child.type("\x03");
        EXPECT_EQ(child.wait(), 130);
    }
}

TEST_F(PlayTerminal, RestoresTheTerminalOnEverySignal)
{
    const std::string file = writeLong();
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        PtyChild child(kvxCommand({"play", file}));
        ASSERT_TRUE(child.waitFor(" / 2:00.0")) << child.shown();
        EXPECT_FALSE(child.isLineByLine());
        if (signal == SIGINT)
            child.type("\x03");
        else
            child.send(signal);
        EXPECT_EQ(child.wait(), 128 + signal);
        EXPECT_NE(child.shown().find("\r\nStopped."), std::string::npos) << child.shown();
        EXPECT_TRUE(child.isLineByLine());
    }
}

TEST_F(PlayTerminal, RestoresTheTerminalAfterAFailure)
{
    const std::string file = writeLong();
    PtyChild child(kvxCommand({"play", file, "--start", "1000"}));
    EXPECT_EQ(child.wait(), 1);
    EXPECT_NE(child.shown().find("give a time before 2:00"), std::string::npos) << child.shown();
    EXPECT_TRUE(child.isLineByLine());
}

TEST_F(PlayTerminal, PrintsLoadingDuringABackgroundLoad)
{
    const std::string file = write(support::makeNoise(44100, 2, 44100 * 60), "long.wav");
    PtyChild child(kvxCommand({"play", "--background", file}));
    EXPECT_TRUE(child.waitFor("Loading long.wav")) << child.shown();
    EXPECT_TRUE(child.waitFor("Playing long.wav")) << child.shown();
    child.type("q");
    EXPECT_EQ(child.wait(), 0);
}

} // namespace
