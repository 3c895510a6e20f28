// The interrupt guard of the command: the first signal of each number sets a flag, the second ends the
// process.
#include "host/kvx/files/atomic_file.h"
#include "host/kvx/terminal/interrupt.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

namespace {

using namespace kvx;

TEST(InterruptDeathTest, SecondSignalOfAKindEndsTheProcess)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        std::signal(signal, SIG_DFL); // restore SIGHUP, because nohup may have started the test
        {
            const InterruptGuard guard;
            EXPECT_FALSE(isInterrupted());
            EXPECT_EQ(interruptExitCode(), 0);
            std::raise(signal);
            EXPECT_TRUE(isInterrupted());
            EXPECT_EQ(interruptExitCode(), 128 + signal);
        }
        const auto raiseTwice = [=] {
            const InterruptGuard guard;
            std::raise(signal);
            std::raise(signal);
        };
        EXPECT_EXIT(raiseTwice(), testing::KilledBySignal(signal), "");
    }
}

TEST(InterruptDeathTest, AbortRemovesUnfinishedFiles)
{
    const support::TemporaryFolder folder;
    const std::string unfinished = kvx::temporaryPathFor(folder / "out.wav");
    const auto abortWhileWriting = [&] {
        const InterruptGuard guard;
        std::ofstream(unfinished) << "half";
        std::abort();
    };
    EXPECT_EXIT(abortWhileWriting(), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EQ(folder.count(), 0u);
}

TEST(InterruptDeathTest, IgnoredHangupStaysIgnored)
{
    const auto raiseWhileIgnored = [] {
        std::signal(SIGHUP, SIG_IGN);
        {
            const InterruptGuard guard;
            std::raise(SIGHUP);
            std::raise(SIGHUP);
        }
        std::raise(SIGHUP);
        std::exit(isInterrupted() ? 1 : 0);
    };
    EXPECT_EXIT(raiseWhileIgnored(), testing::ExitedWithCode(0), "");
}

// Like a background job of a shell, this test ignores SIGINT from the start.
TEST(InterruptDeathTest, IgnoredInterruptIsStillHandled)
{
    const auto raiseWhileIgnored = [] {
        std::signal(SIGINT, SIG_IGN);
        const InterruptGuard guard;
        std::raise(SIGINT);
        std::exit(interruptExitCode());
    };
    EXPECT_EXIT(raiseWhileIgnored(), testing::ExitedWithCode(130), "");
}

} // namespace
