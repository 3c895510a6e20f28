// Random scenarios, rendered by the player and by a second, plain implementation. After every slice the two
// implementations agree in every output byte, position, flag and waiting sample. Rendering allocates nothing.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/device_spy.h"
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
const std::vector<float> extremeRates = {0,       -0.0f,    -1,    -44100, infinity, -infinity, notANumber,
                                         largest, smallest, 1e12f, 1e-12f, 4.6e18f,  -8e18f,    441000};
const std::vector<float> extremeSamples = {infinity, -infinity, notANumber, largest,
                                           -largest, smallest,  -0.0f};
const std::vector<int> channelCounts = {1, 1, 1, 1, 2, 2, 2, 2, 0, 3, -1};

/// A player and its plain reference implementation, which get the same calls.
class Scenario {
public:
    Scenario(std::uint32_t seed, bool hasExtremes) : random_(seed), hasExtremes_(hasExtremes)
    {
        setRate();
        setChannels();
        object_->noUnderflow = reference_.noUnderflow = chance(2);
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

    float rate() { return hasExtremes_ && chance(2) ? pick(extremeRates) : pick(usualRates); }
    void setRate()
    {
        reference_.sampleRate = rate();
        test::members.set<float>(object_, "SampleRate", reference_.sampleRate);
    }
    void setChannels()
    {
        reference_.numberOfChannels = pick(channelCounts);
        test::members.set<HostInteger>(object_, "NumberOfChannels", reference_.numberOfChannels);
    }

    void add()
    {
        const int longest[] = {1, 3, 8, 40, 300};
        std::vector<float> samples(static_cast<std::size_t>(1 + below(longest[below(5)])));
        if (reference_.numberOfChannels == 2 && !chance(8) && samples.size() % 2) samples.push_back(0);
        for (float& sample : samples) {
            sample = static_cast<float>(static_cast<std::int32_t>(random_())) * 0x1p-31f;
            if (hasExtremes_ && chance(20)) sample = pick(extremeSamples);
        }
        const bool clears = chance(20);
        ASSERT_TRUE(object_.add(samples, clears));
        if (clears) reference_.waiting.clear();
        reference_.waiting.push_back(std::move(samples));
    }

    void start()
    {
        device_spy::reset();
        spy::name(reinterpret_cast<const void*>(object_->ioProc), "procedure");
        const float deviceRate = rate();
        device_spy::platform().streamFormat.mSampleRate = deviceRate;
        ASSERT_TRUE(object_.start());
        spy::forgetCalls();
        reference_.start(deviceRate);
        reference_.calls.clear();
    }

    /// Make random calls of a host program, as between two slices.
    void act()
    {
        if (!reference_.isRunning) start();
        while (chance(2) && reference_.waiting.size() < 20) add();
        if (chance(10)) setRate();
        if (chance(20)) setChannels();
        if (chance(10)) object_->noUnderflow = reference_.noUnderflow = !reference_.noUnderflow;
        if (chance(30)) object_->stopRequested = reference_.stopRequested = true;
        if (chance(10)) object_->hadUnderflow = reference_.hadUnderflow = false;
        if (!reference_.isRunning || !reference_.stopRequested) return;
        // Withdraw the stop request in half of the cases.
        if (chance(2)) object_->stopRequested = reference_.stopRequested = false;
    }

    std::vector<test::BufferLayout> layouts()
    {
        const std::uint32_t usual[] = {1, 2, 2, 2, 6, 3, 4, 8};
        const auto frames = static_cast<std::uint32_t>(below(4) ? below(33) : below(3));
        std::vector<test::BufferLayout> list = {test::layout(usual[below(8)], frames)};
        if (chance(30)) list[0].channels = 0;
        if (chance(20)) list[0].bytes += static_cast<std::uint32_t>(below(4));
        for (int more = chance(3) ? below(3) : 0; more > 0; --more) {
            test::BufferLayout other = test::layout(static_cast<std::uint32_t>(below(10)), frames);
            if (chance(3)) other.bytes = static_cast<std::uint32_t>(below(140));
            list.push_back(other);
        }
        for (test::BufferLayout& each : list) each.isAbsent = chance(15);
        return list;
    }

    void render()
    {
        const std::vector<test::BufferLayout> list = layouts();
        const int inUse =
            chance(25) ? below(static_cast<int>(list.size()) + 1) : static_cast<int>(list.size());
        test::Slice real(list, inUse);
        reference::Slice plain = {{}, static_cast<std::size_t>(inUse)};
        for (const test::BufferLayout& each : list)
            plain.buffers.push_back(
                {each.channels, std::vector<unsigned char>(each.bytes, test::Slice::before), each.isAbsent});

        OSStatus status;
        {
            const c_library_spy::NoAllocation renderThread;
            status = test::runCycle(object_, real);
        }
        reference_.render(plain);

        EXPECT_EQ(status, 0);
        EXPECT_TRUE(real.isIntact());
        for (std::size_t b = 0; b < list.size(); ++b) expectEqual(real.bytes(b), plain.buffers[b].bytes);
        framesRendered_ += list[0].channels ? list[0].bytes / 4 / list[0].channels : 0;
    }

    /// Expect that corresponding floats of the two outputs have equal bits or are both not-a-number.
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
        EXPECT_TRUE(isSame(object_->outputPosition, reference_.position))
            << object_->outputPosition << ", not " << reference_.position;
        EXPECT_TRUE(isSame(object_->outputPositionRelative, reference_.relativePosition))
            << object_->outputPositionRelative << ", not " << reference_.relativePosition;
        EXPECT_EQ(object_->baseSampleIndex, reference_.base);
        EXPECT_EQ(object_->isRunning, reference_.isRunning);
        EXPECT_EQ(object_->stopRequested, reference_.stopRequested);
        EXPECT_EQ(object_->hadUnderflow, reference_.hadUnderflow);
        EXPECT_EQ(object_->noUnderflow, reference_.noUnderflow);
        std::vector<std::string> expected;
        for (const std::string& call : reference_.calls)
            expected.push_back(call == "stop" ? "AudioDeviceStop(2, procedure)"
                                              : "AudioDeviceRemoveIOProc(2, procedure)");
        EXPECT_EQ(spy::calls(), expected);

        EXPECT_EQ(object_->current.data != nullptr, reference_.current.has_value());
        if (reference_.current) expectSame(object_->current, *reference_.current);
        ASSERT_EQ(object_->queueCount, static_cast<std::int32_t>(reference_.waiting.size()));
        for (std::size_t i = 0; i < player::queueCapacity; ++i) {
            const player::PlayItem& slot = object_->queue[i];
            if (i < reference_.waiting.size())
                expectSame(slot, reference_.waiting[i]);
            else
                EXPECT_TRUE(!slot.data && slot.count == 0) << "slot " << i;
        }
    }

