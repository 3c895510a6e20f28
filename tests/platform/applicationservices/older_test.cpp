// Names that a program looks for to find out how old the system is: there, and on an older one not, while all
// the rest of the program runs on either.
#include "tests/support/child_process.h"

#include <ApplicationServices/ApplicationServices.h>
#include <CoreAudio/CoreAudio.h>
#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

#include <cstdlib>

#pragma weak CGPathCreateCopyByTransformingPath
#pragma weak dispatch_async

namespace {

// Tells children apart from the test itself.
constexpr const char* mark = "KVX_TEST_ON_OLDER";

// A weak name's address is never null for the compiler unless it has to look.
bool isThere(const volatile void* address) { return address; }

TEST(Weak, NamesAreThereUnlessTheSystemIsOlder)
{
    const bool isOlder = std::getenv(mark);
    EXPECT_NE(isThere(reinterpret_cast<void*>(&CGPathCreateCopyByTransformingPath)), isOlder);
    EXPECT_NE(isThere(reinterpret_cast<void*>(&dispatch_async)), isOlder);
    EXPECT_GT(AudioGetHostClockFrequency(), 0) << "the rest is as it was";
    EXPECT_NE(dispatch_get_global_queue(0, 0), nullptr);
    if (isOlder) return;

    EXPECT_EQ(CGPathCreateCopyByTransformingPath(nullptr, nullptr), nullptr) << "no path, no copy";
    const support::ChildResult child =
        support::runChild({"/proc/self/exe", "--gtest_filter=Weak.*"},
                          {{"LD_LIBRARY_PATH", KVX_BINARY_DIR "/older"}, {mark, "1"}});
    EXPECT_EQ(child.exitCode, 0) << child.out << child.err;
    EXPECT_NE(child.out.find("[  PASSED  ] 1 test"), std::string::npos) << child.out;
}

} // namespace
