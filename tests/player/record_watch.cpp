#include "tests/player/record_watch.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <ucontext.h>

namespace test {

namespace {

// State of the signal handlers. It is plain data, because a signal handler may call almost no function.
char* watchedPage = nullptr;
std::size_t watchedBytes = 0;
std::array<Access, 256> recorded;
volatile std::size_t recordedCount = 0;
struct sigaction formerFault, formerStep;

constexpr greg_t trapFlag = 0x100; // flag that makes the processor trap after the next instruction
constexpr greg_t writeFault = 2;   // bit of a page fault's error code that means a write
constexpr int errorCode = REG_ERR, flags = REG_EFL;

void openPage(bool isOpen)
{
    mprotect(watchedPage, watchedBytes, isOpen ? PROT_READ | PROT_WRITE : PROT_NONE);
}

void onFault(int, siginfo_t* info, void* context)
{
    auto& registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    auto* address = static_cast<char*>(info->si_addr);
    // A real crash, outside the watched memory.
    if (address < watchedPage || address >= watchedPage + watchedBytes) {
        sigaction(SIGSEGV, &formerFault, nullptr);
        return;
    }
    if (recordedCount < recorded.size()) {
        recorded[recordedCount] = {static_cast<std::size_t>(address - watchedPage),
                                   (registers[errorCode] & writeFault) != 0};
        recordedCount = recordedCount + 1;
    }
    openPage(true);
    registers[flags] |= trapFlag;
}

void onStep(int, siginfo_t*, void* context)
{
    openPage(false);
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[flags] &= ~trapFlag;
}

void handle(int signal, void (*handler)(int, siginfo_t*, void*), struct sigaction* former)
{
    struct sigaction action = {};
    action.sa_sigaction = handler;
    action.sa_flags = SA_SIGINFO;
    sigaction(signal, &action, former);
}

} // namespace

WatchedMemory::WatchedMemory(std::size_t bytes) : bytes_((bytes + 4095) / 4096 * 4096)
{
    memory_ = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory_ == MAP_FAILED) std::abort();
}

WatchedMemory::~WatchedMemory()
{
    accesses();
    munmap(memory_, bytes_);
}

void WatchedMemory::watch()
{
    watchedPage = static_cast<char*>(memory_);
    watchedBytes = bytes_;
    recordedCount = 0;
    handle(SIGSEGV, onFault, &formerFault);
    handle(SIGTRAP, onStep, &formerStep);
    openPage(false);
}

std::vector<Access> WatchedMemory::accesses()
{
    if (watchedPage != memory_) return {};
    openPage(true);
    sigaction(SIGSEGV, &formerFault, nullptr);
    sigaction(SIGTRAP, &formerStep, nullptr);
    watchedPage = nullptr;
    return {recorded.begin(), recorded.begin() + static_cast<std::ptrdiff_t>(recordedCount)};
}

} // namespace test
