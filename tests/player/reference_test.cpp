// Many scenarios, made up by a generator, through the player and through a second, plain implementation of
// its render step: after every slice both must agree in every byte, position, flag and waiting sample. The
// audio thread allocates nothing meanwhile.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/platform_spy.h"
#include "tests/support/reference_player.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

using test::PlayerObject;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float largest = std::numeric_limits<float>::max();
constexpr float smallest = std::numeric_limits<float>::denorm_min();

const std::vector<float> usualRates = {44100,  48000, 22050, 11025,    88200, 96000,
                                       192000, 8000,  32000, 44099.5f, 1,     3};
const std::vector<float> strangeRates = {0,       -0.0f,    -1,    -44100, infinity, -infinity, notANumber,
                                         largest, smallest, 1e12f, 1e-12f, 4.6e18f,  -8e18f,    441000};
const std::vector<float> strangeSamples = {infinity, -infinity, notANumber, largest,
                                           -largest, smallest,  -0.0f};
const std::vector<int> channelCounts = {1, 1, 1, 1, 2, 2, 2, 2, 0, 3, -1};

/// One player, twice.
class Scenario {
public:
    Scenario(std::uint32_t seed, bool isStrange) : random_(seed), isStrange_(isStrange)
    {
        setRate();
        setChannels();
        object_->noUnderflow = mirror_.noUnderflow = chance(2);
        for (int i = below(5); i > 0; --i) add();
        start();
    }

