// Steps that keys make.
#include "host/kvx/play/player_keys.h"

#include <gtest/gtest.h>

namespace {

TEST(PlayerKeys, StepOnTheGridAndStayInRange)
{
    const struct {
        double value, step;
        kvx::Range range;
        double moved;
        const char* why;
    } facts[] = {
        {1, 0.05, {0.04, 32}, 1.05, "up"},
        {1, -0.05, {0.04, 32}, 0.95, "down"},
        {double(0.95f), 0.05, {0, 1}, 1.0, "what single precision left is mended"},
        {double(0.15f), -0.05, {0, 1}, 0.1, "likewise"},
        {1, 0.05, {0, 1}, 1, "the top"},
        {0, -0.05, {0, 1}, 0, "the foot"},
        {0.98, 0.05, {0, 1}, 1, "no step beyond"},
        {0.05, -0.05, {0.04, 32}, 0.04, "nor below"},
        {0.07, 0.05, {0, 1}, 0.12, "what the user chose between stays between"},
        {-50, 100, {-2400, 2400}, 50, "likewise"},
        {2400, 100, {-2400, 2400}, 2400, "two octaves"},
    };
    for (const auto& fact : facts)
        EXPECT_NEAR(kvx::stepped(fact.value, fact.step, fact.range), fact.moved, 1e-9) << fact.why;
}

} // namespace
