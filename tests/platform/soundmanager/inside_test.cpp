// Completions that call the mixer back.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

using namespace test;

struct Scene {
    Mixer mixer{{}, 100};
    SoundSource source = mixer.add(), other = mixer.add();
    Buffer first{{}, encode({}, Samples(60, 0.5))}; // 30 frames
    Buffer second{{}, encode({}, Samples(400, 0.25))};
    Buffer third{{}, encode({}, Samples(100, 0.125))};

    /// Play the first and the second buffer; in between comes `then`.
    void play(std::function<void()> then)
    {
        first.atEnd = std::move(then);
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

TEST(MixerInside, AnotherBufferFollowsTheOneThatEnded)
{
    Scene scene;
    scene.first.atEnd = [&] { EXPECT_EQ(scene.mixer.play(scene.source, scene.third), noErr); };
    ASSERT_EQ(scene.mixer.play(scene.source, scene.first), noErr);
    EXPECT_EQ(scene.mixer.pullAll(), joined(level(30, 0.5), level(50, 0.125)));
}

TEST(MixerInside, ABufferThatGivesItselfAgain)
{
    Scene scene;
    scene.first.atEnd = [&] {
        if (scene.first.ends < 1000) EXPECT_EQ(scene.mixer.play(scene.source, scene.first), noErr);
    };
    ASSERT_EQ(scene.mixer.play(scene.source, scene.first), noErr);
    EXPECT_EQ(scene.mixer.pullAll(), level(30000, 0.5));
}

// With no frames it would never fill a slice.
TEST(MixerInside, AnEmptyBufferThatGivesItselfAgain)
{
    Scene scene;
    Buffer empty({}, Bytes());
    Byte nothing = 0;
    empty.block.desc.buffer = &nothing;
    empty.atEnd = [&] { EXPECT_EQ(scene.mixer.play(scene.source, empty), noErr); };
    ASSERT_EQ(scene.mixer.play(scene.source, empty), noErr);
    EXPECT_TRUE(scene.mixer.pull().empty());
    EXPECT_EQ(empty.ends, 64);
    EXPECT_EQ(scene.mixer.stop(scene.source), noErr);
}

TEST(MixerInside, Pause)
{
    Scene scene;
    scene.play([&] { EXPECT_EQ(scene.mixer.pause(scene.source), noErr); });
    EXPECT_EQ(scene.mixer.pullAll(), level(30, 0.5)) << "at once";
    EXPECT_EQ(scene.mixer.start(scene.source), noErr);
    EXPECT_EQ(scene.mixer.pullAll(), level(200, 0.25));
}

TEST(MixerInside, Stop)
{
    Scene scene;
    scene.play([&] { EXPECT_EQ(scene.mixer.stop(scene.source), noErr); });
    EXPECT_EQ(scene.mixer.pullAll(), level(30, 0.5));
    EXPECT_EQ(scene.mixer.start(scene.source), noErr);
    EXPECT_TRUE(scene.mixer.pull().empty());
    EXPECT_EQ(scene.second.ends, 0);
}

TEST(MixerInside, StopAndPlayAnother)
{
    Scene scene;
    scene.play([&] {
        EXPECT_EQ(scene.mixer.stop(scene.source), noErr);
        EXPECT_EQ(scene.mixer.play(scene.source, scene.third), noErr);
    });
    EXPECT_EQ(scene.mixer.pullAll(), joined(level(30, 0.5), level(50, 0.125)));
    EXPECT_EQ(scene.second.ends, 0);
    EXPECT_EQ(scene.third.ends, 1);
}

// Inside the question for more, too, where the buffer has not ended yet.
TEST(MixerInside, StopWhileItIsAskedForMore)
{
    static Scene* asked;
    for (bool hasMore : {false, true}) {
        Scene scene;
        asked = &scene;
        scene.first.block.moreRtn = hasMore ? [](SoundParamBlockPtr* more) -> Boolean {
            EXPECT_EQ(asked->mixer.stop(asked->source), noErr);
            *more = &asked->third.block;
            return true;
        }
        : [](SoundParamBlockPtr*) -> Boolean {
              EXPECT_EQ(asked->mixer.stop(asked->source), noErr);
              return false;
          };
        scene.play({});
        EXPECT_EQ(scene.mixer.pullAll(), level(30, 0.5));
        EXPECT_EQ(scene.first.ends, 0) << "stopped: nobody is told";
        EXPECT_EQ(scene.third.ends, 0);
    }
}

TEST(MixerInside, RemoveItsOwnSource)
{
    Scene scene;
    scene.play([&] { EXPECT_EQ(SoundComponentRemoveSource(scene.mixer.instance, scene.source), noErr); });
    EXPECT_EQ(scene.mixer.pullAll(), level(30, 0.5));
    EXPECT_EQ(scene.mixer.start(scene.source), noErr);
    EXPECT_TRUE(scene.mixer.pull().empty());
    EXPECT_EQ(scene.second.ends, 0);
    EXPECT_EQ(scene.mixer.play(scene.source, scene.third), badChannel);
}

TEST(MixerInside, RemoveAnotherSource)
{
    Scene scene;
    Buffer beside({}, encode({}, Samples(400, 0.0625)));
    ASSERT_EQ(scene.mixer.play(scene.other, beside), noErr);
    scene.play([&] { EXPECT_EQ(SoundComponentRemoveSource(scene.mixer.instance, scene.other), noErr); });
    EXPECT_EQ(scene.mixer.pullAll(), joined(level(30, 0.5), level(200, 0.25)));
    EXPECT_EQ(beside.ends, 0);
}

TEST(MixerInside, AddASource)
{
    Scene scene;
    SoundSource added = nullptr;
    scene.play([&] { EXPECT_EQ(SoundComponentAddSource(scene.mixer.instance, &added), noErr); });
    scene.mixer.pullAll();
    EXPECT_EQ(scene.mixer.playAll(added, {}, level(50, 0.5)), level(50, 0.5));
}

TEST(MixerInside, FetchTheSum)
{
    Scene scene;
    SoundComponentDataPtr data = reinterpret_cast<SoundComponentDataPtr>(&scene);
    scene.play([&] { EXPECT_EQ(SoundComponentGetSourceData(scene.mixer.instance, &data), channelBusy); });
    EXPECT_EQ(scene.mixer.pullAll(), joined(level(30, 0.5), level(200, 0.25)));
    EXPECT_EQ(data, nullptr);
}

// The block goes with the mixer, so there is none.
TEST(MixerInside, CloseTheMixer)
{
    Scene scene;
    const ComponentInstance mixer = scene.mixer.instance;
    scene.play([&] {
        EXPECT_EQ(CloseMixerSoundComponent(mixer), noErr);
        EXPECT_EQ(CloseMixerSoundComponent(mixer), static_cast<OSErr>(-32767));
        EXPECT_EQ(scene.mixer.play(scene.source, scene.third), badComponentInstance);
    });
    scene.mixer.instance = nullptr; // it is closed
    SoundComponentDataPtr data = reinterpret_cast<SoundComponentDataPtr>(&scene);
    EXPECT_EQ(SoundComponentGetSourceData(mixer, &data), badComponentInstance);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(scene.first.ends, 1);
    EXPECT_EQ(scene.second.ends, 0);
    EXPECT_EQ(alive("ComponentInstance"), 0);
    EXPECT_EQ(SoundComponentGetSourceData(mixer, &data), badComponentInstance);
}

// Two mixers on two threads whose completions stop each other's sources wait for nobody.
TEST(MixerInside, StopTheSourceOfAnotherMixer)
{
    for (int round = 0; round < 50; ++round) {
        Scene one, two;
        std::atomic<int> inside{0}, stopped{0};
        const auto stop = [&](Scene& other) {
            for (++inside; inside < 2;) std::this_thread::yield(); // both are in a slice
            EXPECT_EQ(other.mixer.stop(other.source), noErr);
            for (++stopped; stopped < 2;) std::this_thread::yield();
        };
        one.play([&] { stop(two); });
        two.play([&] { stop(one); });
        std::thread thread([&] { one.mixer.pullAll(); });
        two.mixer.pullAll();
        thread.join();
        EXPECT_EQ(one.first.ends + two.first.ends, 2);
        EXPECT_EQ(one.second.ends + two.second.ends, 0);
    }
}

// An exception out of a completion does not get far.
TEST(MixerInside, Throw)
{
    Scene scene;
    scene.play([] { throw 1; });
    SoundComponentDataPtr data = nullptr;
    EXPECT_EQ(SoundComponentGetSourceData(scene.mixer.instance, &data), memFullErr);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(scene.mixer.pullAll(), level(200, 0.25)) << "it has ended, and the next one plays";
}

} // namespace
