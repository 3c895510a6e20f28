#include "host/kvx/files/atomic_file.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/keyboard.h"
#include "tests/support/sanitizers.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

using kvx::Key;
using Keys = std::vector<Key>;

bool isLineByLine(int terminal)
{
    termios mode = {};
    EXPECT_EQ(tcgetattr(terminal, &mode), 0);
    return (mode.c_lflag & ICANON) && (mode.c_lflag & ECHO);
}

/// Run `work` in a child process on a new terminal, and `watch` in this process, which types on the terminal
/// and reads its screen.
/// Returns  the exit code of the child, or 128 plus the number of the signal that ended the child.
template <class Work, class Watch>
int inATerminal(Work work, Watch watch)
{
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        signal(SIGHUP, SIG_DFL); // if the test runs under nohup, SIGHUP is ignored
        work();
        _exit(0);
    }
    watch(terminal, child);
    char ignored[256];
    while (read(terminal, ignored, sizeof ignored) > 0) {
    }
    int status = 0;
    waitpid(child, &status, 0);
    close(terminal);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

std::string readUntil(int terminal, char last)
{
    std::string text;
    for (char byte; read(terminal, &byte, 1) == 1;) {
        text += byte;
        if (byte == last) break;
    }
    return text;
}

void say(char byte) { ASSERT_EQ(write(STDOUT_FILENO, &byte, 1), 1); }

TEST(Keyboard, ReadsKeysAtOnceWithoutEcho)
{
    const int code = inATerminal(
        [] {
            kvx::InterruptGuard guard;
            kvx::Keyboard keyboard;
            say('r');
            Keys typed;
            while (typed.size() < 2)
                for (const Key key : keyboard.read()) typed.push_back(key);
            if (typed != Keys{Key::quit, Key::louder}) _exit(3);
            say('e');
        },
        [](int terminal, pid_t) {
            EXPECT_EQ(readUntil(terminal, 'r'), "r");
            EXPECT_FALSE(isLineByLine(terminal));
            EXPECT_EQ(write(terminal, "q\x1b[A", 4), 4);
            EXPECT_EQ(readUntil(terminal, 'e'), "e") << "no key was echoed";
        });
    EXPECT_EQ(code, 0);
}

TEST(Keyboard, RestoresTheTerminalAtTheEnd)
{
    inATerminal(
        [] {
            kvx::InterruptGuard guard;
            {
                kvx::Keyboard keyboard;
                say('r');
                while (keyboard.read().empty()) {
                }
            }
            say('e');
            sleep(60); // longer than the parent process needs to examine the terminal and kill this process
        },
        [](int terminal, pid_t child) {
            readUntil(terminal, 'r');
            EXPECT_EQ(write(terminal, "q", 1), 1);
            readUntil(terminal, 'e');
            EXPECT_TRUE(isLineByLine(terminal));
            kill(child, SIGKILL);
        });
}

// The signal handler restores the terminal, because the second signal ends the process at once.
TEST(Keyboard, RestoresTheTerminalAtTheFirstSignal)
{
    if (support::hasThreadSanitizer)
        GTEST_SKIP() << "the thread sanitizer loses some signals in a child of forkpty()";
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        const int code = inATerminal(
            [] {
                kvx::InterruptGuard guard;
                kvx::Keyboard keyboard;
                say('r');
                for (; !kvx::isInterrupted(); poll(nullptr, 0, 10)) keyboard.read();
                say('i');
                for (;;)
                    poll(nullptr, 0, 10); // hangs, as a command may do that does not see the first signal
            },
            [signal](int terminal, pid_t child) {
                readUntil(terminal, 'r');
                EXPECT_FALSE(isLineByLine(terminal));
                kill(child, signal);
                readUntil(terminal, 'i');
                EXPECT_TRUE(isLineByLine(terminal));
                kill(child, signal);
            });
        EXPECT_EQ(code, 128 + signal);
    }
}

