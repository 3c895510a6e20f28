// Signals of the user or the system that end a command: Ctrl-C (SIGINT), SIGTERM and a closed terminal
// (SIGHUP) set a flag, which the command polls.
#pragma once

#include <csignal>

namespace kvx {

/// Handles signals while an object exists: the first SIGINT, SIGTERM or SIGHUP sets the flag of
/// isInterrupted(). A second signal of the same number, or SIGABRT, removes temporary files and ends the
/// process. If SIGHUP is ignored at construction, it stays ignored. Only one object may exist at a time.
/// [main]
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

private:
    static constexpr int signals_[] = {SIGINT, SIGTERM, SIGHUP};
    struct sigaction former_[3], formerAbort_;
};

/// Guards a call that cannot be interrupted, such as a load from a disk that does not respond: if the call
/// continues for some seconds after the first signal, the process ends. Has no effect without an object of
/// InterruptGuard.
/// [main]
class HangGuard {
public:
    HangGuard();
    ~HangGuard();
    HangGuard(const HangGuard&) = delete;
    HangGuard& operator=(const HangGuard&) = delete;

private:
    struct sigaction former_;
};

/// Set the handler of a signal. Signal handlers may call this function.
/// Shape  `flags` are those of sigaction(); `former` receives the former handler, and may be null.
/// [any]
void setSignalHandler(int signal, void (*handler)(int), int flags = 0, struct sigaction* former = nullptr);

// All functions below: [main].

/// Whether a signal has arrived since the construction of the InterruptGuard.
bool isInterrupted();

/// Set the function that the signal handler calls at the first signal of each number; null: no function. The
/// function may do only what a signal handler may do.
void onFirstInterrupt(void (*work)());

/// The exit code that shells expect of a command that a signal has ended, such as 130 after Ctrl-C; 0 if no
/// signal has arrived.
int interruptExitCode();

} // namespace kvx
