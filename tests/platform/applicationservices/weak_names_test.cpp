// Tests of the two weakly linked function names by which a program detects an older system. The older
// platform library lacks these names. The test program runs with the current and with the older library.
#include "tests/support/child_process.h"

#include <ApplicationServices/ApplicationServices.h>
#include <CoreAudio/CoreAudio.h>
#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

#include <cstdlib>

#pragma weak CGPathCreateCopyByTransformingPath
#pragma weak dispatch_async

namespace {

// Environment variable that is set only in the child process.
constexpr const char* childVariable = "KVX_TEST_ON_OLDER";

// The address is a parameter, because the compiler assumes that a named function has an address.
bool exists(const volatile void* address) { return address; }

TEST(WeakNames, ExistUnlessTheSystemIsOlder)
{
    const bool isOlder = std::getenv(childVariable);
    EXPECT_NE(exists(reinterpret_cast<void*>(&CGPathCreateCopyByTransformingPath)), isOlder);
    EXPECT_NE(exists(reinterpret_cast<void*>(&dispatch_async)), isOlder);
    EXPECT_GT(AudioGetHostClockFrequency(), 0) << "in both";
    EXPECT_NE(dispatch_get_global_queue(0, 0), nullptr);
    if (isOlder) return;

    EXPECT_EQ(CGPathCreateCopyByTransformingPath(nullptr, nullptr), nullptr) << "a copy of no path";
    const support::ChildResult child =
        support::runChild({"/proc/self/exe", "--gtest_filter=WeakNames.*"},
                          {{"LD_LIBRARY_PATH", KVX_BINARY_DIR "/older"}, {childVariable, "1"}});
    EXPECT_EQ(child.exitCode, 0) << child.out << child.err;
    EXPECT_NE(child.out.find("[  PASSED  ] 1 test"), std::string::npos) << child.out;
}

} // namespace
