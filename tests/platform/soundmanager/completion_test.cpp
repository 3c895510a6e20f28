// Tests of completion routines that call the mixer.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

using namespace test;

struct Scene {
    Mixer mixer{{}, 100};
    SoundSource source = mixer.add(), other = mixer.add();
    Buffer first{{}, encode({}, Samples(60, 0.5))}; // 60 samples, which are 30 stereo frames
    Buffer second{{}, encode({}, Samples(400, 0.25))};
    Buffer third{{}, encode({}, Samples(100, 0.125))};

    /// Queue the first and the second buffer. `call` runs in the completion routine of the first buffer.
    void play(std::function<void()> call)
    {
        first.onCompletion = std::move(call);
        ASSERT_EQ(mixer.play(source, first), noErr);
        ASSERT_EQ(mixer.play(source, second), noErr);
    }
};

Bytes level(std::size_t frames, double value) { return encode({}, Samples(2 * frames, value)); }

Bytes joined(Bytes one, const Bytes& other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

TEST(MixerCompletion, QueuesTheNextBuffer)
{
    Scene scene;
    scene.first.onCompletion = [&] { EXPECT_EQ(scene.mixer.play(scene.source, scene.third), noErr); };
    ASSERT_EQ(scene.mixer.play(scene.source, scene.first), noErr);
    EXPECT_EQ(scene.mixer.fetchAll(), joined(level(30, 0.5), level(50, 0.125)));
}

TEST(MixerCompletion, QueuesTheSameBufferAgain)
{
    Scene scene;
    scene.first.onCompletion = [&] {
        if (scene.first.completions < 1000) EXPECT_EQ(scene.mixer.play(scene.source, scene.first), noErr);
    };
    ASSERT_EQ(scene.mixer.play(scene.source, scene.first), noErr);
    EXPECT_EQ(scene.mixer.fetchAll(), level(30000, 0.5));
}

// A fetch ends after 64 empty buffers, because empty buffers would never fill the block.
TEST(MixerCompletion, QueuesAnEmptyBufferForEver)
{
    Scene scene;
    Buffer empty({}, Bytes());
    Byte nothing = 0;
    empty.block.desc.buffer = &nothing;
    empty.onCompletion = [&] { EXPECT_EQ(scene.mixer.play(scene.source, empty), noErr); };
    ASSERT_EQ(scene.mixer.play(scene.source, empty), noErr);
    EXPECT_TRUE(scene.mixer.fetch().empty());
    EXPECT_EQ(empty.completions, 64);
    EXPECT_EQ(scene.mixer.stop(scene.source), noErr);
}

TEST(MixerCompletion, PausesItsSource)
{
    Scene scene;
    scene.play([&] { EXPECT_EQ(scene.mixer.pause(scene.source), noErr); });
    EXPECT_EQ(scene.mixer.fetchAll(), level(30, 0.5)) << "paused in the same block";
    EXPECT_EQ(scene.mixer.start(scene.source), noErr);
    EXPECT_EQ(scene.mixer.fetchAll(), level(200, 0.25));
}

TEST(MixerCompletion, StopsItsSource)
{
    Scene scene;
    scene.play([&] { EXPECT_EQ(scene.mixer.stop(scene.source), noErr); });
    EXPECT_EQ(scene.mixer.fetchAll(), level(30, 0.5));
    EXPECT_EQ(scene.mixer.start(scene.source), noErr);
    EXPECT_TRUE(scene.mixer.fetch().empty());
    EXPECT_EQ(scene.second.completions, 0);
}

TEST(MixerCompletion, StopsItsSourceAndPlaysAnotherBuffer)
{
    Scene scene;
    scene.play([&] {
        EXPECT_EQ(scene.mixer.stop(scene.source), noErr);
        EXPECT_EQ(scene.mixer.play(scene.source, scene.third), noErr);
    });
    EXPECT_EQ(scene.mixer.fetchAll(), joined(level(30, 0.5), level(50, 0.125)));
    EXPECT_EQ(scene.second.completions, 0);
    EXPECT_EQ(scene.third.completions, 1);
}

// A stop inside a "more" routine drops the routine's own buffer, so that buffer is not completed.
TEST(MixerCompletion, AMoreRoutineStopsItsSource)
{
    static Scene* called;
    for (bool hasMore : {false, true}) {
        Scene scene;
        called = &scene;
        scene.first.block.moreRtn = hasMore ? [](SoundParamBlockPtr* more) -> Boolean {
            EXPECT_EQ(called->mixer.stop(called->source), noErr);
            *more = &called->third.block;
            return true;
        }
        : [](SoundParamBlockPtr*) -> Boolean {
              EXPECT_EQ(called->mixer.stop(called->source), noErr);
              return false;
          };
        scene.play({});
        EXPECT_EQ(scene.mixer.fetchAll(), level(30, 0.5));
        EXPECT_EQ(scene.first.completions, 0) << "stopped buffers are not completed";
        EXPECT_EQ(scene.third.completions, 0);
    }
}

TEST(MixerCompletion, RemovesItsSource)
{
    Scene scene;
    scene.play([&] { EXPECT_EQ(SoundComponentRemoveSource(scene.mixer.instance, scene.source), noErr); });
    EXPECT_EQ(scene.mixer.fetchAll(), level(30, 0.5));
    EXPECT_EQ(scene.mixer.start(scene.source), noErr);
    EXPECT_TRUE(scene.mixer.fetch().empty());
    EXPECT_EQ(scene.second.completions, 0);
    EXPECT_EQ(scene.mixer.play(scene.source, scene.third), badChannel);
}

TEST(MixerCompletion, RemovesAnotherSource)
{
    Scene scene;
    Buffer beside({}, encode({}, Samples(400, 0.0625)));
    ASSERT_EQ(scene.mixer.play(scene.other, beside), noErr);
    scene.play([&] { EXPECT_EQ(SoundComponentRemoveSource(scene.mixer.instance, scene.other), noErr); });
    EXPECT_EQ(scene.mixer.fetchAll(), joined(level(30, 0.5), level(200, 0.25)));
    EXPECT_EQ(beside.completions, 0);
}

TEST(MixerCompletion, AddsASource)
{
    Scene scene;
    SoundSource added = nullptr;
    scene.play([&] { EXPECT_EQ(SoundComponentAddSource(scene.mixer.instance, &added), noErr); });
    scene.mixer.fetchAll();
    EXPECT_EQ(scene.mixer.playAll(added, {}, level(50, 0.5)), level(50, 0.5));
}

TEST(MixerCompletion, MayNotFetch)
{
    Scene scene;
    SoundComponentDataPtr data = reinterpret_cast<SoundComponentDataPtr>(&scene);
    scene.play([&] { EXPECT_EQ(SoundComponentGetSourceData(scene.mixer.instance, &data), channelBusy); });
    EXPECT_EQ(scene.mixer.fetchAll(), joined(level(30, 0.5), level(200, 0.25)));
    EXPECT_EQ(data, nullptr);
}

// A completion routine closes the mixer. Closing frees the output block, so the fetch in progress returns
// none.
TEST(MixerCompletion, ClosesTheMixer)
{
    Scene scene;
    const ComponentInstance mixer = scene.mixer.instance;
    scene.play([&] {
        EXPECT_EQ(CloseMixerSoundComponent(mixer), noErr);
        EXPECT_EQ(CloseMixerSoundComponent(mixer), static_cast<OSErr>(-32767));
        EXPECT_EQ(scene.mixer.play(scene.source, scene.third), badComponentInstance);
    });
    scene.mixer.instance = nullptr; // the fetch below closes the mixer
    SoundComponentDataPtr data = reinterpret_cast<SoundComponentDataPtr>(&scene);
    EXPECT_EQ(SoundComponentGetSourceData(mixer, &data), badComponentInstance);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(scene.first.completions, 1);
    EXPECT_EQ(scene.second.completions, 0);
    EXPECT_EQ(liveCount("ComponentInstance"), 0);
    EXPECT_EQ(SoundComponentGetSourceData(mixer, &data), badComponentInstance);
}

// Two completion routines on two threads stop each other's sources. Neither stop waits, because both would
// wait for ever.
TEST(MixerCompletion, StopsTheSourceOfAnotherMixer)
{
    for (int round = 0; round < 50; ++round) {
        Scene one, two;
        std::atomic<int> inside{0}, stopped{0};
        const auto stop = [&](Scene& other) {
            for (++inside; inside < 2;) std::this_thread::yield(); // wait until both fetches are in progress
            EXPECT_EQ(other.mixer.stop(other.source), noErr);
            for (++stopped; stopped < 2;) std::this_thread::yield();
        };
        one.play([&] { stop(two); });
        two.play([&] { stop(one); });
        std::thread thread([&] { one.mixer.fetchAll(); });
        two.mixer.fetchAll();
        thread.join();
        EXPECT_EQ(one.first.completions + two.first.completions, 2);
        EXPECT_EQ(one.second.completions + two.second.completions, 0);
    }
}

TEST(MixerCompletion, MayThrow)
{
    Scene scene;
    scene.play([] { throw 1; });
    SoundComponentDataPtr data = nullptr;
    EXPECT_EQ(SoundComponentGetSourceData(scene.mixer.instance, &data), memFullErr);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(scene.mixer.fetchAll(), level(200, 0.25)) << "the first is completed, the second plays";
}

} // namespace
