// Tests of client threads that call a mixer while a render thread fetches its output.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace {

using namespace test;

/// A render thread that fetches blocks continuously.
class Renderer {
public:
    explicit Renderer(ComponentInstance m, std::function<void(const SoundComponentData&)> check = {})
        : mixer(m), thread([this, check = std::move(check)] {
              while (!isOver) {
                  SoundComponentDataPtr data = nullptr;
                  if (SoundComponentGetSourceData(mixer, &data) == noErr && check) check(*data);
                  const std::lock_guard<std::mutex> guard(lock);
                  ++blocks;
                  hasMore.notify_one();
              }
          })
    {
    }
    ~Renderer()
    {
        isOver = true;
        thread.join();
    }
    void waitForBlocks(int count)
    {
        std::unique_lock<std::mutex> guard(lock);
        hasMore.wait(guard, [this, until = blocks + count] { return blocks >= until; });
    }

private:
    const ComponentInstance mixer;
    std::atomic<bool> isOver{false};
    std::mutex lock;
    std::condition_variable hasMore;
    int blocks = 0; ///< number of fetched blocks; guarded by `lock`
    std::thread thread;
};

// The client may free the buffers after a stop or a removal, and may change them after a pause.
TEST(MixerThreads, StopPauseAndRemoveWaitForTheRenderThread)
{
    Mixer mixer({}, 64);
    Renderer renderer(mixer.instance);
    const Form forms[] = {{}, {'sowt', 16, 2, 22050}, {'raw ', 8, 1, 8000}};
    for (int round = 0; round < 300; ++round) {
        SoundSource source = nullptr;
        ASSERT_EQ(SoundComponentAddSource(mixer.instance, &source), noErr);
        std::vector<std::unique_ptr<Buffer>> buffers;
        for (int i = 0; i < 3; ++i) {
            const Form& form = forms[(round + i) % 3];
            buffers.push_back(std::make_unique<Buffer>(form, noise(form, 200)));
            ASSERT_EQ(mixer.play(source, *buffers.back(), i == 0 && round % 2 ? kSourcePaused : 0), noErr);
        }
        ASSERT_EQ(mixer.start(source), noErr);
        if (round % 3 == 0) renderer.waitForBlocks(2);
        ASSERT_EQ(mixer.pause(source), noErr);
        const int ends = buffers[0]->completions + buffers[1]->completions + buffers[2]->completions;
        for (auto& buffer : buffers)
            buffer->samples.assign(buffer->samples.size(), 0); // no render call reads the samples
        EXPECT_EQ(buffers[0]->completions + buffers[1]->completions + buffers[2]->completions, ends);
        ASSERT_EQ(mixer.start(source), noErr);
        if (round % 4 != 0) ASSERT_EQ(mixer.stop(source), noErr);
        if (round % 4 == 1) buffers.clear();
        ASSERT_EQ(SoundComponentRemoveSource(mixer.instance, source), noErr);
    }
}

TEST(MixerThreads, SourcesOfOneStartBeginInTheSameBlock)
{
    Mixer mixer({}, 16);
    std::atomic<int> halves{0}, wholes{0};
    Renderer renderer(mixer.instance, [&](const SoundComponentData& data) {
        for (long i = 0; i < 2 * data.sampleCount; ++i) {
            const int sample = static_cast<SInt16>(data.buffer[2 * i + 1] << 8 | data.buffer[2 * i]);
            ++(sample == 0x4000 ? wholes : halves);
        }
    });
    SoundSource sources[] = {mixer.add(), mixer.add()};
    for (int round = 0; round < 1000; ++round) {
        Buffer one({}, encode({}, Samples(64, 0.25))), two({}, encode({}, Samples(64, 0.25)));
        ASSERT_EQ(mixer.play(sources[0], one, kSourcePaused), noErr);
        ASSERT_EQ(mixer.play(sources[1], two, kSourcePaused), noErr);
        ASSERT_EQ(SoundComponentStartSource(mixer.instance, 2, sources), noErr);
        renderer.waitForBlocks(8);
        ASSERT_EQ(SoundComponentStopSource(mixer.instance, 2, sources), noErr);
        ASSERT_EQ(one.completions + two.completions, 2);
    }
    EXPECT_EQ(halves, 0) << "one played without the other";
    EXPECT_EQ(wholes, 64 * 1000);
}

TEST(MixerThreads, CloseWaitsForTheRenderThread)
{
    for (int round = 0; round < 1000; ++round) {
        auto mixer = std::make_unique<Mixer>(Form{}, 32);
        const SoundSource source = mixer->add();
        std::atomic<bool> mayEnd{true};
        Buffer buffer({}, noise({}, 100));
        buffer.onCompletion = [&] {
            EXPECT_TRUE(mayEnd) << "completed after close returned";
            mixer->play(source, buffer); // queues the same buffer again
        };
        ASSERT_EQ(mixer->play(source, buffer), noErr);
        const ComponentInstance instance = mixer->instance;
        Renderer renderer(instance);
        if (round % 2) renderer.waitForBlocks(1);
        ASSERT_EQ(CloseMixerSoundComponent(instance), noErr);
        mixer->instance = nullptr;
        mayEnd = false;
    }
    EXPECT_EQ(liveCount("ComponentInstance"), 0);
}

TEST(MixerThreads, SeveralClientsRunBesideACompletionThatQueuesAgain)
{
    Mixer mixer({}, 64);
    const SoundSource steady = mixer.add();
    Buffer loop({}, noise({}, 50));
    std::atomic<bool> queuesAgain{true};
    loop.onCompletion = [&] {
        if (queuesAgain) mixer.play(steady, loop);
    };
    ASSERT_EQ(mixer.play(steady, loop), noErr);
    {
        Renderer renderer(mixer.instance);
        std::vector<std::thread> clients;
        for (int client = 0; client < 3; ++client)
            clients.emplace_back([&mixer] {
                for (int round = 0; round < 300; ++round) {
                    SoundSource source = nullptr;
                    EXPECT_EQ(SoundComponentAddSource(mixer.instance, &source), noErr);
                    Buffer buffer({'sowt', 16, 2, 22050}, noise({}, 100));
                    EXPECT_EQ(mixer.play(source, buffer), noErr);
                    SoundComponentSetInfo(mixer.instance, source, siVolume,
                                          reinterpret_cast<void*>(0x00800080));
                    EXPECT_EQ(round % 2 ? mixer.stop(source)
                                        : SoundComponentRemoveSource(mixer.instance, source),
                              noErr);
                    SoundComponentRemoveSource(mixer.instance, source);
                }
            });
        for (std::thread& client : clients) client.join();
        queuesAgain = false;
    }
    mixer.fetchAll();
    EXPECT_GT(loop.completions, 0);
}

TEST(MixerThreads, ASecondFetchIsRefusedWhileOneIsInProgress)
{
    Mixer mixer({}, 256);
    Renderer first(mixer.instance);
    for (int i = 0; i < 2000; ++i) {
        SoundComponentDataPtr data = reinterpret_cast<SoundComponentDataPtr>(&mixer);
        const ComponentResult status = SoundComponentGetSourceData(mixer.instance, &data);
        EXPECT_TRUE(status == noErr || status == channelBusy);
        EXPECT_EQ(data != nullptr, status == noErr);
    }
}

} // namespace
