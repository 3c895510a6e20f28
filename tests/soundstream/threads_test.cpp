// A render thread, a client and the host program run at the same time on the real platform. The sanitizers
// check that no freed record is used and that no record is leaked; the samples are not compared.
#include "soundstream/render.h"
#include "tests/soundstream/classic_client.h"
#include "tests/soundstream/pulled_list.h"
#include "tests/soundstream/stream_object.h"
#include "tests/support/c_library_spy.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace {

using namespace soundstream_test;

constexpr int rounds = 1000;

class SoundStreamThreads : public testing::Test {
protected:
    SoundStreamThreads() : samples_(4 * 700, 0x11)
    {
        soundComponentEntry = soundStreamDispatcher;
        object_.emplace();
    }
    ~SoundStreamThreads() override
    {
        object_.reset();
        unregisterAll();
        EXPECT_EQ(c_library_spy::liveBlocks(), 0) << "no record stays allocated";
        EXPECT_EQ(alive("ComponentInstance"), 0u);
        EXPECT_EQ(alive("Component"), 0u);
        soundComponentEntry = nullptr;
    }

    StreamObject& object() { return *object_; }

    /// Render slices without a pause, of the state last passed to showState(), even after that state is
    /// freed.
    void pullUntilDone()
    {
        PulledList pulled(2, 64);
        while (!isDone_) {
            soundstream::renderFromMixer(shown_, nullptr, nullptr, 0, 64, pulled.list());
            ++slices_;
        }
    }
    void showState() { shown_ = object().state(); }

    /// Run a classic sound program once. The bits of `form` select the steps of the program.
    void playOnce(int form)
    {
        ClassicClient client;
        if (!client) return; // no component is registered at this moment, so there is nothing to play
        ++clientsDone_;
        SoundParamBlock block = blockOf(samples_.data(), 700);
        client.play(block, form & 1);
        client.start();
        if (form & 2) client.pause();
        if (form & 4) awaitSlices(2);
        if (form & 8) SoundComponentInitOutputDevice(client.instance, 0);
        client.start();
        client.stop();
        client.close();
    }

    void awaitSlices(int count) const
    {
        const int until = slices_ + count;
        while (slices_ < until && !isDone_) std::this_thread::yield();
    }

    std::atomic<bool> isDone_{false};
    std::atomic<void*> shown_{nullptr};
    std::atomic<int> slices_{0};
    std::atomic<int> clientsDone_{0};

    std::vector<unsigned char> samples_;

private:
    std::optional<StreamObject> object_;
};

TEST_F(SoundStreamThreads, AClientOpensAndClosesWhileAUnitRenders)
{
    object().initComponent();
    object().openComponent();
    showState();
    std::thread renderThread([this] { pullUntilDone(); });
    for (int round = 0; round < rounds; ++round) playOnce(round);
    isDone_ = true;
    renderThread.join();
    EXPECT_FALSE(object().isActive());
}

TEST_F(SoundStreamThreads, AnObjectIsCreatedAndDestroyedWhileAUnitRendersAndAClientPlays)
{
    std::thread renderThread([this] { pullUntilDone(); });
    std::thread client([this] {
        for (int round = 0; !isDone_; ++round) playOnce(round);
    });
    for (int round = 0; round < rounds || clientsDone_ < rounds / 10; ++round) {
        object().initComponent();
        object().openComponent();
        showState();
        awaitSlices(round % 3);
        object().isActive();
        if (round & 1) object().closeComponent();
        if (round & 2) object().openComponent();
        if (round & 4) {
            // The object ends while a client has an instance and the unit has the render callback.
            object().destroy();
            object().construct();
        }
    }
    isDone_ = true;
    client.join();
    renderThread.join();
}

TEST_F(SoundStreamThreads, TwoUnitsRenderOneState)
{
    object().initComponent();
    object().openComponent();
    showState();
    std::thread first([this] { pullUntilDone(); }), second([this] { pullUntilDone(); });
    for (int round = 0; round < rounds / 8; ++round) playOnce(round);
    for (int round = 0; round < rounds / 8; ++round) {
        object().closeComponent();
        object().openComponent();
        playOnce(round);
    }
    object().initComponent();
    awaitSlices(2);
    isDone_ = true;
    first.join();
    second.join();
}

// Two threads of one client share one instance: one thread closes it while the other thread sends requests.
TEST_F(SoundStreamThreads, RequestsRunWhileTheirInstanceCloses)
{
    object().initComponent();
    object().openComponent();
    showState();
    std::atomic<ComponentInstance> shared{nullptr};
    std::thread renderThread([this] { pullUntilDone(); });
    std::thread other([&] {
        while (!isDone_) {
            const ComponentInstance instance = shared;
            UInt32 rate = 0;
            SoundComponentGetInfo(instance, nullptr, siSampleRate, &rate);
            SoundComponentStartSource(instance, 0, nullptr);
            SoundComponentInitOutputDevice(instance, 0);
            SoundComponentStopSource(instance, 0, nullptr);
            send(instance, -2, {reinterpret_cast<long>(instance)});
        }
    });
    for (int round = 0; round < rounds / 4; ++round) {
        ClassicClient client;
        shared = client.instance;
        if (round & 1) awaitSlices(1);
        client.start();
        SoundComponentInitOutputDevice(client.instance, 0);
        client.stop();
    }
    isDone_ = true;
    other.join();
    renderThread.join();
}

// An output unit renders on its device's thread, as in a real program.
TEST_F(SoundStreamThreads, AnOutputUnitRendersWhileAClientPlays)
{
    KVXSimulatedDevice description = {};
    description.name = "Fast";
    description.sliceFrames = 64;
    const KVXDeviceID device = KVXPlatformAddSimulatedDevice(&description);
    ASSERT_EQ(KVXPlatformChooseOutputDevice("Fast"), 0);
    const KVXOutputTap count = [](void* slices, const float*, uint32_t, uint32_t) {
        ++*static_cast<std::atomic<int>*>(slices);
    };
    KVXPlatformSetOutputTap(device, count, &slices_);
    const HostInteger unit = object().openUnit();
    ASSERT_NE(unit, 0);
    object().initComponent();
    EXPECT_EQ(object().attach(unit), noErr);
    EXPECT_EQ(object().initialize(unit), noErr);

    std::thread client([this] {
        for (int round = 0; !isDone_; ++round) playOnce(round);
    });
    for (int round = 0; round < rounds || clientsDone_ < rounds / 10; ++round) {
        object().initComponent();
        object().openComponent();
        EXPECT_EQ(object().attach(unit), noErr);
        EXPECT_EQ(object().start(unit), noErr);
        if (round % 10 == 0) awaitSlices(1 + round % 3);
        if (round & 1) object().closeComponent(); // CloseComponent stops the unit
    }
    isDone_ = true;
    client.join();
    object().destroy();
    EXPECT_EQ(CloseComponent(reinterpret_cast<ComponentInstance>(unit)), noErr);
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
}

} // namespace
