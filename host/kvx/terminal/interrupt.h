// Ctrl-C, a polite request to end and a terminal that closes, as a flag to look at between two steps of work.
#pragma once

#include <csignal>

namespace kvx {

/// While one lives, SIGINT, SIGTERM and SIGHUP set the flag instead of ending the process, each once: the
/// second of its kind removes unfinished files and ends the process. A SIGHUP that is ignored at construction
/// stays ignored. An abort removes unfinished files first. One at a time. [main]
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

/// While one lives under an InterruptGuard, the process also ends if a signal came and the guarded call goes
/// on for some seconds: for calls that cannot be interrupted, such as a load from a disk that does not
/// answer. [main]
class HangGuard {
public:
    HangGuard();
    ~HangGuard();
    HangGuard(const HangGuard&) = delete;
    HangGuard& operator=(const HangGuard&) = delete;

private:
    struct sigaction former_;
};

bool isInterrupted();

/// Have the handler itself call `work` when a signal arrives, for what must not wait, since a second one ends
/// the process. It may do what signal handlers may. Null: nothing, as at the start.
void onFirstInterrupt(void (*work)());

/// The exit code that shells expect after the signal that came: 130 for Ctrl-C; 0 when none came.
int interruptExitCode();

} // namespace kvx
