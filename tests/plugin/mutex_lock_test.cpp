#include "plugin/mutex_lock.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

/// Test fixture with a mutex that refuses a second lock by its owner.
class MutexLockTest : public ::testing::Test {
protected:
    MutexLockTest()
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
        pthread_mutex_init(&mutex, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    ~MutexLockTest() override { EXPECT_EQ(pthread_mutex_destroy(&mutex), 0); }

    pthread_mutex_t mutex;
};

TEST_F(MutexLockTest, HoldsTheMutexUntilTheEndOfTheScope)
{
    {
        const MutexLock lock(&mutex);
        EXPECT_TRUE(lock);
        EXPECT_EQ(pthread_mutex_trylock(&mutex), EBUSY);
    }
    EXPECT_EQ(pthread_mutex_trylock(&mutex), 0);
    pthread_mutex_unlock(&mutex);
}

TEST_F(MutexLockTest, UnlocksOnlyAMutexThatItLocked)
{
    const MutexLock outer(&mutex);
    {
        const MutexLock refused(&mutex);
        EXPECT_FALSE(refused);
    }
    EXPECT_EQ(pthread_mutex_trylock(&mutex), EBUSY) << "the outer lock still holds the mutex";
}

TEST_F(MutexLockTest, LocksNothingForANullMutex)
{
    const MutexLock lock(nullptr);
    EXPECT_FALSE(lock);
}

} // namespace
