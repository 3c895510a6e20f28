// Tests of the function that detects the main thread of a process.
#include <gtest/gtest.h>

#include <thread>

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

TEST(MainThread, IsTheFirstThreadOfAProcess)
{
    EXPECT_NE(pthread_main_np(), 0);
    int elsewhere = 1;
    std::thread([&] { elsewhere = pthread_main_np(); }).join();
    EXPECT_EQ(elsewhere, 0);
}

TEST(MainThread, OfAForkedChildIsTheThreadThatForked)
{
    int status = 0;
    std::thread([&] {
        const pid_t child = fork();
        if (child == 0) _exit(pthread_main_np() ? 42 : 43);
        waitpid(child, &status, 0);
    }).join();
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 42);
}

} // namespace
