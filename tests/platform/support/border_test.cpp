// Tests the border of C functions: no exception leaves it.
#include "platform/support/border.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using kvxplatform::withinBorder;

TEST(Border, ReturnsTheResultOfTheBody)
{
    EXPECT_EQ(withinBorder(1, 2, [] { return 3; }), 3);
    EXPECT_EQ(withinBorder(1, [] { return 3; }), 3);
}

TEST(Border, ReturnsTheFailureOfTheException)
{
    const auto noMemory = []() -> int { throw std::bad_alloc(); };
    const auto noThread = []() -> int { throw std::runtime_error("no thread"); };
    const auto number = []() -> int { throw 7; };
    EXPECT_EQ(withinBorder(1, 2, noMemory), 1);
    EXPECT_EQ(withinBorder(1, 2, noThread), 2);
    EXPECT_EQ(withinBorder(1, 2, number), 2);
    EXPECT_EQ(withinBorder(1, noMemory), 1);
    EXPECT_EQ(withinBorder(1, number), 1);
}

TEST(Border, FreesWhatTheBodyOwned)
{
    static int alive = 0;
    struct Owned {
        Owned() { ++alive; }
        ~Owned() { --alive; }
    };
    EXPECT_EQ(withinBorder(1,
                           []() -> int {
                               const Owned owned;
                               throw 7;
                           }),
              1);
    EXPECT_EQ(alive, 0);
}

} // namespace