TEST(Keyboard, RestoresTheTerminalAtQuitAndAbort)
{
    for (int signal : {SIGQUIT, SIGABRT}) {
        SCOPED_TRACE(signal);
        inATerminal(
            [] {
                kvx::InterruptGuard guard;
                kvx::Keyboard keyboard;
                say('r');
                for (;;) poll(nullptr, 0, 10);
            },
            [signal](int terminal, pid_t child) {
                readUntil(terminal, 'r');
                EXPECT_FALSE(isLineByLine(terminal));
                kill(child, signal);
                // WNOWAIT keeps the ended child process, and the terminal with it, until the terminal is
                // examined.
                siginfo_t info = {};
                EXPECT_EQ(waitid(P_PID, id_t(child), &info, WEXITED | WNOWAIT), 0);
                EXPECT_EQ(info.si_status, signal);
                EXPECT_TRUE(isLineByLine(terminal));
            });
    }
}

TEST(Keyboard, AbortRemovesUnfinishedFiles)
{
    const support::TemporaryFolder folder;
    const std::string unfinished = kvx::temporaryPathFor(folder / "out.wav");
    const int code = inATerminal(
        [&] {
            kvx::InterruptGuard guard;
            kvx::Keyboard keyboard;
            std::ofstream(unfinished) << "half";
            if (folder.count() != 1 || isLineByLine(STDIN_FILENO)) _exit(3);
            std::abort();
        },
        [](int, pid_t) {});
    EXPECT_EQ(code, 128 + SIGABRT);
    EXPECT_EQ(folder.count(), 0u);
}

/// Act as a shell: run `job` in a separate process group in the foreground. When the job stops, run
/// `whileStopped` and continue the job.
void runJob(void (*job)(), void (*whileStopped)())
{
    signal(SIGTTOU, SIG_IGN);
    const pid_t child = fork();
    if (child == 0) {
        setpgid(0, 0);
        tcsetpgrp(STDIN_FILENO, getpgrp());
        signal(SIGTTOU, SIG_DFL);
        job();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, WUNTRACED);
    if (!WIFSTOPPED(status)) _exit(9);
    tcsetpgrp(STDIN_FILENO, getpgrp());
    whileStopped();
    tcsetpgrp(STDIN_FILENO, child);
    kill(-child, SIGCONT);
    waitpid(child, &status, 0);
    _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 8);
}

TEST(Keyboard, RestoresTheTerminalWhileTheProcessIsStopped)
{
    const auto session = [] {
        runJob(
            [] {
                kvx::InterruptGuard guard;
                kvx::Keyboard keyboard;
                say('r');
                while (!kvx::Keyboard::isStopRequested()) keyboard.read();
                keyboard.stopProcess();
                while (keyboard.read().empty()) {
                }
                _exit(isLineByLine(STDIN_FILENO) ? 4 : 5);
            },
            [] { say(isLineByLine(STDIN_FILENO) ? 'b' : 'x'); });
    };
    const int code = inATerminal(session, [](int terminal, pid_t) {
        readUntil(terminal, 'r');
        EXPECT_EQ(write(terminal, "\x1a", 1), 1); // Ctrl-Z
        EXPECT_EQ(readUntil(terminal, 'b').back(), 'b') << "the shell has the terminal in line mode";
        EXPECT_EQ(write(terminal, "l\n", 2), 2);
    });
    EXPECT_EQ(code, 5) << "the terminal is in raw mode again";
}

// When some shells continue a stopped program, they restore the terminal mode that the program had set.
TEST(Keyboard, RestoresTheFirstModeAfterAContinueInRawMode)
{
    const int code = inATerminal(
        [] {
            kvx::InterruptGuard guard;
            {
                kvx::Keyboard keyboard;
                raise(SIGCONT);
                keyboard.read();
                if (isLineByLine(STDIN_FILENO)) _exit(3);
            }
            _exit(isLineByLine(STDIN_FILENO) ? 0 : 4);
        },
        [](int, pid_t) {});
    EXPECT_EQ(code, 0);
}

