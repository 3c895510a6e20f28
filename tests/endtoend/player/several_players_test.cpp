// Several players on one device: the output is the sum of the players' samples, added in the order of the
// starts in single precision, and the end of one player changes nothing for the others.
#include "tests/endtoend/expected_samples.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/endtoend/reference_output.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

namespace {

using namespace endtoend;

using SeveralPlayers = LoadedHostTest;
using host::MemoryBlock;
using host::Object;

constexpr std::uint32_t sliceFrames = 64, deviceChannels = 2;
constexpr float deviceRate = 44100;

/// Return samples that differ between players, and whose sums depend on the order of addition.
std::vector<float> material(int player, std::size_t count)
{
    std::vector<float> samples(count);
    std::uint32_t state = 12345u + 7919u * static_cast<std::uint32_t>(player);
    for (float& sample : samples) {
        state = state * 1664525u + 1013904223u;
        sample = static_cast<float>(static_cast<std::int32_t>(state)) / (2147483648.0f * 3);
    }
    return samples;
}

/// The players on one device, each with a reference player, in the order of their starts.
class Ensemble {
public:
    explicit Ensemble(host::Host& host) : host_(host), device_(deviceRate, deviceChannels, sliceFrames) {}

    /// Start another player, with `blocks` blocks of `count` samples.
    Object& start(int channels, float rate, std::size_t count, int blocks, bool noUnderflow = false)
    {
        const int number = static_cast<int>(members_.size());
        members_.push_back({host_.create(playerClass), ReferenceOutput(channels, rate, deviceRate)});
        Member& member = members_.back();
        member.player.set("OutputDeviceID", std::int64_t(device_.id()));
        member.player.set("NumberOfChannels", channels);
        member.player.set("SampleRate", rate);
        member.player.set("NoUnderflow", noUnderflow);
        member.reference.setNoUnderflow(noUnderflow);
        for (int i = 0; i < blocks; ++i) {
            const auto samples = material(100 * number + i, count);
            EXPECT_TRUE(member.player.call("AddFloatAudio", MemoryBlock::copyOf(samples)).boolean());
            member.reference.add(samples);
        }
        EXPECT_TRUE(member.player.call("Start").boolean()) << number;
        return member.player;
    }

    void step(std::uint32_t frames) { addExpected(device_.step(frames)); }

    void stop(std::size_t number)
    {
        Member& member = members_.at(number);
        member.player.set("NoUnderflow", false);
        member.reference.setNoUnderflow(false);
        member.reference.requestStop();
        const std::size_t before = device_.output().size();
        member.player.call("Stop"); // waits while the device runs I/O cycles
        addExpected((device_.output().size() - before) / deviceChannels);
        EXPECT_FALSE(member.player.get("IsRunning").boolean()) << number;
        EXPECT_EQ(member.player.call("FreeSpace").integer(), 200) << number;
    }

    /// Expect that each player has the state of its reference player, and that the output is exactly the sum
    /// of all.
    void check() const
    {
        std::size_t number = 0;
        for (const Member& member : members_) {
            SCOPED_TRACE("player " + std::to_string(number++));
            EXPECT_EQ(member.player.get("IsRunning").boolean(), member.reference.isRunning());
            EXPECT_EQ(member.player.get("OutputPosition").number(), member.reference.position());
        }
        expectSamples(device_.output(), expected_);
    }

    std::size_t running() const
    {
        std::size_t count = 0;
        for (const Member& member : members_) count += member.player.get("IsRunning").boolean();
        return count;
    }
    std::size_t framesRendered() const { return device_.output().size() / deviceChannels; }
    SteppedDevice& device() { return device_; }

private:
    struct Member {
        Object player;
        ReferenceOutput reference;
    };

    void addExpected(std::size_t frames)
    {
        while (frames > 0) {
            const std::size_t slice = std::min<std::size_t>(frames, sliceFrames);
            std::vector<float> sum(slice * deviceChannels, 0.0f);
            for (Member& member : members_) {
                if (!member.reference.isRunning()) continue;
                member.reference.play(slice, deviceChannels);
                const float* last = &*(member.reference.played().end() - std::ptrdiff_t(sum.size()));
                for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += last[i];
            }
            expected_.insert(expected_.end(), sum.begin(), sum.end());
            frames -= slice;
        }
    }

    host::Host& host_;
    SteppedDevice device_;
    std::deque<Member> members_;
    std::vector<float> expected_;
};

TEST_F(SeveralPlayers, TwoRenderTheirSumAndStopByThemselves)
{
    Ensemble ensemble(loaded.host);
    ensemble.start(1, 44100, 100, 3);
    ensemble.start(2, 30000, 1000, 2);
    ensemble.step(sliceFrames);
    ensemble.check();
    ensemble.step(700);
    ensemble.check();
    EXPECT_EQ(ensemble.running(), 1u) << "the shorter player has stopped";
    ensemble.step(100000);
    ensemble.check();
    EXPECT_EQ(ensemble.running(), 0u);
    EXPECT_GT(ensemble.framesRendered(), 1400u);
    EXPECT_LT(ensemble.framesRendered(), 1800u) << "the device stops after the last player";
}

TEST_F(SeveralPlayers, StoppedPlayerLeavesTheOtherUnchanged)
{
    for (std::size_t first : {0u, 1u}) {
        SCOPED_TRACE(first);
        Ensemble ensemble(loaded.host);
        ensemble.start(1, 44100, 5000, 3);
        ensemble.start(1, 48000, 5000, 3);
        ensemble.step(1000);
        ensemble.stop(first);
        ensemble.check();
        EXPECT_EQ(ensemble.running(), 1u);
        ensemble.step(1000);
        ensemble.check();
        ensemble.stop(1 - first);
        ensemble.check();
        EXPECT_EQ(ensemble.device().step(sliceFrames), 0u) << "no player is left";
    }
}

TEST_F(SeveralPlayers, TenRenderTheirSumWhilePlayersStartAndStop)
{
    Ensemble ensemble(loaded.host);
    const struct {
        int channels;
        float rate;
        std::size_t count;
        int blocks;
        bool noUnderflow;
    } players[] = {
        {1, 44100, 300, 4, false}, {2, 44100, 700, 3, false},  {1, 22050, 250, 5, false},
        {1, 44100, 64, 1, true},   {2, 48000, 1000, 9, false}, {1, 96000, 5000, 2, false},
        {1, 44100, 1, 1, false},   {2, 8000, 100, 8, true},    {1, 44100, 20000, 1, false},
    };
    for (const auto& each : players)
        ensemble.start(each.channels, each.rate, each.count, each.blocks, each.noUnderflow);
    ensemble.step(1);
    ensemble.step(333);
    ensemble.check();
    ensemble.start(1, 44100, 900, 2); // start the tenth player
    ensemble.step(640);
    ensemble.check();
    ensemble.stop(4); // stop a player that is neither the first nor the last in the order of starts
    ensemble.check();
    ensemble.step(500);
    ensemble.stop(0); // stop the first player, which may have stopped by itself
    ensemble.check();
    ensemble.step(2000);
    ensemble.check();
    ensemble.stop(3); // stop a player whose queue became empty long ago
    ensemble.stop(7);
    ensemble.check();
    ensemble.step(100000);
    ensemble.check();
    EXPECT_EQ(ensemble.running(), 0u);
    EXPECT_GT(ensemble.framesRendered(), 20000u);
}

} // namespace
