// Misuse of a buffered player by a host program: the player refuses the calls, leaks nothing, and overruns no
// memory.
#include "tests/endtoend/loaded_host.h"
#include "tests/endtoend/reference_output.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>

namespace {

using namespace endtoend;

using BadInput = LoadedHostTest;
using host::MemoryBlock;
using host::Object;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

/// Return whether two numbers are equal or both NaN.
bool isSame(float left, float right) { return left == right || (std::isnan(left) && std::isnan(right)); }

TEST_F(BadInput, AddMethodsRefuseInvalidOffsetsCountsAndBits)
{
    Object player = loaded.host.create(playerClass);
    const auto block = MemoryBlock::ofSize(64);
    const auto none = MemoryBlock::ofSize(0);
    constexpr int least = std::numeric_limits<std::int32_t>::min();
    constexpr int most = std::numeric_limits<std::int32_t>::max();

    const struct {
        MemoryBlock block;
        int offset, count, bits;
        bool isIntegerAdded;
        std::optional<bool>
            isFloatAdded; ///< no value: the call would read past the block, so the test omits it
        const char* why;
    } facts[] = {
        // clang-format off
        {block, 0,     64,    16, true,  true,  "the whole block"},
        {block, 0,     0,     16, true,  true,  "count 0 means the whole block"},
        {block, 60,    4,     16, true,  true,  "the last four bytes"},
        {block, -1,    8,     16, false, false, "a negative offset"},
        {block, least, 8,     16, false, false, "the most negative value"},
        {block, 0,     -1,    16, false, false, "a negative count"},
        {block, 0,     least, 16, false, false, "the most negative value"},
        {block, 0,     1,     16, false, false, "less than a sample"},
        {block, 0,     3,     16, true,  false, "3 bytes: one PCM16 sample, no float"},
        {block, 0,     5,     16, true,  true,  "incomplete samples are ignored"},
        {block, 0,     7,     24, true,  true,  "two PCM24 samples"},
        {block, 0,     2,     24, false, false, "less than a sample"},
        {block, 0,     6,     23, false, true,  "23 bits are refused on purpose"},
        {block, 0,     8,     0,  false, true,  "an unknown sample size"},
        {block, 0,     8,     -16, false, true, "an unknown sample size"},
        {block, 0,     8,     12, false, true,  "an unknown sample size"},
        {block, 0,     8,     33, false, true,  "an unknown sample size"},
        {block, 0,     8,     most, false, true, "an unknown sample size"},
        {none,  0,     0,     16, false, false, "an empty block"},
        {block, most,  8,     12, false, std::nullopt, "an offset past the block, unknown sample size"},
        {block, most,  8,     23, false, std::nullopt, "an unknown sample size"},
        {block, most,  1,     16, false, false, "less than a sample"},
        {block, most,  3,     32, false, false, "less than a sample of either kind"},
        {none,  most,  8,     16, false, false, "an empty block"},
        // clang-format on
    };
    std::int64_t queued = 0;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const auto expectAdded = [&](bool isAdded, const auto& call) {
            try {
                EXPECT_EQ(call().boolean(), isAdded);
            } catch (const host::HostException& error) {
                EXPECT_FALSE(isAdded) << error.what();
                EXPECT_FALSE(fact.block.data()) << "only empty blocks raise";
            }
            queued += isAdded;
        };
        const MemoryBlock& b = fact.block;
        expectAdded(fact.isIntegerAdded,
                    [&] { return player.call("AddAudio", b, fact.offset, fact.count, fact.bits); });
        expectAdded(fact.isIntegerAdded,
                    [&] { return player.call("AddAudioStereo", b, b, fact.offset, fact.count, fact.bits); });
        if (fact.isFloatAdded)
            expectAdded(*fact.isFloatAdded,
                        [&] { return player.call("AddFloatAudio", b, fact.offset, fact.count); });
        if (fact.isFloatAdded)
            expectAdded(*fact.isFloatAdded,
                        [&] { return player.call("AddFloatAudioStereo", b, b, fact.offset, fact.count); });
        EXPECT_EQ(player.call("FreeSpace").integer(), 200 - queued);
    }
    player.call("Close");
    EXPECT_EQ(player.call("FreeSpace").integer(), 200);
}

TEST_F(BadInput, NilBlocksRaiseOrReturnFalseAndStartNothing)
{
    Object player = loaded.host.create(playerClass);
    const auto block = MemoryBlock::ofSize(64);
    const auto expectRaised = [&](const auto& call) {
        try {
            call();
            ADD_FAILURE() << "no exception";
        } catch (const host::HostException& error) {
            EXPECT_EQ(error.className(), "NilObjectException");
            EXPECT_EQ(error.message(), "Memoryblock is nil");
        }
    };
    for (const char* method : {"AddAudio", "PlayAudio"}) {
        expectRaised([&] { player.call(method, nullptr); });
        expectRaised([&] { player.call(method, nullptr, -1, -1, 23); });
    }
    for (const char* method : {"AddAudioStereo", "PlayAudioStereo"}) {
        expectRaised([&] { player.call(method, nullptr, block); });
        expectRaised([&] { player.call(method, block, nullptr); });
        expectRaised([&] { player.call(method, nullptr, nullptr); });
    }
    for (const char* method : {"AddFloatAudio", "PlayFloatAudio"})
        EXPECT_FALSE(player.call(method, nullptr).boolean());
    for (const char* method : {"AddFloatAudioStereo", "PlayFloatAudioStereo"}) {
        EXPECT_FALSE(player.call(method, nullptr, block).boolean());
        EXPECT_FALSE(player.call(method, block, nullptr).boolean());
    }
    EXPECT_FALSE(player.get("IsRunning").boolean());
    EXPECT_EQ(player.call("FreeSpace").integer(), 200);
}

