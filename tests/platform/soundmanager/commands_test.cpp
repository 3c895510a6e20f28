// Tests of the mixer commands play, start, stop, pause and remove, and of the completion of buffers.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

Bytes part(const Bytes& bytes, std::size_t fromFrame, std::size_t untilFrame)
{
    return Bytes(bytes.begin() + static_cast<long>(4 * fromFrame),
                 bytes.begin() + static_cast<long>(4 * untilFrame));
}

TEST(MixerCommands, PlayStartsASourceUnlessPaused)
{
    Mixer mixer({}, 100);
    const SoundSource source = mixer.add();
    const Bytes bytes = noise({}, 100);
    Buffer buffer({}, bytes);
    ASSERT_EQ(mixer.play(source, buffer, kSourcePaused), noErr);
    EXPECT_TRUE(mixer.fetch().empty());
    EXPECT_EQ(buffer.completions, 0);
    EXPECT_EQ(mixer.start(source), noErr);
    EXPECT_EQ(mixer.fetch(), bytes);
    EXPECT_EQ(buffer.completions, 1);
    Buffer next({}, bytes);
    ASSERT_EQ(mixer.play(source, next, kSourcePaused), noErr);
    EXPECT_EQ(mixer.fetch(), bytes) << "the flag does not pause a playing source";
    ASSERT_EQ(mixer.stop(source), noErr);
    Buffer last({}, bytes);
    ASSERT_EQ(mixer.play(source, last, kPassThrough | kNoSoundComponentChain), noErr);
    EXPECT_EQ(mixer.fetch(), bytes) << "other actions do not pause";
}

TEST(MixerCommands, PauseKeepsThePosition)
{
    Mixer mixer({}, 100);
    const SoundSource source = mixer.add();
    const Bytes bytes = noise({}, 1000);
    Buffer buffer({}, bytes);
    ASSERT_EQ(mixer.play(source, buffer), noErr);
    EXPECT_EQ(mixer.fetch(), part(bytes, 0, 100));
    for (int twice = 0; twice < 2; ++twice) {
        EXPECT_EQ(mixer.pause(source), noErr);
        EXPECT_TRUE(mixer.fetch().empty());
        EXPECT_TRUE(mixer.fetch().empty());
    }
    EXPECT_EQ(mixer.start(source), noErr);
    EXPECT_EQ(mixer.start(source), noErr);
    EXPECT_EQ(mixer.fetchAll(), part(bytes, 100, 1000));
    EXPECT_EQ(buffer.completions, 1);
}

// After a stop at any position, the remaining sound is not output, the dropped buffers are not completed, and
// the next sound is the same as from a new source.
TEST(MixerCommands, StopDropsBuffersAndFilterState)
{
    for (double rate : {44100.0, 22050.0, 8000.0}) {
        const Form form = {'sowt', 16, 2, rate};
        const Bytes bytes = noise(form, 300);
        Mixer whole;
        const Bytes expected = whole.playAll(whole.add(), form, bytes);
        for (int pulls = 0; pulls < 40; ++pulls) {
            Mixer mixer({}, 50);
            const SoundSource source = mixer.add();
            Buffer first(form, bytes), second({}, bytes), third(form, bytes);
            ASSERT_EQ(mixer.play(source, first), noErr);
            ASSERT_EQ(mixer.play(source, second), noErr);
            for (int i = 0; i < pulls; ++i) mixer.fetch();
            const int firstEnds = first.completions, secondEnds = second.completions;
            ASSERT_EQ(mixer.stop(source), noErr);
            ASSERT_EQ(mixer.stop(source), noErr);
            ASSERT_EQ(mixer.start(source), noErr);
            EXPECT_TRUE(mixer.fetch().empty()) << rate << " " << pulls;
            ASSERT_EQ(mixer.play(source, third, kSourcePaused), noErr);
            EXPECT_EQ(mixer.fetchAll(), expected) << rate << " " << pulls;
            EXPECT_EQ(first.completions, firstEnds);
            EXPECT_EQ(second.completions, secondEnds);
            EXPECT_EQ(third.completions, 1);
        }
    }
}