    static void expectSame(const player::PlayItem& item, const std::vector<float>& samples)
    {
        ASSERT_EQ(item.count, static_cast<std::int32_t>(samples.size()));
        EXPECT_EQ(std::memcmp(item.data, samples.data(), samples.size() * sizeof(float)), 0);
    }

    std::mt19937 random_; // generator whose sequence the C++ standard defines
    bool hasExtremes_;
    PlayerObject object_;
    reference::Player reference_;

public:
    std::uint64_t framesRendered_ = 0;
};

class PlayerReference : public test::FreshPlatform {
protected:
    static void run(std::uint32_t firstSeed, std::uint32_t scenarios, bool hasExtremes)
    {
        std::uint64_t framesRendered = 0;
        const long blocksBefore = c_library_spy::liveBlocks();
        const int alarmsBefore = c_library_spy::alarms();
        for (std::uint32_t seed = firstSeed; seed < firstSeed + scenarios && !HasFailure(); ++seed) {
            SCOPED_TRACE(::testing::Message() << "seed " << seed);
            Scenario scenario(seed, hasExtremes);
            scenario.run(40);
            framesRendered += scenario.framesRendered_;
        }
        EXPECT_GT(framesRendered, scenarios * 100u) << "the scenarios render audio";
        EXPECT_EQ(c_library_spy::alarms(), alarmsBefore) << "the render thread allocated memory";
        EXPECT_EQ(c_library_spy::liveBlocks(), blocksBefore);
    }
};

TEST_F(PlayerReference, AgreesAtUsualRates) { run(1, 1500, false); }
TEST_F(PlayerReference, AgreesAtExtremeRatesAndSamples) { run(100001, 1500, true); }

TEST_F(PlayerReference, AgreesInLongSlicesAtEveryPairOfRates)
{
    std::mt19937 random(7);
    for (const float sourceRate : usualRates)
        for (const float deviceRate : usualRates)
            for (const int channels : {1, 2}) {
                SCOPED_TRACE(::testing::Message() << sourceRate << " at " << deviceRate << ", " << channels);
                device_spy::reset();
                device_spy::platform().streamFormat.mSampleRate = deviceRate;
                const PlayerObject object;
                reference::Player second;
                object->sampleRate = second.sampleRate = sourceRate;
                object->numberOfChannels = second.numberOfChannels = channels;
                for (int i = 0; i < 4; ++i) {
                    std::vector<float> samples(random() % 500 * 2 + 2);
                    for (float& sample : samples)
                        sample = static_cast<float>(static_cast<std::int32_t>(random())) * 0x1p-31f;
                    ASSERT_TRUE(object.add(samples));
                    second.waiting.push_back(std::move(samples));
                }
                ASSERT_TRUE(object.start());
                second.start(deviceRate);
                for (int i = 0; i < 4 && second.isRunning; ++i) {
                    test::Slice real({test::layout(2, 512)});
                    test::runCycle(object, real);
                    reference::Slice plain = {
                        {{2, std::vector<unsigned char>(4096, test::Slice::before), false}}, 1};
                    second.render(plain);
                    ASSERT_EQ(real.bytes(0), plain.buffers[0].bytes);
                    ASSERT_EQ(object->outputPosition, second.position);
                    ASSERT_EQ(object->isRunning, second.isRunning);
                }
            }
}

} // namespace
