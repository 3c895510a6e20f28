#include "host/kvx/interrupt.h"

#include <cstddef>
#include <iterator>

namespace kvx {
namespace {

volatile std::sig_atomic_t arrivedSignal = 0;
void (*volatile workAtOnce)() = nullptr;

extern "C" void noteSignal(int signal)
{
    arrivedSignal = signal;
    if (workAtOnce) workAtOnce();
}

} // namespace

InterruptGuard::InterruptGuard()
{
    arrivedSignal = 0;
    for (std::size_t i = 0; i < std::size(signals_); ++i) {
        struct sigaction action = {};
        action.sa_handler = noteSignal;
        action.sa_flags = SA_RESETHAND; // who asks twice does not want to wait
        sigemptyset(&action.sa_mask);
        sigaction(signals_[i], &action, &former_[i]);
    }
}

InterruptGuard::~InterruptGuard()
{
    for (std::size_t i = 0; i < std::size(signals_); ++i) sigaction(signals_[i], &former_[i], nullptr);
}

void onFirstInterrupt(void (*work)()) { workAtOnce = work; }

bool isInterrupted() { return arrivedSignal != 0; }

int interruptExitCode() { return arrivedSignal == 0 ? 0 : 128 + arrivedSignal; }

} // namespace kvx
