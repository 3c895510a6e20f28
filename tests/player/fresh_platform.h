// What every test of the player begins with.
#pragma once

#include "tests/player/small_host.h"
#include "tests/support/platform_spy.h"

#include <gtest/gtest.h>

namespace test {

/// A test with a platform and a host as new.
class FreshPlatform : public ::testing::Test {
protected:
    void SetUp() override
    {
        spy::reset();
        host::load();
    }
};

} // namespace test