TEST(MixerCommands, StopKeepsTheSettings)
{
    Mixer mixer;
    const SoundSource source = mixer.add();
    const Bytes bytes = noise({}, 10);
    mixer.playAll(source, {}, bytes);
    SoundComponentSetInfo(mixer.instance, source, siVolume, reinterpret_cast<void*>(0x00800040));
    SoundComponentSetInfo(mixer.instance, source, siRateMultiplier, reinterpret_cast<void*>(0x20000));
    ASSERT_EQ(mixer.stop(source), noErr);
    UInt32 volume = 0;
    UnsignedFixed multiplier = 0;
    EXPECT_EQ(SoundComponentGetInfo(mixer.instance, source, siVolume, &volume), noErr);
    EXPECT_EQ(SoundComponentGetInfo(mixer.instance, source, siRateMultiplier, &multiplier), noErr);
    EXPECT_EQ(volume, 0x00800040u);
    EXPECT_EQ(multiplier, 0x20000u);
}

TEST(MixerCommands, AQueueHolds64Buffers)
{
    Mixer mixer({}, 10);
    const SoundSource source = mixer.add();
    for (int round = 0; round < 3; ++round) {
        std::vector<std::unique_ptr<Buffer>> buffers;
        for (int i = 0; i < 64; ++i) {
            buffers.push_back(std::make_unique<Buffer>(Form{}, noise({}, 10)));
            ASSERT_EQ(mixer.play(source, *buffers.back(), kSourcePaused), noErr);
        }
        Buffer more({}, noise({}, 10));
        EXPECT_EQ(mixer.play(source, more), queueFull);
        EXPECT_TRUE(mixer.fetch().empty()) << "a refused buffer starts nothing";
        if (round == 0) {
            ASSERT_EQ(mixer.stop(source), noErr);
            continue; // a stop empties the queue at once, without a fetch
        }
        ASSERT_EQ(mixer.start(source), noErr);
        mixer.fetch();
        EXPECT_EQ(buffers[0]->completions, 1);
        EXPECT_EQ(mixer.play(source, more), noErr);
        EXPECT_EQ(mixer.fetchAll().size(), 4u * 10 * 64);
        EXPECT_EQ(more.completions, 1);
        ASSERT_EQ(mixer.stop(source), noErr);
    }
}

TEST(MixerCommands, BuffersAreCompletedOnceInOrderOnTheRenderThread)
{
    Mixer mixer({}, 64);
    const SoundSource source = mixer.add();
    std::vector<std::unique_ptr<Buffer>> buffers;
    std::vector<int> order;
    for (int i = 0; i < 60; ++i) {
        // The buffers have two sample rates and many lengths, including 0 and 1 frames.
        buffers.push_back(std::make_unique<Buffer>(Form{'sowt', 16, 2, i % 7 == 3 ? 22050.0 : 44100.0},
                                                   noise({}, static_cast<std::size_t>(i * i % 50))));
        buffers.back()->onCompletion = [&order, i] { order.push_back(i); };
        ASSERT_EQ(mixer.play(source, *buffers.back()), noErr);
    }
    std::thread::id renderThread;
    std::thread thread([&] {
        renderThread = std::this_thread::get_id();
        mixer.fetchAll();
    });
    thread.join();
    ASSERT_EQ(order.size(), 60u);
    for (int i = 0; i < 60; ++i) {
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
        const Buffer& buffer = *buffers[static_cast<std::size_t>(i)];
        EXPECT_EQ(buffer.completions, 1);
        EXPECT_EQ(buffer.result, noErr) << "set before the completion";
        EXPECT_EQ(buffer.thread, renderThread);
    }
}

TEST(MixerCommands, ABufferNeedsNoCompletionRoutine)
{
    Mixer mixer;
    Buffer buffer({}, noise({}, 10));
    buffer.block.completionRtn = nullptr;
    ASSERT_EQ(mixer.play(mixer.add(), buffer), noErr);
    EXPECT_EQ(mixer.fetchAll(), buffer.samples);
    EXPECT_EQ(buffer.block.result, noErr);
}

