// The main thread changes the position and the loop while the render thread renders.
#include "tests/auplayer/player_fixture.h"

#include <atomic>
#include <thread>

namespace {

using namespace auplayer_test;

class RenderThread : public PlayerTest {};

constexpr std::uint32_t channels = 2, sliceFrames = 64;

/// Return whether the slice contains the samples from `offset` on, for a file in which sample n has the value
/// n.
bool holds(const std::vector<float>& slice, std::uint32_t offset, std::uint32_t samples)
{
    for (std::uint32_t i = 0; i < slice.size(); ++i) {
        const std::uint64_t at = std::uint64_t{offset} + i;
        if (slice[i] != (at < samples ? static_cast<float>(at) : 0.0f)) return false;
    }
    return true;
}

TEST_F(RenderThread, RendersWholeSlicesWhileThePositionChanges)
{
    ASSERT_TRUE(load());
    const AURenderCallbackStruct callback = graph_spy::callback();
    ASSERT_EQ(callback.inputProcRefCon, &data());
    std::atomic<bool> isOver{false};
    std::atomic<int> rendered{0};
    int wrong = 0;
    std::thread audio([&] {
        std::vector<float> samples(channels * sliceFrames);
        AudioBufferList list = {1, {{channels, static_cast<UInt32>(4 * samples.size()), samples.data()}}};
        AudioUnitRenderActionFlags flags = 0;
        const AudioTimeStamp time = {};
        while (!isOver) {
            callback.inputProc(callback.inputProcRefCon, &flags, &time, 0, sliceFrames, &list);
            wrong += !holds(samples, data().lastRenderOffset, channels * 1000);
            ++rendered;
        }
    });
    for (int i = 0; i < 20000 || rendered < 1000; ++i) {
        // Times up to 3 seconds, partly past the end of the file at 2.5 seconds.
        const double seconds = (i * 7919 % 3000) / 1000.0;
        members.set<double>(object(), "CurrentTime", i % 100 ? seconds : -1.0);
        members.set<double>(object(), "LoopIn", seconds);
        members.set<double>(object(), "LoopOut", seconds + 0.1);
        members.set<HostBoolean>(object(), "Looping", HostBoolean(i % 3 != 0));
        EXPECT_GE(members.get<double>(object(), "CurrentTime"), 0.0);
        EXPECT_GE(members.get<double>(object(), "LoopOut"), members.get<double>(object(), "LoopIn"));
    }
    isOver = true;
    audio.join();
    EXPECT_EQ(wrong, 0);

    members.set<HostBoolean>(object(), "Looping", 0);
    members.set<double>(object(), "CurrentTime", 1.0);
    EXPECT_EQ(data().position, 400u);
}

} // namespace