TEST(KeyDecoder, DecodesTheBytesOfATerminal)
{
    const struct {
        const char* bytes;
        Keys keys;
        const char* why;
    } facts[] = {
        {"", {}, "nothing typed"},
        {" ", {Key::pause}, "space"},
        {"[]", {Key::loopIn, Key::loopOut}, "two at once"},
        {"l", {Key::loop}, "a letter"},
        {"+-", {Key::faster, Key::slower}, "rate"},
        {"=_", {Key::faster, Key::slower}, "the same keys without and with shift"},
        {"<>", {Key::lower, Key::higher}, "pitch"},
        {"q", {Key::quit}, "quit"},
        {"nNpPmM", {Key::next, Key::next, Key::previous, Key::previous, Key::mute, Key::mute}, "letters"},
        {"wW?", {Key::loopFile, Key::loopFile, Key::help}, "loop of the file, help"},
        {"xyz\r\n\t", {}, "keys without a function"},
        {"\x1b[A\x1b[B\x1b[C\x1b[D", {Key::louder, Key::softer, Key::forward, Key::back}, "arrows"},
        {"\x1bOA\x1bOB\x1bOC\x1bOD",
         {Key::louder, Key::softer, Key::forward, Key::back},
         "arrows in application mode"},
        {"\x1b[1;5C", {Key::forward}, "with a modifier held"},
        {"\x1b[3~q", {Key::quit}, "an escape sequence without a function is skipped"},
        {"\x1b[15~[", {Key::loopIn}, "the bracket of a function key is not loop start"},
        {"\x1bq", {}, "Alt and q is a different key"},
        {"\x1b\x1b[A", {Key::louder}, "Escape, then an arrow"},
        {"\xc3\xa4 ", {Key::pause}, "a character of two bytes"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::KeyDecoder().decode(fact.bytes), fact.keys) << fact.why;
}

TEST(KeyDecoder, AcceptsBytesOneByOne)
{
    for (const std::string sequence : {"\x1b[C", "\x1bOC", "\x1b[1;2C"}) {
        kvx::KeyDecoder decoder;
        for (std::size_t i = 0; i + 1 < sequence.size(); ++i)
            EXPECT_EQ(decoder.decode(sequence.substr(i, 1)), Keys());
        EXPECT_EQ(decoder.decode("C"), Keys({Key::forward}));
        EXPECT_EQ(decoder.decode("q"), Keys({Key::quit})) << "the next key";
    }
}

TEST(KeyHelp, ExplainsEveryKey)
{
    const std::vector<std::string> lines = {
        "  space  pause, or continue",
        "  left   5 seconds back",
        "  right  5 seconds forward",
        "  n      next file",
        "  p      start of the file, or in its first 3 seconds the previous file",
        "  up     louder by 5 %",
        "  down   softer by 5 %",
        "  m      mute, or back to the volume before",
        "  [      set the loop start here",
        "  ]      set the loop end here",
        "  l      loop from [ to ], on or off",
        "  w      loop the whole file, on or off",
        "  +      faster by 5 % of the normal speed",
        "  -      slower by 5 % of the normal speed",
        "  >      pitch up by a semitone",
        "  <      pitch down by a semitone",
        "  ?      list the keys",
        "  q      quit",
    };
    EXPECT_EQ(kvx::formatKeys(kvx::allKeys()), lines);
    EXPECT_EQ(kvx::formatKeys({Key::quit, Key::pause}),
              std::vector<std::string>({lines.back(), lines.front()}));
    EXPECT_EQ(kvx::formatKeyNames({Key::quit, Key::back}), "q, left");
    EXPECT_EQ(kvx::formatKeySentence({Key::quit, Key::back}), "q: quit; left: 5 seconds back");
}

// The name of a key that is no arrow or blank is the character that the user types.
TEST(KeyHelp, NamesTheCharactersOfTheDecoder)
{
    for (const Key key : kvx::allKeys()) {
        const std::string name = kvx::formatKeyNames({key});
        if (name.size() == 1) EXPECT_EQ(kvx::KeyDecoder().decode(name), Keys({key})) << name;
    }
}

} // namespace
