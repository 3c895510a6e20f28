// Tests that a single source in the mixer's own format, at full volume, is output bit for bit.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

#include <deque>

namespace {

using namespace test;

/// Make samples that pass through all 16-bit values repeatedly, ascending in the left channel and descending
/// in the right channel.
Bytes allValues(std::size_t frames)
{
    Bytes bytes;
    for (std::size_t i = 0; i < frames; ++i) {
        const auto left = static_cast<UInt16>(i), right = static_cast<UInt16>(~i);
        for (UInt16 value : {left, right}) {
            bytes.push_back(static_cast<Byte>(value));
            bytes.push_back(static_cast<Byte>(value >> 8));
        }
    }
    return bytes;
}

/// Play `bytes` in buffers whose lengths in frames repeat the list `lengths`. The queue is refilled before
/// every fetch.
Bytes playInBuffers(Mixer& mixer, const Form& form, const Bytes& bytes,
                    const std::vector<std::size_t>& lengths)
{
    const SoundSource source = mixer.add();
    std::deque<std::unique_ptr<Buffer>> buffers;
    Bytes output;
    std::size_t at = 0, next = 0;
    for (;;) {
        while (at < bytes.size()) {
            const std::size_t length =
                std::min(lengths[next % lengths.size()] * frameBytes(form), bytes.size() - at);
            auto buffer =
                std::make_unique<Buffer>(form, Bytes(bytes.begin() + static_cast<long>(at),
                                                     bytes.begin() + static_cast<long>(at + length)));
            const ComponentResult status = mixer.play(source, *buffer);
            if (status == queueFull) break;
            EXPECT_EQ(status, noErr);
            buffers.push_back(std::move(buffer));
            at += length;
            ++next;
        }
        const Bytes block = mixer.fetch();
        if (block.empty()) break;
        output.insert(output.end(), block.begin(), block.end());
        while (!buffers.empty() && buffers.front()->completions == 1) buffers.pop_front();
    }
    EXPECT_TRUE(buffers.empty());
    EXPECT_EQ(SoundComponentRemoveSource(mixer.instance, source), noErr);
    return output;
}

TEST(MixerExact, OutputsEveryValueInBothChannels)
{
    for (OSType format : {'sowt', 'twos', 'NONE'}) {
        const Form form = {format, 16, 2, 44100};
        Mixer mixer(form);
        const Bytes bytes = allValues(65536);
        EXPECT_TRUE(mixer.playAll(mixer.add(), form, bytes) == bytes);
    }
}

TEST(MixerExact, DoesNotDependOnBufferAndBlockLengths)
{
    std::vector<std::size_t> lengths;
    for (std::size_t length = 1; length <= 5000; length += length < 300 ? 1 : 47) lengths.push_back(length);
    lengths.push_back(5000);
    const Bytes bytes = allValues(400000);
    for (long block : {64L, 1000L, 1024L, 65536L}) {
        Mixer mixer({}, block);
        EXPECT_TRUE(playInBuffers(mixer, {}, bytes, lengths) == bytes) << block;
    }
    Mixer single({}, 1);
    const Bytes some(bytes.begin(), bytes.begin() + 4 * 5000);
    EXPECT_TRUE(playInBuffers(single, {}, some, {1, 2, 3, 1000}) == some);
}

TEST(MixerExact, PlaysMoreBuffersThanTheQueueHolds)
{
    Mixer mixer({}, 10);
    const Bytes bytes = allValues(1000);
    EXPECT_TRUE(playInBuffers(mixer, {}, bytes, {1}) == bytes);
}

// The effective rate of a buffer is its sample rate times its rate multiplier.
TEST(MixerExact, NeedsNoConversionIfTheMultipliedRateIsTheMixers)
{
    Mixer mixer;
    const Bytes bytes = allValues(3000);
    Buffer half({'sowt', 16, 2, 22050}, bytes);
    half.block.rateMultiplier = 0x20000;
    ASSERT_EQ(mixer.play(mixer.add(), half), noErr);
    EXPECT_TRUE(mixer.fetchAll() == bytes);
    Buffer none({}, bytes);
    none.block.rateMultiplier = 0;
    ASSERT_EQ(mixer.play(mixer.add(), none), noErr);
    EXPECT_TRUE(mixer.fetchAll() == bytes) << "0 means 1";
}

// The caller of a fetch may change the returned description to keep track of the used part of the block.
TEST(MixerExact, AllowsChangesToTheReturnedRecord)
{
    Mixer mixer({}, 100);
    const Bytes bytes = allValues(1000);
    Buffer buffer({}, bytes);
    ASSERT_EQ(mixer.play(mixer.add(), buffer), noErr);
    Bytes output;
    SoundComponentDataPtr data = nullptr;
    for (;;) {
        if (!data || data->sampleCount == 0)
            ASSERT_EQ(SoundComponentGetSourceData(mixer.instance, &data), noErr);
        if (data->sampleCount == 0) break;
        const long frames = std::min(data->sampleCount, 7L);
        output.insert(output.end(), data->buffer, data->buffer + 4 * frames);
        data->buffer += 4 * frames;
        data->sampleCount -= frames;
        data->format = 0;
        data->sampleRate = 1;
    }
    EXPECT_TRUE(output == bytes);
}

} // namespace
