// Several players on one device are heard as the sum of what each would play alone, added in the order in
// which they were started, in single precision. Whoever leaves disturbs nobody.
#include "tests/endtoend/loaded_host.h"
#include "tests/endtoend/reference_output.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

namespace {

using namespace endtoend;
using host::MemoryBlock;
using host::Object;

constexpr std::uint32_t sliceFrames = 64, deviceChannels = 2;
constexpr float deviceRate = 44100;

/// Numbers that no other player has, and whose sums depend on the order of adding.
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

/// Players and, beside each, its reference; in the order of starting.
class Ensemble {
public:
    explicit Ensemble(host::Host& host) : host_(host), device_(deviceRate, deviceChannels, sliceFrames) {}

    /// Start another player, with `blocks` blocks of `count` samples.
    Object& start(int channels, float rate, std::size_t count, int blocks, bool mustNotRunDry = false)
    {
        const int number = static_cast<int>(members_.size());
        members_.push_back({host_.create(playerClass), ReferenceOutput(channels, rate, deviceRate)});
        Member& member = members_.back();
        member.player.set("OutputDeviceID", std::int64_t(device_.id()));
        member.player.set("NumberOfChannels", channels);
        member.player.set("SampleRate", rate);
        member.player.set("NoUnderflow", mustNotRunDry);
        member.reference.setNoUnderflow(mustNotRunDry);
        for (int i = 0; i < blocks; ++i) {
            const auto samples = material(100 * number + i, count);
            EXPECT_TRUE(member.player.call("AddFloatAudio", MemoryBlock::copyOf(samples)).boolean());
            member.reference.add(samples);
        }
        EXPECT_TRUE(member.player.call("Start").boolean()) << number;
        return member.player;
    }

    void step(std::uint32_t frames) { expectOf(device_.step(frames)); }

    void stop(std::size_t number)
    {
        Member& member = members_.at(number);
        member.player.set("NoUnderflow", false);
        member.reference.setNoUnderflow(false);
        member.reference.requestStop();
        const std::size_t before = device_.heard().size();
        member.player.call("Stop"); // waits, and the device turns meanwhile
        expectOf((device_.heard().size() - before) / deviceChannels);
        EXPECT_FALSE(member.player.get("IsRunning").boolean()) << number;
        EXPECT_EQ(member.player.call("FreeSpace").integer(), 200) << number;
    }

    /// Each plays, or has left, as its reference says; and so far the sum was heard, every bit of it.
    void check() const
    {
        std::size_t number = 0;
        for (const Member& member : members_) {
            SCOPED_TRACE("player " + std::to_string(number++));
            EXPECT_EQ(member.player.get("IsRunning").boolean(), member.reference.isRunning());
            EXPECT_EQ(member.player.get("OutputPosition").number(), member.reference.position());
        }
        ASSERT_EQ(device_.heard().size(), expected_.size());
        for (std::size_t i = 0; i < expected_.size(); ++i)
            ASSERT_EQ(device_.heard()[i], expected_[i]) << "sample " << i;
    }

    std::size_t running() const
    {
        std::size_t count = 0;
        for (const Member& member : members_) count += member.player.get("IsRunning").boolean();
        return count;
    }
    std::size_t framesHeard() const { return device_.heard().size() / deviceChannels; }
    SteppedDevice& device() { return device_; }

private:
    struct Member {
        Object player;
        ReferenceOutput reference;
    };

    void expectOf(std::size_t frames)
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

TEST(SeveralPlayers, TwoAreHeardAsTheirSumAndLeaveByThemselves)
{
    LoadedHost loaded;
    {
        Ensemble ensemble(loaded.host);
        ensemble.start(1, 44100, 100, 3);
        ensemble.start(2, 30000, 1000, 2);
        ensemble.step(sliceFrames);
        ensemble.check();
        ensemble.step(700);
        ensemble.check();
        EXPECT_EQ(ensemble.running(), 1u) << "the shorter one has left";
        ensemble.step(100000);
        ensemble.check();
        EXPECT_EQ(ensemble.running(), 0u);
        EXPECT_GT(ensemble.framesHeard(), 1400u);
        EXPECT_LT(ensemble.framesHeard(), 1800u) << "the device rests when the last one has left";
    }
    EXPECT_EQ(leftOver(loaded.host), "");
    EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
}

TEST(SeveralPlayers, OneThatIsStoppedDisturbsNobody)
{
    for (std::size_t first : {0u, 1u}) {
        SCOPED_TRACE(first);
        LoadedHost loaded;
        {
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
            EXPECT_EQ(ensemble.device().step(sliceFrames), 0u) << "nobody is left";
        }
        EXPECT_EQ(leftOver(loaded.host), "");
    }
}

TEST(SeveralPlayers, TenAreHeardAsTheirSumWhoeverComesAndGoes)
{
    LoadedHost loaded;
    {
        Ensemble ensemble(loaded.host);
        const struct {
            int channels;
            float rate;
            std::size_t count;
            int blocks;
            bool mustNotRunDry;
        } players[] = {
            {1, 44100, 300, 4, false}, {2, 44100, 700, 3, false},  {1, 22050, 250, 5, false},
            {1, 44100, 64, 1, true},   {2, 48000, 1000, 9, false}, {1, 96000, 5000, 2, false},
            {1, 44100, 1, 1, false},   {2, 8000, 100, 8, true},    {1, 44100, 20000, 1, false},
        };
        for (const auto& each : players)
            ensemble.start(each.channels, each.rate, each.count, each.blocks, each.mustNotRunDry);
        ensemble.step(1);
        ensemble.step(333);
        ensemble.check();
        ensemble.start(1, 44100, 900, 2); // the tenth comes later
        ensemble.step(640);
        ensemble.check();
        ensemble.stop(4); // from the middle
        ensemble.check();
        ensemble.step(500);
        ensemble.stop(0); // has left already, or is the first in line
        ensemble.check();
        ensemble.step(2000);
        ensemble.check();
        ensemble.stop(3); // has been dry for long
        ensemble.stop(7);
        ensemble.check();
        ensemble.step(100000);
        ensemble.check();
        EXPECT_EQ(ensemble.running(), 0u);
        EXPECT_GT(ensemble.framesHeard(), 20000u);
    }
    EXPECT_EQ(leftOver(loaded.host), "");
    EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
}

} // namespace