TEST_F(BadInput, PcmNeedsAValidRateAndChannelCountAndFloatDoesNot)
{
    const auto block = MemoryBlock::ofSize(64);
    const struct {
        float rate;
        int channels;
        bool isTaken; ///< PCM blocks
    } facts[] = {
        {44100, 1, true},      {44100, 2, true},   {44100, 0, false},       {44100, 3, false},
        {44100, -1, false},    {1.0f, 1, true},    {0.999f, 1, false},      {0, 1, false},
        {-0.0f, 1, false},     {-1, 1, false},     {nan, 1, false},         {infinity, 1, true},
        {-infinity, 1, false}, {-44100, 2, false}, {44100, 1 << 30, false},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.rate) + " Hz, " + std::to_string(fact.channels));
        Object player = loaded.host.create(playerClass);
        player.set("SampleRate", fact.rate);
        player.set("NumberOfChannels", fact.channels);
        EXPECT_EQ(player.get("NumberOfChannels").integer(), fact.channels);
        EXPECT_EQ(player.call("AddAudio", block).boolean(), fact.isTaken);
        EXPECT_EQ(player.call("AddAudioStereo", block, block).boolean(), fact.isTaken);
        EXPECT_TRUE(player.call("AddFloatAudio", block).boolean());
        EXPECT_TRUE(player.call("AddFloatAudioStereo", block, block).boolean());
        if (fact.isTaken) continue;
        constexpr int most = std::numeric_limits<std::int32_t>::max();
        EXPECT_FALSE(player.call("AddAudio", block, most, 8).boolean()) << "an offset past the block";
        EXPECT_FALSE(player.call("AddAudioStereo", block, block, most, 8).boolean());
    }
}

// The player accepts invalid rates and calculates with them. A call of Stop still stops it.
TEST_F(BadInput, InvalidRatesPlayAsComputedAndStopWithoutHanging)
{
    SteppedDevice device(44100, 2, 64);
    std::vector<float> samples(1000);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = float(i + 1) / 1024;
    const auto block = MemoryBlock::copyOf(samples);
    for (float rate : {0.0f, -0.0f, -1.0f, -44100.0f, nan, infinity, -infinity, 1e30f, 1e-30f,
                       std::numeric_limits<float>::max(), std::numeric_limits<float>::denorm_min()})
        for (int channels : {1, 2, 0, 3, -1}) {
            SCOPED_TRACE(std::to_string(rate) + " Hz, " + std::to_string(channels));
            device.clearOutput();
            Object player = loaded.host.create(playerClass);
            player.set("SampleRate", rate);
            player.set("NumberOfChannels", channels);
            player.set("OutputDeviceID", std::int64_t(device.id()));
            ReferenceOutput reference(channels, rate, 44100);
            for (int i = 0; i < 5; ++i) {
                EXPECT_TRUE(player.call("AddFloatAudio", block).boolean());
                reference.add(samples);
            }
            ASSERT_TRUE(player.call("Start").boolean());
            const uint32_t frames = device.step(64 * 50);
            for (uint32_t i = 0; i < frames / 64; ++i) reference.play(64, 2);
            EXPECT_EQ(player.get("IsRunning").boolean(), reference.isRunning());
            const double position = player.get("OutputPosition").number();
            EXPECT_TRUE(position == reference.position() ||
                        (std::isnan(position) && std::isnan(reference.position())))
                << position << ", " << reference.position();
            ASSERT_EQ(device.output().size(), reference.played().size());
            for (std::size_t i = 0; i < reference.played().size(); ++i)
                ASSERT_TRUE(isSame(device.output()[i], reference.played()[i]))
                    << "sample " << i << ": " << device.output()[i] << ", " << reference.played()[i];
            player.call("Stop");
            EXPECT_FALSE(player.get("IsRunning").boolean());
            EXPECT_EQ(player.call("FreeSpace").integer(), 200);
        }
}

TEST_F(BadInput, FullQueueDropsTheNewBlockAndLeaksNothing)
{
    Object player = loaded.host.create(playerClass);
    const auto block = MemoryBlock::ofSize(4096);
    for (int i = 0; i < 200; ++i) ASSERT_TRUE(player.call("AddFloatAudio", block).boolean());
    EXPECT_FALSE(player.call("HasFreeSpace").boolean());
    for (const char* method : {"AddFloatAudio", "AddAudio", "PlayFloatAudio", "PlayAudio"})
        EXPECT_FALSE(player.call(method, block).boolean()) << method;
    EXPECT_FALSE(player.get("IsRunning").boolean()) << "a refused block starts nothing";
    EXPECT_EQ(player.call("FreeSpace").integer(), 0);
    EXPECT_TRUE(player.call("AddFloatAudio", block, 0, 0, true).boolean());
    EXPECT_EQ(player.call("FreeSpace").integer(), 199);
}

TEST_F(BadInput, CloseAndStopTwiceHaveNoEffect)
{
    Object player = loaded.host.create(playerClass);
    for (const char* method : {"Stop", "Close", "Close", "Stop"}) player.call(method);
    EXPECT_TRUE(player.call("AddFloatAudio", MemoryBlock::ofSize(64)).boolean());
    player.call("Close");
}

} // namespace