TEST(MixerCommands, RefuseUnknownSourcesAndBadArguments)
{
    Mixer mixer;
    Mixer other;
    const SoundSource removed = mixer.add(), source = mixer.add();
    ASSERT_EQ(SoundComponentRemoveSource(mixer.instance, removed), noErr);
    Buffer buffer({}, noise({}, 10));
    for (SoundSource name :
         {static_cast<SoundSource>(nullptr), removed, reinterpret_cast<SoundSource>(64),
          reinterpret_cast<SoundSource>(65), reinterpret_cast<SoundSource>(~std::uintptr_t{0})}) {
        EXPECT_EQ(mixer.play(name, buffer), badChannel);
        EXPECT_EQ(SoundComponentRemoveSource(mixer.instance, name), badChannel);
        EXPECT_EQ(mixer.start(name), noErr) << "unknown names are ignored";
        EXPECT_EQ(mixer.pause(name), noErr);
        EXPECT_EQ(mixer.stop(name), noErr);
    }
    using Command = ComponentResult (*)(ComponentInstance, short, SoundSource*);
    for (Command command : {SoundComponentStartSource, SoundComponentPauseSource, SoundComponentStopSource}) {
        SoundSource names[] = {nullptr, removed, source, source};
        EXPECT_EQ(command(mixer.instance, 4, names), noErr);
        EXPECT_EQ(command(mixer.instance, 0, nullptr), noErr);
        EXPECT_EQ(command(mixer.instance, 1, nullptr), paramErr);
        EXPECT_EQ(command(mixer.instance, -1, names), paramErr);
        EXPECT_EQ(command(nullptr, 1, names), badComponentInstance);
    }
    EXPECT_EQ(mixer.play(source, buffer), noErr);
    EXPECT_EQ(SoundComponentPlaySourceBuffer(mixer.instance, source, nullptr, 0), paramErr);
    EXPECT_EQ(SoundComponentAddSource(mixer.instance, nullptr), paramErr);
    EXPECT_EQ(SoundComponentGetSourceData(mixer.instance, nullptr), paramErr);
    Buffer noSamples({}, noise({}, 10)), negative({}, noise({}, 10));
    noSamples.block.desc.buffer = nullptr;
    negative.block.desc.sampleCount = -1;
    EXPECT_EQ(mixer.play(source, noSamples), paramErr);
    EXPECT_EQ(mixer.play(source, negative), paramErr);
    EXPECT_EQ(SoundComponentInitOutputDevice(mixer.instance, 0), badComponentSelector)
        << "a mixer is not an output device";
    EXPECT_EQ(SoundComponentAddSource(nullptr, nullptr), badComponentInstance);
    EXPECT_EQ(mixer.fetchAll(), buffer.samples);
}

TEST(MixerCommands, StartTakesSeveralSources)
{
    Mixer mixer({}, 100);
    SoundSource sources[] = {mixer.add(), mixer.add(), mixer.add()};
    Buffer one({}, encode({}, Samples(200, 0.125))), two({}, encode({}, Samples(200, 0.25))),
        three({}, encode({}, Samples(200, 0.5)));
    mixer.play(sources[0], one, kSourcePaused);
    mixer.play(sources[1], two, kSourcePaused);
    mixer.play(sources[2], three, kSourcePaused);
    ASSERT_EQ(SoundComponentStartSource(mixer.instance, 2, sources), noErr);
    EXPECT_EQ(mixer.fetch(), encode({}, Samples(200, 0.375)));
    ASSERT_EQ(SoundComponentStartSource(mixer.instance, 3, sources), noErr);
    EXPECT_EQ(mixer.fetch(), encode({}, Samples(200, 0.5)));
    EXPECT_TRUE(mixer.fetch().empty());
}

TEST(MixerCommands, RemoveEndsASource)
{
    Mixer mixer({}, 10);
    const SoundSource source = mixer.add();
    Buffer buffer({}, noise({}, 100));
    ASSERT_EQ(mixer.play(source, buffer), noErr);
    EXPECT_FALSE(mixer.fetch().empty());
    EXPECT_EQ(SoundComponentRemoveSource(mixer.instance, source), noErr);
    EXPECT_TRUE(mixer.fetch().empty());
    EXPECT_EQ(buffer.completions, 0);
    const SoundSource next = mixer.add();
    EXPECT_EQ(mixer.start(next), noErr);
    EXPECT_TRUE(mixer.fetch().empty()) << "a new source in the same slot is empty";
    EXPECT_NE(next, source) << "and has another name";
    EXPECT_EQ(SoundComponentRemoveSource(mixer.instance, source), badChannel);
}

} // namespace
