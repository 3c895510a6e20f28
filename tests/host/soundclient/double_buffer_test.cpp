#include "host/soundclient/double_buffer.h"

#include "tests/host/soundclient/registered_component.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>

namespace soundclient {
namespace {

using testing::ElementsAre;

/// A component, open, and sound of counting samples for it: 0, 1, 2, …
struct DoubleBufferTest : testing::Test {
    RegisteredComponent component;
    std::unique_ptr<SoundOutput> output =
        std::make_unique<SoundOutput>(RegisteredComponent::subType, RegisteredComponent::manufacturer);
    std::size_t framesLeft = 0;
    std::int16_t next = 0;

    DoubleBuffer::Read counting(std::size_t frames)
    {
        framesLeft = frames;
        return [this](std::int16_t* samples, std::size_t wanted) {
            const std::size_t got = std::min(wanted, framesLeft);
            for (std::size_t i = 0; i < got * std::size_t(component.channels); ++i) samples[i] = next++;
            framesLeft -= got;
            return got;
        };
    }

    /// The samples of the oldest buffer that waits, read as big-endian.
    std::vector<int> oldest() const
    {
        const SoundComponentData& data = component.waiting.at(0)->desc;
        std::vector<int> values;
        for (long i = 0; i < data.sampleCount * data.numChannels; ++i)
            values.push_back(data.buffer[2 * i] << 8 | data.buffer[2 * i + 1]);
        return values;
    }
};

TEST_F(DoubleBufferTest, FillsTheOneWhileTheOtherPlays)
{
    DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, counting(7));
    component.asked.clear();
    buffers.feed();
    buffers.feed();
    EXPECT_EQ(component.waiting.size(), 2u) << "there are two";
    EXPECT_EQ(buffers.framesRead(), 4u);
    buffers.start();

    EXPECT_THAT(oldest(), ElementsAre(0, 1, 2, 3));
    component.finishOne();
    EXPECT_EQ(buffers.framesTaken(), 2u);
    buffers.feed();
    EXPECT_EQ(component.waiting.size(), 2u);
    EXPECT_THAT(oldest(), ElementsAre(4, 5, 6, 7));
    component.finishOne();
    buffers.feed();
    EXPECT_THAT(oldest(), ElementsAre(8, 9, 10, 11));
    component.finishOne();
    buffers.feed();
    EXPECT_THAT(oldest(), ElementsAre(12, 13)) << "the rest";
    EXPECT_FALSE(buffers.isUsedUp());
    component.finishOne();
    EXPECT_TRUE(buffers.isUsedUp());
    EXPECT_EQ(buffers.framesTaken(), 7u);
    EXPECT_FALSE(buffers.hadGap());
    buffers.feed();
    EXPECT_TRUE(component.waiting.empty());
    EXPECT_THAT(component.asked,
                ElementsAre("play 7 of 2 actions 1", "play 7 of 2 actions 1", "start 1 source 7",
                            "play 7 of 2 actions 1", "play 7 of 1 actions 1"));
}

TEST_F(DoubleBufferTest, EndsWhereTheSoundDoes)
{
    const struct {
        std::size_t frames;
        std::vector<long> buffers;
    } facts[] = {
        {0, {}}, {1, {1}}, {2, {2}}, {3, {3}}, {4, {3, 1}}, {5, {3, 2}}, {6, {3, 3}}, {7, {3, 3, 1}},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.frames);
        DoubleBuffer buffers(*output, Labelling::bigAsLittle, 3, counting(fact.frames));
        std::vector<long> given;
        for (buffers.feed(); !component.waiting.empty(); buffers.feed()) {
            given.push_back(component.waiting.front()->desc.sampleCount);
            EXPECT_FALSE(buffers.isUsedUp());
            component.finishOne();
        }
        EXPECT_EQ(given, fact.buffers);
        EXPECT_TRUE(buffers.isUsedUp());
        EXPECT_FALSE(buffers.hadGap());
        EXPECT_EQ(buffers.framesRead(), fact.frames);
    }
}

TEST_F(DoubleBufferTest, DescribesItsBuffersInTheOutputsForm)
{
    component.channels = 1;
    component.rate = 22050u << 16;
    for (const Labelling labelling : {Labelling::bigAsLittle, Labelling::little, Labelling::big}) {
        DoubleBuffer buffers(*output, labelling, 2, counting(2));
        buffers.feed();
        const SoundParamBlock& block = *component.waiting.at(0);
        EXPECT_EQ(block.recordSize, long{sizeof block});
        EXPECT_EQ(block.desc.flags, 0);
        EXPECT_EQ(block.desc.format, formatOf(labelling));
        EXPECT_EQ(block.desc.numChannels, 1);
        EXPECT_EQ(block.desc.sampleSize, 16);
        EXPECT_EQ(block.desc.sampleRate, 22050u << 16);
        EXPECT_EQ(block.desc.reserved, 0);
        EXPECT_EQ(block.rateMultiplier, 0x10000u);
        EXPECT_EQ(block.leftVolume, 0x100);
        EXPECT_EQ(block.rightVolume, 0x100);
        EXPECT_EQ(block.filter, nullptr);
        EXPECT_EQ(block.moreRtn, nullptr);
    }
}

TEST_F(DoubleBufferTest, NoticesAGap)
{
    DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, counting(8));
    buffers.feed();
    component.finishOne();
    EXPECT_FALSE(buffers.hadGap()) << "one is left";
    component.finishOne();
    EXPECT_TRUE(buffers.hadGap());
    buffers.feed();
    EXPECT_EQ(component.waiting.size(), 2u) << "it goes on";
}

TEST_F(DoubleBufferTest, PausesAndGoesOn)
{
    DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, counting(4));
    component.asked.clear();
    buffers.start();
    buffers.pause();
    buffers.start();
    EXPECT_THAT(component.asked, ElementsAre("start 1 source 7", "pause 1 source 7", "start 1 source 7"));
}

TEST_F(DoubleBufferTest, TakesItsSourceAlong)
{
    {
        DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, counting(4));
        buffers.feed();
        component.asked.clear();
    }
    EXPECT_THAT(component.asked, ElementsAre("stop 1 source 7", "remove 7"));
}

TEST_F(DoubleBufferTest, LetsWhatTheReaderThrowsThrough)
{
    DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2,
                         [](std::int16_t*, std::size_t) -> std::size_t { throw std::out_of_range("end"); });
    EXPECT_THROW(buffers.feed(), std::out_of_range);
    EXPECT_TRUE(component.waiting.empty());
}

TEST_F(DoubleBufferTest, PassesRefusalsOn)
{
    {
        DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, counting(4));
        component.refuse = {{kSoundComponentPlaySourceBufferSelect, queueFull}};
        EXPECT_THROW(buffers.feed(), Refusal);
        component.refuse = {{kSoundComponentStopSourceSelect, badChannel}};
    } // a refused end is let be
    component.refuse = {};
    component.bits = 8;
    EXPECT_THROW(DoubleBuffer(*output, Labelling::bigAsLittle, 2, counting(4)), Refusal);
    component.asked.clear();
    component.bits = 16;
    component.refuse = {{kSoundComponentAddSourceSelect, notEnoughHardwareErr}};
    EXPECT_THROW(DoubleBuffer(*output, Labelling::bigAsLittle, 2, counting(4)), Refusal);
    EXPECT_THAT(component.asked, ElementsAre("add"));
}

} // namespace
} // namespace soundclient
