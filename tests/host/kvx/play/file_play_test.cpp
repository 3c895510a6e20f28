#include "host/kvx/play/file_play.h"

#include <gtest/gtest.h>

namespace {

TEST(Stepped, RoundsToMultiplesOfTheStepWithinTheRange)
{
    const struct {
        double value, step;
        kvx::Range range;
        double moved;
        const char* why;
    } facts[] = {
        {1, 0.05, {0.04, 32}, 1.05, "one step up"},
        {1, -0.05, {0.04, 32}, 0.95, "one step down"},
        {double(0.95f), 0.05, {0, 1}, 1.0, "an error of single precision is removed"},
        {double(0.15f), -0.05, {0, 1}, 0.1, "also downwards"},
        {1, 0.05, {0, 1}, 1, "the upper limit"},
        {0, -0.05, {0, 1}, 0, "the lower limit"},
        {0.98, 0.05, {0, 1}, 1, "clamped to the upper limit"},
        {0.05, -0.05, {0.04, 32}, 0.04, "clamped to the lower limit"},
        {0.07, 0.05, {0, 1}, 0.12, "a value between two multiples stays between two multiples"},
        {-50, 100, {-2400, 2400}, 50, "also with larger steps"},
        {2400, 100, {-2400, 2400}, 2400, "two octaves is the limit"},
    };
    for (const auto& fact : facts)
        EXPECT_NEAR(kvx::stepped(fact.value, fact.step, fact.range), fact.moved, 1e-9) << fact.why;
}

} // namespace
