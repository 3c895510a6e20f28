// Signals that end a command: Ctrl-C, SIGTERM and a closed terminal set a flag that the command polls.
#pragma once

#include <csignal>

namespace kvx {

/// While an object exists, the first SIGINT, SIGTERM or SIGHUP sets the flag of isInterrupted(); the second
/// signal of the same number removes temporary files and ends the process. SIGABRT also removes temporary
/// files. A SIGHUP that is ignored at construction stays ignored. Only one object may exist.
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
/// continues for some seconds after the first signal, the process ends. Needs an InterruptGuard.
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

// All functions: [main].

/// Whether a signal has arrived since the construction of the InterruptGuard.
bool isInterrupted();

/// Set a function that the signal handler calls at the first signal; null: no function. The function may do
/// only what a signal handler may do.
void onFirstInterrupt(void (*work)());

/// The exit code that shells expect after the signal, such as 130 after Ctrl-C; 0 without a signal.
int interruptExitCode();

} // namespace kvx