    void run(int steps)
    {
        for (int i = 0; i < steps && !::testing::Test::HasFailure(); ++i) {
            SCOPED_TRACE(::testing::Message() << "step " << i);
            act();
            render();
            compare();
        }
    }

private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<std::uint32_t>(limit)); }
    bool chance(int oneIn) { return below(oneIn) == 0; }
    template <class T>
    T pick(const std::vector<T>& values)
    {
        return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
    }

    float rate() { return isStrange_ && chance(2) ? pick(strangeRates) : pick(usualRates); }
    void setRate()
    {
        mirror_.sampleRate = rate();
        test::set<float>(object_, "SampleRate", mirror_.sampleRate);
    }
    void setChannels()
    {
        mirror_.numberOfChannels = pick(channelCounts);
        test::set<HostInteger>(object_, "NumberOfChannels", mirror_.numberOfChannels);
    }

    void add()
    {
        const int longest[] = {1, 3, 8, 40, 300};
        std::vector<float> samples(static_cast<std::size_t>(1 + below(longest[below(5)])));
        if (mirror_.numberOfChannels == 2 && !chance(8) && samples.size() % 2) samples.push_back(0);
        for (float& sample : samples) {
            sample = static_cast<float>(static_cast<std::int32_t>(random_())) * 0x1p-31f;
            if (isStrange_ && chance(20)) sample = pick(strangeSamples);
        }
        const bool clears = chance(20);
        ASSERT_TRUE(object_.add(samples, clears));
        if (clears) mirror_.waiting.clear();
        mirror_.waiting.push_back(std::move(samples));
    }

    void start()
    {
        spy::reset();
        spy::name(reinterpret_cast<const void*>(object_->ioProc), "procedure");
        const float deviceRate = rate();
        spy::platform().streamFormat.mSampleRate = deviceRate;
        ASSERT_TRUE(object_.start());
        spy::forgetCalls();
        mirror_.start(deviceRate);
        mirror_.calls.clear();
    }

    /// What happens between two slices.
    void act()
    {
        if (!mirror_.isRunning) start();
        while (chance(2) && mirror_.waiting.size() < 20) add();
        if (chance(10)) setRate();
        if (chance(20)) setChannels();
        if (chance(10)) object_->noUnderflow = mirror_.noUnderflow = !mirror_.noUnderflow;
        if (chance(30)) object_->stopRequested = mirror_.stopRequested = true;
        if (chance(10)) object_->hadUnderflow = mirror_.hadUnderflow = false;
        if (!mirror_.isRunning || !mirror_.stopRequested) return;
        if (chance(2)) object_->stopRequested = mirror_.stopRequested = false; // withdrawn
    }

    std::vector<test::Shape> shapes()
    {
        const std::uint32_t usual[] = {1, 2, 2, 2, 6, 3};
        const auto frames = static_cast<std::uint32_t>(below(4) ? below(33) : below(3));
        std::vector<test::Shape> list = {test::shape(usual[below(6)], frames)};
        if (chance(30)) list[0].channels = 0;
        if (chance(20)) list[0].bytes += static_cast<std::uint32_t>(below(4));
        for (int more = chance(3) ? below(3) : 0; more > 0; --more) {
            test::Shape other = test::shape(static_cast<std::uint32_t>(below(4)), frames);
            if (chance(3)) other.bytes = static_cast<std::uint32_t>(below(140));
            list.push_back(other);
        }
        for (test::Shape& each : list) each.isAbsent = chance(15);
        return list;
    }

    void render()
    {
        const std::vector<test::Shape> list = shapes();
        const int inUse =
            chance(25) ? below(static_cast<int>(list.size()) + 1) : static_cast<int>(list.size());
        test::Slice real(list, inUse);
        reference::Slice plain = {{}, static_cast<std::size_t>(inUse)};
        for (const test::Shape& each : list)
            plain.buffers.push_back(
                {each.channels, std::vector<unsigned char>(each.bytes, test::Slice::before), each.isAbsent});

        OSStatus status;
        {
            const watched::NoAllocation audioThread;
            status = test::cycle(object_, real);
        }
        mirror_.render(plain);

        EXPECT_EQ(status, 0);
        EXPECT_TRUE(real.isIntact());
        for (std::size_t b = 0; b < list.size(); ++b) expectEqual(real.bytes(b), plain.buffers[b].bytes);
        heard_ += list[0].channels ? list[0].bytes / 4 / list[0].channels : 0;
    }

    /// Bit for bit; of two that are no numbers, each will do.
    static void expectEqual(const std::vector<unsigned char>& real, const std::vector<unsigned char>& plain)
    {
        ASSERT_EQ(real.size(), plain.size());
        for (std::size_t i = 0; i < real.size(); i += 4) {
            const std::size_t size = std::min<std::size_t>(4, real.size() - i);
            if (std::memcmp(&real[i], &plain[i], size) == 0) continue;
            float a = 0, b = 0;
            std::memcpy(&a, &real[i], size);
            std::memcpy(&b, &plain[i], size);
            EXPECT_TRUE(size == 4 && std::isnan(a) && std::isnan(b))
                << "sample " << i / 4 << ": " << a << ", not " << b;
        }
    }

    static bool isSame(double a, double b)
    {
        return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
    }

    void compare()
    {
        EXPECT_TRUE(isSame(object_->outputPosition, mirror_.position))
            << object_->outputPosition << ", not " << mirror_.position;
        EXPECT_TRUE(isSame(object_->outputPositionRelative, mirror_.relativePosition))
            << object_->outputPositionRelative << ", not " << mirror_.relativePosition;
        EXPECT_EQ(object_->baseSampleIndex, mirror_.base);
        EXPECT_EQ(object_->isRunning, mirror_.isRunning);
        EXPECT_EQ(object_->stopRequested, mirror_.stopRequested);
        EXPECT_EQ(object_->hadUnderflow, mirror_.hadUnderflow);
        EXPECT_EQ(object_->noUnderflow, mirror_.noUnderflow);
        std::vector<std::string> expected;
        for (const std::string& call : mirror_.calls)
            expected.push_back(call == "stop" ? "AudioDeviceStop(2, procedure)"
                                              : "AudioDeviceRemoveIOProc(2, procedure)");
        EXPECT_EQ(spy::calls(), expected);

        EXPECT_EQ(object_->current.data != nullptr, mirror_.current.has_value());
        if (mirror_.current) expectSame(object_->current, *mirror_.current);
        ASSERT_EQ(object_->queueCount, static_cast<std::int32_t>(mirror_.waiting.size()));
        for (std::size_t i = 0; i < player::queueCapacity; ++i) {
            const player::PlayItem& slot = object_->queue[i];
            if (i < mirror_.waiting.size())
                expectSame(slot, mirror_.waiting[i]);
            else
                EXPECT_TRUE(!slot.data && slot.count == 0) << "slot " << i;
        }
    }

    static void expectSame(const player::PlayItem& item, const std::vector<float>& samples)
    {
        ASSERT_EQ(item.count, static_cast<std::int32_t>(samples.size()));
        EXPECT_EQ(std::memcmp(item.data, samples.data(), samples.size() * sizeof(float)), 0);
    }

    std::mt19937 random_; // its sequence is the same everywhere
    bool isStrange_;
    PlayerObject object_;
    reference::Player mirror_;

