#include "host/kvx/play/play_order.h"

#include <gtest/gtest.h>

namespace {

using Neighbour = std::optional<std::size_t>;

TEST(PlayOrder, EndsAtTheFirstAndTheLastFile)
{
    const kvx::PlayOrder order(3, false);
    EXPECT_EQ(order.after(0), Neighbour(1));
    EXPECT_EQ(order.after(1), Neighbour(2));
    EXPECT_EQ(order.after(2), std::nullopt);
    EXPECT_EQ(order.before(2), Neighbour(1));
    EXPECT_EQ(order.before(0), std::nullopt);
}

TEST(PlayOrder, GoesRoundIfEndless)
{
    const kvx::PlayOrder order(3, true);
    EXPECT_EQ(order.after(1), Neighbour(2));
    EXPECT_EQ(order.after(2), Neighbour(0));
    EXPECT_EQ(order.before(0), Neighbour(2));
    const kvx::PlayOrder one(1, true);
    EXPECT_EQ(one.after(0), Neighbour(0));
    EXPECT_EQ(one.before(0), Neighbour(0));
}

TEST(PlayOrder, SkipsFilesThatAreLeftOut)
{
    for (const bool isEndless : {false, true}) {
        kvx::PlayOrder order(4, isEndless);
        order.leaveOut(1);
        EXPECT_EQ(order.after(0), Neighbour(2));
        EXPECT_EQ(order.before(2), Neighbour(0));
        order.leaveOut(3);
        EXPECT_EQ(order.after(2), isEndless ? Neighbour(0) : std::nullopt);
        EXPECT_FALSE(order.isEmpty());
        order.leaveOut(0);
        order.leaveOut(2);
        EXPECT_TRUE(order.isEmpty());
        EXPECT_EQ(order.after(0), std::nullopt);
        EXPECT_EQ(order.before(3), std::nullopt);
    }
}

} // namespace
