#include "host/kvx/interrupt.h"

namespace kvx {
namespace {

volatile std::sig_atomic_t arrivedSignal = 0;

extern "C" void noteSignal(int signal) { arrivedSignal = signal; }

} // namespace

InterruptGuard::InterruptGuard()
{
    arrivedSignal = 0;
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, &formerInterrupt_);
    sigaction(SIGTERM, &action, &formerTerminate_);
}

InterruptGuard::~InterruptGuard()
{
    sigaction(SIGINT, &formerInterrupt_, nullptr);
    sigaction(SIGTERM, &formerTerminate_, nullptr);
}

bool isInterrupted() { return arrivedSignal != 0; }

int interruptExitCode() { return arrivedSignal == 0 ? 0 : 128 + arrivedSignal; }

} // namespace kvx
