#include "host/soundclient/double_buffer.h"

#include "tests/host/soundclient/registered_component.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>

namespace soundclient {
namespace {

using testing::ElementsAre;

/// Opens the sound component of the test, and provides a source of the samples 0, 1, 2, …
struct DoubleBufferTest : testing::Test {
    RegisteredComponent component;
    std::unique_ptr<SoundOutput> output =
        std::make_unique<SoundOutput>(RegisteredComponent::subType, RegisteredComponent::manufacturer);
    std::size_t framesLeft = 0;
    std::int16_t next = 0;

    DoubleBuffer::Read readerOf(std::size_t frames)
    {
        framesLeft = frames;
        return [this](std::int16_t* samples, std::size_t requested) {
            const std::size_t got = std::min(requested, framesLeft);
            for (std::size_t i = 0; i < got * std::size_t(component.channels); ++i) samples[i] = next++;
            framesLeft -= got;
            return got;
        };
    }

    /// The samples of the oldest buffer in the component's queue, read as big-endian numbers.
    std::vector<int> oldestSamples() const
    {
        const SoundComponentData& data = component.queued.at(0)->desc;
        std::vector<int> values;
        for (long i = 0; i < data.sampleCount * data.numChannels; ++i)
            values.push_back(data.buffer[2 * i] << 8 | data.buffer[2 * i + 1]);
        return values;
    }
};

TEST_F(DoubleBufferTest, FillsOneBufferWhileTheOtherPlays)
{
    DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, readerOf(7));
    component.calls.clear();
    buffers.feed();
    buffers.feed();
    EXPECT_EQ(component.queued.size(), 2u) << "both buffers are queued";
    EXPECT_EQ(buffers.framesRead(), 4u);
    buffers.start();

    EXPECT_THAT(oldestSamples(), ElementsAre(0, 1, 2, 3));
    component.completeOne();
    EXPECT_EQ(buffers.framesTaken(), 2u);
    buffers.feed();
    EXPECT_EQ(component.queued.size(), 2u);
    EXPECT_THAT(oldestSamples(), ElementsAre(4, 5, 6, 7));
    component.completeOne();
    buffers.feed();
    EXPECT_THAT(oldestSamples(), ElementsAre(8, 9, 10, 11));
    component.completeOne();
    buffers.feed();
    EXPECT_THAT(oldestSamples(), ElementsAre(12, 13)) << "the last frame";
    EXPECT_FALSE(buffers.isUsedUp());
    component.completeOne();
    EXPECT_TRUE(buffers.isUsedUp());
    EXPECT_EQ(buffers.framesTaken(), 7u);
    EXPECT_FALSE(buffers.hadGap());
    buffers.feed();
    EXPECT_TRUE(component.queued.empty());
    EXPECT_THAT(component.calls,
                ElementsAre("play 7 of 2 actions 1", "play 7 of 2 actions 1", "start 1 source 7",
                            "play 7 of 2 actions 1", "play 7 of 1 actions 1"));
}

TEST_F(DoubleBufferTest, QueuesExactlyTheFramesOfTheReader)
{
    const struct {
        std::size_t frames;
        std::vector<long> buffers;
    } facts[] = {
        {0, {}}, {1, {1}}, {2, {2}}, {3, {3}}, {4, {3, 1}}, {5, {3, 2}}, {6, {3, 3}}, {7, {3, 3, 1}},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.frames);
        DoubleBuffer buffers(*output, Labelling::bigAsLittle, 3, readerOf(fact.frames));
        std::vector<long> queued;
        for (buffers.feed(); !component.queued.empty(); buffers.feed()) {
            queued.push_back(component.queued.front()->desc.sampleCount);
            EXPECT_FALSE(buffers.isUsedUp());
            component.completeOne();
        }
        EXPECT_EQ(queued, fact.buffers);
        EXPECT_TRUE(buffers.isUsedUp());
        EXPECT_FALSE(buffers.hadGap());
        EXPECT_EQ(buffers.framesRead(), fact.frames);
    }
}

TEST_F(DoubleBufferTest, DescribesItsBuffersInTheFormatOfTheComponent)
{
    component.channels = 1;
    component.rate = 22050u << 16;
    for (const Labelling labelling : {Labelling::bigAsLittle, Labelling::little, Labelling::big}) {
        DoubleBuffer buffers(*output, labelling, 2, readerOf(2));
        buffers.feed();
        const SoundParamBlock& block = *component.queued.at(0);
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

TEST_F(DoubleBufferTest, DetectsAGap)
{
    DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, readerOf(8));
    buffers.feed();
    component.completeOne();
    EXPECT_FALSE(buffers.hadGap()) << "one buffer is queued";
    component.completeOne();
    EXPECT_TRUE(buffers.hadGap());
    buffers.feed();
    EXPECT_EQ(component.queued.size(), 2u) << "playback continues";
}

TEST_F(DoubleBufferTest, PausesAndContinues)
{
    DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, readerOf(4));
    component.calls.clear();
    buffers.start();
    buffers.pause();
    buffers.start();
    EXPECT_THAT(component.calls, ElementsAre("start 1 source 7", "pause 1 source 7", "start 1 source 7"));
}

TEST_F(DoubleBufferTest, StopsAndRemovesItsSource)
{
    {
        DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, readerOf(4));
        buffers.feed();
        component.calls.clear();
    }
    EXPECT_THAT(component.calls, ElementsAre("stop 1 source 7", "remove 7"));
}

TEST_F(DoubleBufferTest, PassesExceptionsOfTheReader)
{
    DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2,
                         [](std::int16_t*, std::size_t) -> std::size_t { throw std::out_of_range("end"); });
    EXPECT_THROW(buffers.feed(), std::out_of_range);
    EXPECT_TRUE(component.queued.empty());
}

TEST_F(DoubleBufferTest, ReportsRefusals)
{
    {
        DoubleBuffer buffers(*output, Labelling::bigAsLittle, 2, readerOf(4));
        component.refusals = {{kSoundComponentPlaySourceBufferSelect, queueFull}};
        EXPECT_THROW(buffers.feed(), Refusal);
        component.refusals = {{kSoundComponentStopSourceSelect, badChannel}};
    } // the destructor ignores that the component refuses to stop the source
    component.refusals = {};
    component.bits = 8;
    EXPECT_THROW(DoubleBuffer(*output, Labelling::bigAsLittle, 2, readerOf(4)), Refusal);
    component.calls.clear();
    component.bits = 16;
    component.refusals = {{kSoundComponentAddSourceSelect, notEnoughHardwareErr}};
    EXPECT_THROW(DoubleBuffer(*output, Labelling::bigAsLittle, 2, readerOf(4)), Refusal);
    EXPECT_THAT(component.calls, ElementsAre("add"));
}

} // namespace
} // namespace soundclient
