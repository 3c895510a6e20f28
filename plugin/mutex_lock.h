// A scoped lock on a pthread mutex.
#pragma once

#include <pthread.h>

/// Lock on a mutex until the end of the scope. The lock converts to false if the mutex is null or cannot be
/// locked.
/// [any]
class MutexLock {
public:
    explicit MutexLock(pthread_mutex_t* mutex)
        : mutex_(mutex && pthread_mutex_lock(mutex) == 0 ? mutex : nullptr)
    {
    }
    ~MutexLock()
    {
        if (mutex_) pthread_mutex_unlock(mutex_);
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    explicit operator bool() const { return mutex_; }

private:
    pthread_mutex_t* const mutex_;
};
