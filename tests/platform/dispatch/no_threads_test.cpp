// Tests that items of the global queues run on the caller's thread if no pool thread can be started.
#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>

namespace {

bool isRefusing = false;

} // namespace

// This function replaces the C library's function of the same name and fails on request.
extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument)
{
    if (isRefusing) return EAGAIN;
    using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
    return real(thread, attributes, start, argument);
}

namespace {

void countUp(void* context) { ++*static_cast<int*>(context); }

TEST(NoThreads, WorkRunsOnTheCallersThread)
{
    isRefusing = true;
    const dispatch_queue_t queue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0);
    int ran = 0;
    dispatch_async_f(queue, &ran, countUp);
    EXPECT_EQ(ran, 1);
    dispatch_async_f(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_LOW, 0), &ran, countUp);
    EXPECT_EQ(ran, 2);

    static pthread_t runner;
    const auto noteRunner = [](void*) { runner = pthread_self(); };
    dispatch_async_f(queue, nullptr, noteRunner);
    EXPECT_TRUE(pthread_equal(runner, pthread_self()));
    isRefusing = false;

    static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    static pthread_cond_t hasRun = PTHREAD_COND_INITIALIZER;
    runner = pthread_self();
    pthread_mutex_lock(&lock);
    dispatch_async_f(queue, nullptr, [](void*) {
        pthread_mutex_lock(&lock);
        runner = pthread_self();
        pthread_cond_signal(&hasRun);
        pthread_mutex_unlock(&lock);
    });
    while (pthread_equal(runner, pthread_self())) pthread_cond_wait(&hasRun, &lock);
    pthread_mutex_unlock(&lock);
}

} // namespace
