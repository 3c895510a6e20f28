// Tests of buffers whose "more" routine supplies the next block.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

Bytes part(const Bytes& bytes, std::size_t fromFrame, std::size_t untilFrame)
{
    return Bytes(bytes.begin() + static_cast<long>(4 * fromFrame),
                 bytes.begin() + static_cast<long>(4 * untilFrame));
}

/// The buffers that the "more" routine supplies, first to last.
struct Chain {
    std::vector<Buffer*> more;
    std::size_t next = 0;
    int calls = 0;
};
Chain* chain = nullptr;

Boolean nextOfChain(SoundParamBlockPtr* block)
{
    ++chain->calls;
    if (chain->next == chain->more.size()) return false;
    if (Buffer* const buffer = chain->more[chain->next++])
        *block = &buffer->block;
    else
        *block = nullptr;
    return true;
}

TEST(MixerChain, PlaysAsOneBuffer)
{
    for (double rate : {44100.0, 22050.0}) {
        const Form form = {'sowt', 16, 2, rate};
        const Bytes bytes = noise(form, 400);
        Mixer whole;
        const Bytes expected = whole.playAll(whole.add(), form, bytes);

        Mixer mixer({}, 30);
        std::vector<std::unique_ptr<Buffer>> buffers;
        Chain links;
        for (std::size_t i = 0; i < 4; ++i) {
            buffers.push_back(std::make_unique<Buffer>(form, part(bytes, 100 * i, 100 * i + 100)));
            buffers.back()->block.moreRtn = nextOfChain;
            if (i > 0) links.more.push_back(buffers.back().get());
        }
        chain = &links;
        ASSERT_EQ(mixer.play(mixer.add(), *buffers[0]), noErr);
        EXPECT_EQ(mixer.fetchAll(), expected);
        EXPECT_EQ(links.calls, 4);
        for (const auto& buffer : buffers) EXPECT_EQ(buffer->completions, 1);
    }
}

TEST(MixerChain, UsesTheVolumeOfEachBlock)
{
    Mixer mixer;
    Buffer first({}, encode({}, Samples(20, 0.5))), second({}, encode({}, Samples(20, 0.5)));
    first.block.moreRtn = nextOfChain;
    second.block.leftVolume = 0x80;
    second.block.rightVolume = 0;
    Chain links{{&second}};
    chain = &links;
    ASSERT_EQ(mixer.play(mixer.add(), first), noErr);
    Samples expected(20, 0.5);
    for (int i = 0; i < 10; ++i) expected.insert(expected.end(), {0.25, 0});
    EXPECT_EQ(mixer.fetchAll(), encode({}, expected));
}

// A "more" routine may return the same block with other samples. The mixer completes that block only once,
// after the last samples.
TEST(MixerChain, CompletesARefilledBlockOnce)
{
    static int fills;
    fills = 0;
    Mixer mixer({}, 7);
    Buffer buffer({}, encode({}, Samples(20, 0.5)));
    buffer.block.moreRtn = [](SoundParamBlockPtr* block) -> Boolean {
        if (++fills == 5) return false;
        Buffer& own = *reinterpret_cast<Buffer*>((*block)->refCon);
        own.samples = encode({}, Samples(20, 0.5 / fills));
        (*block)->desc.buffer = own.samples.data();
        return true;
    };
    ASSERT_EQ(mixer.play(mixer.add(), buffer), noErr);
    Samples expected(20, 0.5);
    for (int i = 1; i < 5; ++i) expected.insert(expected.end(), 20, 0.5 / i);
    EXPECT_EQ(mixer.fetchAll(), encode({}, expected));
    EXPECT_EQ(buffer.completions, 1);
}

TEST(MixerChain, EndsAtABlockWithoutSamples)
{
    Buffer noSamples({}, noise({}, 10)), empty({}, {}), negative({}, noise({}, 10));
    noSamples.block.desc.buffer = nullptr;
    negative.block.desc.sampleCount = -1;
    for (Buffer* link : {static_cast<Buffer*>(nullptr), &noSamples, &empty, &negative}) {
        Mixer mixer;
        Buffer first({}, noise({}, 10));
        first.block.moreRtn = nextOfChain;
        Chain links{{link}};
        chain = &links;
        ASSERT_EQ(mixer.play(mixer.add(), first), noErr);
        EXPECT_EQ(mixer.fetchAll(), first.samples);
        EXPECT_EQ(first.completions, 1);
    }
}

} // namespace
