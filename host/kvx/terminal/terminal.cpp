#include "host/kvx/terminal/terminal.h"

#include "host/kvx/terminal/interrupt.h"

#include <fmt/format.h>

#include <csignal>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace kvx {
namespace {

constexpr int input = STDIN_FILENO;

// Signal handlers read these.
termios former;                       // as the terminal was
volatile std::sig_atomic_t isRaw = 0; // keys come one by one
volatile std::sig_atomic_t stopAsked = 0;
struct sigaction formerStop, formerContinue, formerQuit, formerAbort;

bool isForeground() { return tcgetpgrp(input) == getpgrp(); }

extern "C" void giveBack()
{
    if (!isRaw) return;
    isRaw = 0;
    if (isForeground()) tcsetattr(input, TCSANOW, &former); // from the background it would stop this process
}

void takeOver()
{
    termios raw;
    if (isRaw || !isForeground() || tcgetattr(input, &raw) != 0) return;
    constexpr tcflag_t lineByLine = ICANON | ECHO;
    if (raw.c_lflag & lineByLine) former = raw; // else a shell has put this program's own mode back in force
    raw.c_lflag &= ~lineByLine;                 // Ctrl-C and Ctrl-Z stay what they are
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    isRaw = 1; // first, so that a signal in between gives back what may have been taken
    if (tcsetattr(input, TCSANOW, &raw) != 0) isRaw = 0;
}

extern "C" void noteStop(int) { stopAsked = 1; }

// Stopped and continued from outside, perhaps in the background: the shell has put its own mode in force.
extern "C" void noteContinue(int) { isRaw = 0; }

extern "C" void giveBackAndEnd(int signal)
{
    giveBack();
    raise(signal); // to the handler that was there by default
}

void handle(int signal, void (*handler)(int), int flags, struct sigaction* place)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, place);
}

} // namespace

std::size_t terminalColumns(int file)
{
    winsize size = {};
    return ioctl(file, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

KeyTerminal::KeyTerminal() : isInUse_(!whyNot() && tcgetattr(input, &former) == 0)
{
    stopAsked = 0;
    if (!isInUse_) return;
    handle(SIGTSTP, noteStop, SA_RESTART, &formerStop);
    handle(SIGCONT, noteContinue, SA_RESTART, &formerContinue);
    handle(SIGQUIT, giveBackAndEnd, int(SA_RESETHAND), &formerQuit);
    handle(SIGABRT, giveBackAndEnd, int(SA_RESETHAND), &formerAbort);
    onFirstInterrupt(giveBack);
    takeOver();
}

KeyTerminal::~KeyTerminal()
{
    if (!isInUse_) return;
    giveBack();
    onFirstInterrupt(nullptr);
    sigaction(SIGTSTP, &formerStop, nullptr);
    sigaction(SIGCONT, &formerContinue, nullptr);
    sigaction(SIGQUIT, &formerQuit, nullptr);
    sigaction(SIGABRT, &formerAbort, nullptr);
}

std::string printNoKeys(const char* whyNot) { return fmt::format("No keys: {}. Ctrl-C ends.", whyNot); }

const char* KeyTerminal::whyNot()
{
    return !isatty(STDIN_FILENO)    ? "the standard input is not a terminal"
           : !isatty(STDOUT_FILENO) ? "the standard output is not a terminal"
                                    : nullptr;
}

std::string KeyTerminal::read()
{
    std::string keys;
    if (!isInUse_ || isInterrupted()) return keys;
    takeOver(); // again, once back in the foreground
    if (!isRaw || !isForeground()) return keys;
    // Asked first, because a signal may give the terminal back just now, and a read would then wait for a
    // line.
    pollfd waiting = {input, POLLIN, 0};
    char bytes[64];
    if (poll(&waiting, 1, 0) == 1 && (waiting.revents & POLLIN))
        if (const ssize_t got = ::read(input, bytes, sizeof bytes); got > 0)
            keys.assign(bytes, std::size_t(got));
    return keys;
}

bool KeyTerminal::isStopAsked()
{
    const bool isAsked = stopAsked;
    stopAsked = 0;
    return isAsked;
}

void KeyTerminal::stopProcess()
{
    giveBack();
    struct sigaction own;
    handle(SIGTSTP, SIG_DFL, 0, &own);
    raise(SIGTSTP); // returns when the process goes on
    sigaction(SIGTSTP, &own, nullptr);
}

} // namespace kvx
