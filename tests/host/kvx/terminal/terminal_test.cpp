// The terminal while keys are read one by one, and that it is given back.
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/terminal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

bool isLineByLine(int terminal)
{
    termios mode = {};
    EXPECT_EQ(tcgetattr(terminal, &mode), 0);
    return (mode.c_lflag & ICANON) && (mode.c_lflag & ECHO);
}

/// Runs `work` in a process of its own whose terminal is a new one; its exit code, or 128 and the signal.
/// `watch` gets the other side of the terminal while it runs.
template <class Work, class Watch>
int inATerminal(Work work, Watch watch)
{
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        signal(SIGHUP, SIG_DFL); // the test itself may run under nohup
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

TEST(Terminal, ReadsKeysAtOnceAndDoesNotShowThem)
{
    const int code = inATerminal(
        [] {
            kvx::InterruptGuard guard;
            kvx::KeyTerminal keys;
            say('r');
            std::string typed;
            while (typed.size() < 4) typed += keys.read();
            if (typed != "q\x1b[A") _exit(3);
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

TEST(Terminal, IsGivenBackAtTheEnd)
{
    inATerminal(
        [] {
            kvx::InterruptGuard guard;
            {
                kvx::KeyTerminal keys;
                say('r');
                while (keys.read().empty()) {
                }
            }
            say('e');
            sleep(60); // until the other side has looked
        },
        [](int terminal, pid_t child) {
            readUntil(terminal, 'r');
            EXPECT_EQ(write(terminal, "x", 1), 1);
            readUntil(terminal, 'e');
            EXPECT_TRUE(isLineByLine(terminal));
            kill(child, SIGKILL);
        });
}

// The handler does it: whoever asks twice ends the process without another word.
TEST(Terminal, IsGivenBackByTheFirstSignalThatAsksToEnd)
{
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        const int code = inATerminal(
            [] {
                kvx::InterruptGuard guard;
                kvx::KeyTerminal keys;
                say('r');
                while (!kvx::isInterrupted()) keys.read();
                say('i');
                for (;;) pause(); // hangs, as far as the user can tell
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

TEST(Terminal, IsGivenBackWhenTheProcessIsEndedInOtherWays)
{
    for (int signal : {SIGQUIT, SIGABRT}) {
        SCOPED_TRACE(signal);
        inATerminal(
            [] {
                kvx::InterruptGuard guard;
                kvx::KeyTerminal keys;
                say('r');
                for (;;) pause();
            },
            [signal](int terminal, pid_t child) {
                readUntil(terminal, 'r');
                EXPECT_FALSE(isLineByLine(terminal));
                kill(child, signal);
                // Asked without being reaped, so that the terminal still stands.
                siginfo_t info = {};
                EXPECT_EQ(waitid(P_PID, id_t(child), &info, WEXITED | WNOWAIT), 0);
                EXPECT_EQ(info.si_status, signal);
                EXPECT_TRUE(isLineByLine(terminal));
            });
    }
}

// As a shell does it: a job in a process group of its own, in the foreground while it runs.
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

TEST(Terminal, StopsAndGoesOnAsOthersDo)
{
    const auto session = [] {
        runJob(
            [] {
                kvx::InterruptGuard guard;
                kvx::KeyTerminal keys;
                say('r');
                while (!kvx::KeyTerminal::isStopAsked()) keys.read();
                keys.stopProcess();
                while (keys.read().empty()) {
                }
                _exit(isLineByLine(STDIN_FILENO) ? 4 : 5);
            },
            [] { say(isLineByLine(STDIN_FILENO) ? 'b' : 'x'); });
    };
    const int code = inATerminal(session, [](int terminal, pid_t) {
        readUntil(terminal, 'r');
        EXPECT_EQ(write(terminal, "\x1a", 1), 1); // Ctrl-Z
        EXPECT_EQ(readUntil(terminal, 'b').back(), 'b') << "the shell has its terminal back";
        EXPECT_EQ(write(terminal, "k\n", 2), 2);
    });
    EXPECT_EQ(code, 5) << "keys come one by one again";
}

// Some shells put the mode of the stopped program back in force when they continue it.
TEST(Terminal, GetsItsFirstModeBackAfterItWasContinuedInRawMode)
{
    const int code = inATerminal(
        [] {
            kvx::InterruptGuard guard;
            {
                kvx::KeyTerminal keys;
                raise(SIGCONT);
                keys.read();
                if (isLineByLine(STDIN_FILENO)) _exit(3);
            }
            _exit(isLineByLine(STDIN_FILENO) ? 0 : 4);
        },
        [](int, pid_t) {});
    EXPECT_EQ(code, 0);
}

TEST(Terminal, TellsItsWidthAsItIs)
{
    int outer = -1, inner = -1;
    winsize size = {24, 33, 0, 0};
    ASSERT_EQ(openpty(&outer, &inner, nullptr, nullptr, &size), 0);
    EXPECT_EQ(kvx::terminalColumns(inner), 33u);
    size.ws_col = 120;
    ioctl(outer, TIOCSWINSZ, &size);
    EXPECT_EQ(kvx::terminalColumns(inner), 120u);
    size.ws_col = 0;
    ioctl(outer, TIOCSWINSZ, &size);
    EXPECT_EQ(kvx::terminalColumns(inner), 80u) << "it does not say";
    close(inner);
    close(outer);
    EXPECT_EQ(kvx::terminalColumns(-1), 80u);
}

} // namespace