public:
    std::uint64_t heard_ = 0;
};

class PlayerReference : public test::FreshPlatform {
protected:
    static void run(std::uint32_t firstSeed, std::uint32_t scenarios, bool isStrange)
    {
        std::uint64_t heard = 0;
        const long blocksBefore = watched::liveBlocks();
        const int alarmsBefore = watched::alarms();
        for (std::uint32_t seed = firstSeed; seed < firstSeed + scenarios && !HasFailure(); ++seed) {
            SCOPED_TRACE(::testing::Message() << "seed " << seed);
            Scenario scenario(seed, isStrange);
            scenario.run(40);
            heard += scenario.heard_;
        }
        EXPECT_GT(heard, scenarios * 100u) << "the scenarios play something";
        EXPECT_EQ(watched::alarms(), alarmsBefore) << "something was allocated on the audio thread";
        EXPECT_EQ(watched::liveBlocks(), blocksBefore);
    }
};

TEST_F(PlayerReference, AgreesOverUsualRates) { run(1, 1500, false); }
TEST_F(PlayerReference, AgreesOverStrangeRatesAndSamples) { run(100001, 1500, true); }

// Long slices at every pair of rates, cut where a device would cut them.
TEST_F(PlayerReference, AgreesOverLongSlicesAtEveryPairOfRates)
{
    std::mt19937 random(7);
    for (const float sourceRate : usualRates)
        for (const float deviceRate : usualRates)
            for (const int channels : {1, 2}) {
                SCOPED_TRACE(::testing::Message() << sourceRate << " at " << deviceRate << ", " << channels);
                spy::reset();
                spy::platform().streamFormat.mSampleRate = deviceRate;
                const PlayerObject object;
                reference::Player mirror;
                object->sampleRate = mirror.sampleRate = sourceRate;
                object->numberOfChannels = mirror.numberOfChannels = channels;
                for (int i = 0; i < 4; ++i) {
                    std::vector<float> samples(random() % 500 * 2 + 2);
                    for (float& sample : samples)
                        sample = static_cast<float>(static_cast<std::int32_t>(random())) * 0x1p-31f;
                    ASSERT_TRUE(object.add(samples));
                    mirror.waiting.push_back(std::move(samples));
                }
                ASSERT_TRUE(object.start());
                mirror.start(deviceRate);
                for (int i = 0; i < 4 && mirror.isRunning; ++i) {
                    test::Slice real({test::shape(2, 512)});
                    test::cycle(object, real);
                    reference::Slice plain = {
                        {{2, std::vector<unsigned char>(4096, test::Slice::before), false}}, 1};
                    mirror.render(plain);
                    ASSERT_EQ(real.bytes(0), plain.buffers[0].bytes);
                    ASSERT_EQ(object->outputPosition, mirror.position);
                    ASSERT_EQ(object->isRunning, mirror.isRunning);
                }
            }
}

} // namespace
