// Tests that a prepared converter allocates nothing, whatever its slices.
#include "platform/pcm/fixed_rate_converter.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

using kvxplatform::pcm::FixedRateConverter;

TEST(FixedRateAlarm, HeapCallsAreCounted)
{
    const allocator_hook::Count count;
    allocator_hook::watchThisThread(true);
    void* volatile memory = std::malloc(10);
    std::free(memory);
    allocator_hook::watchThisThread(false);
    EXPECT_EQ(count.heapCalls(), 2);
}

TEST(FixedRateAlarm, NoSliceSizeAllocates)
{
    // clang-format off
    const struct { double from, to; UInt32 channels; } facts[] = {
        {44100, 48000, 2}, {48000, 44100, 1}, {96000, 44100, 2}, {22050, 48000, 2}, {8000, 192000, 1},
        {192000, 8000, 1}, {44100, 22050, 6}, {44100, 44100.5, 2}, {11025, 48000, 1},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const auto quality :
             {FixedRateConverter::Quality::high, FixedRateConverter::Quality::veryHigh}) {
            SCOPED_TRACE(std::to_string(fact.from) + " to " + std::to_string(fact.to));
            FixedRateConverter converter;
            ASSERT_TRUE(converter.prepare(fact.from, fact.to, fact.channels, quality));
            std::mt19937 random(7);
            const allocator_hook::Count count;
            allocator_hook::watchThisThread(true);
            for (UInt32 total = 0; total < 300000;) {
                const UInt32 frames = 1 + random() % 700;
                if (random() % 100 == 0) converter.reset();
                for (UInt32 left = frames; left > 0;) {
                    const FixedRateConverter::Span free = converter.freeInput();
                    const UInt32 missing = std::min(converter.framesFor(left), free.frames);
                    for (std::size_t i = 0; i < std::size_t{missing} * fact.channels; ++i)
                        free.samples[i] = static_cast<Float32>(random() % 1000) / 1000 - 0.5f;
                    if (missing) converter.addInput(missing);
                    const UInt32 made = std::min(left, converter.output().frames);
                    if (missing == 0 || made == left) {
                        converter.removeOutput(made);
                        left -= made;
                    }
                }
                total += frames;
            }
            allocator_hook::watchThisThread(false);
            EXPECT_EQ(count.heapCalls(), 0);
            EXPECT_EQ(count.locks(), 0);
        }
}

} // namespace
