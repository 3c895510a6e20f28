// A signal sets a flag, the same one once more ends the process.
#include "host/kvx/interrupt.h"

#include <gtest/gtest.h>

namespace {

using namespace kvx;

TEST(InterruptDeathTest, TheSecondOfAKindEndsAtOnce)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        {
            const InterruptGuard guard;
            EXPECT_FALSE(isInterrupted());
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

} // namespace
