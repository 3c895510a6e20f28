// A wake-up call for a thread of the platform's own.
#pragma once

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <semaphore.h>

namespace kvxplatform::hal {

/// Remembers what was raised while nobody waited, so that no call is lost.
class Signal {
public:
    Signal() { sem_init(&semaphore_, 0, 0); }
    ~Signal() { sem_destroy(&semaphore_); }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    /// Takes no lock, allocates nothing. [any], also inside a cycle.
    void raise() { sem_post(&semaphore_); }

    void wait()
    {
        while (sem_wait(&semaphore_) != 0 && errno == EINTR) {
        }
    }

    /// Wait, but no longer than this. Below a second.
    void waitFor(std::int64_t nanoseconds)
    {
        timespec until;
        clock_gettime(CLOCK_MONOTONIC, &until); // a clock that nobody sets
        until.tv_nsec += static_cast<long>(nanoseconds);
        if (until.tv_nsec >= 1'000'000'000) until.tv_nsec -= 1'000'000'000, ++until.tv_sec;
        sem_clockwait(&semaphore_, CLOCK_MONOTONIC, &until);
    }

private:
    sem_t semaphore_;
};

} // namespace kvxplatform::hal
