#include "host/kvx/terminal/interrupt.h"

#include "host/kvx/files/atomic_file.h"

#include <atomic>
#include <cstddef>
#include <iterator>
#include <unistd.h>

namespace kvx {
namespace {

// A signal may arrive on any thread. Lock-free atomics are safe in a signal handler.
std::atomic<int> arrivedSignal{0};
std::atomic<void (*)()> firstSignalWork{nullptr};
std::atomic<bool> mayHang{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<void (*)()>::is_always_lock_free &&
              std::atomic<bool>::is_always_lock_free);

constexpr unsigned longestHangSeconds = 5;

extern "C" void endProcess(int signal)
{
    removeTemporaryFiles();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

extern "C" void endHungProcess(int) { endProcess(arrivedSignal); }

extern "C" void noteSignal(int signal)
{
    arrivedSignal = signal;
    setSignalHandler(signal, endProcess);
    if (mayHang) alarm(longestHangSeconds);
    if (void (*const work)() = firstSignalWork) work();
}

} // namespace

void setSignalHandler(int signal, void (*handler)(int), int flags, struct sigaction* former)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, former);
}

InterruptGuard::InterruptGuard()
{
    arrivedSignal = 0;
    // A failed assertion in a library sends SIGABRT, and must leave no temporary file.
    setSignalHandler(SIGABRT, endProcess, 0, &formerAbort_);
    for (std::size_t i = 0; i < std::size(signals_); ++i) {
        sigaction(signals_[i], nullptr, &former_[i]);
        // A SIGHUP that nohup has set to be ignored stays ignored. A SIGINT that a shell has set to be
        // ignored in a background job is handled, because `kill -INT` must end the job.
        const bool staysIgnored = signals_[i] == SIGHUP && former_[i].sa_handler == SIG_IGN;
        if (!staysIgnored) setSignalHandler(signals_[i], noteSignal);
    }
}

InterruptGuard::~InterruptGuard()
{
    for (std::size_t i = 0; i < std::size(signals_); ++i) sigaction(signals_[i], &former_[i], nullptr);
    sigaction(SIGABRT, &formerAbort_, nullptr);
}

HangGuard::HangGuard()
{
    setSignalHandler(SIGALRM, endHungProcess, 0, &former_);
    mayHang = true;
    if (isInterrupted()) alarm(longestHangSeconds);
}

HangGuard::~HangGuard()
{
    mayHang = false;
    alarm(0);
    sigaction(SIGALRM, &former_, nullptr);
}

void onFirstInterrupt(void (*work)()) { firstSignalWork = work; }

bool isInterrupted() { return arrivedSignal != 0; }

int interruptExitCode() { return arrivedSignal == 0 ? 0 : 128 + arrivedSignal; }

} // namespace kvx
