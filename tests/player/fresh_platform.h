// The common test fixture of the player tests.
#pragma once

#include "tests/player/small_host.h"
#include "tests/support/device_spy.h"

#include <gtest/gtest.h>

namespace test {

/// Resets the platform spy and the host before each test.
class FreshPlatform : public ::testing::Test {
protected:
    void SetUp() override
    {
        device_spy::reset();
        host::load();
    }
};

} // namespace test
