// A wake-up signal for one waiting thread.
#pragma once

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <semaphore.h>

namespace kvxplatform::hal {

/// A signal that is raised while no thread waits ends the next wait at once.
class Signal {
public:
    Signal() { sem_init(&semaphore_, 0, 0); }
    ~Signal() { sem_destroy(&semaphore_); }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    /// Wake the waiting thread. Locks no mutex and allocates no memory.
    /// Also inside an I/O cycle.
    /// [any]
    void raise() { sem_post(&semaphore_); }

    /// Wait for the signal, without a time limit.
    /// [worker]
    void wait()
    {
        while (sem_wait(&semaphore_) != 0 && errno == EINTR) {
        }
    }

    /// Wait for the signal, but no longer than `nanoseconds`, which must be less than a second.
    /// [worker]
    void waitFor(std::int64_t nanoseconds)
    {
        timespec until;
        // The monotonic clock is independent of changes of the system time.
        clock_gettime(CLOCK_MONOTONIC, &until);
        until.tv_nsec += static_cast<long>(nanoseconds);
        if (until.tv_nsec >= 1'000'000'000) until.tv_nsec -= 1'000'000'000, ++until.tv_sec;
        sem_clockwait(&semaphore_, CLOCK_MONOTONIC, &until);
    }

private:
    sem_t semaphore_;
};

} // namespace kvxplatform::hal
