// Ctrl-C and a polite request to end, as a flag to look at between two steps of work.
#pragma once

#include <csignal>

namespace kvx {

/// While one lives, SIGINT and SIGTERM set the flag instead of ending the process. One at a time. [main]
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

private:
    struct sigaction formerInterrupt_;
    struct sigaction formerTerminate_;
};

bool isInterrupted();

/// The exit code that shells expect after the signal that came: 130 for Ctrl-C; 0 when none came.
int interruptExitCode();

} // namespace kvx
