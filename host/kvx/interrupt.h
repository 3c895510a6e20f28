// Ctrl-C, a polite request to end and a terminal that closes, as a flag to look at between two steps of work.
#pragma once

#include <csignal>

namespace kvx {

/// While one lives, SIGINT, SIGTERM and SIGHUP set the flag instead of ending the process, each once: the
/// second of its kind ends it. One at a time. [main]
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

private:
    static constexpr int signals_[] = {SIGINT, SIGTERM, SIGHUP};
    struct sigaction former_[3];
};

bool isInterrupted();

/// Have the handler itself call `work` when a signal arrives, for what must not wait, since a second one ends
/// the process. It may do what signal handlers may. Null: nothing, as at the start.
void onFirstInterrupt(void (*work)());

/// The exit code that shells expect after the signal that came: 130 for Ctrl-C; 0 when none came.
int interruptExitCode();

} // namespace kvx
