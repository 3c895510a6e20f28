// The player's class data: field offsets, initial values, and the properties.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/device_spy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>

namespace {

using player::AudioPlayerData;
using test::PlayerObject;

class PlayerState : public test::FreshPlatform {};

TEST_F(PlayerState, Has1664BytesWithItsFieldsInOrder)
{
    if (sizeof(void*) != 4) GTEST_SKIP() << "the layout is that of the 32-bit target";
    const struct {
        const char* field;
        std::size_t offset, expected;
    } fields[] = {
        {"deviceSampleRate", offsetof(AudioPlayerData, deviceSampleRate), 0},
        {"sampleRate", offsetof(AudioPlayerData, sampleRate), 4},
        {"numberOfChannels", offsetof(AudioPlayerData, numberOfChannels), 8},
        {"isRunning", offsetof(AudioPlayerData, isRunning), 12},
        {"stopRequested", offsetof(AudioPlayerData, stopRequested), 13},
        {"noUnderflow", offsetof(AudioPlayerData, noUnderflow), 14},
        {"hadUnderflow", offsetof(AudioPlayerData, hadUnderflow), 15},
        {"outputDeviceID", offsetof(AudioPlayerData, outputDeviceID), 16},
        {"baseSampleIndex", offsetof(AudioPlayerData, baseSampleIndex), 24},
        {"outputPositionRelative", offsetof(AudioPlayerData, outputPositionRelative), 32},
        {"outputPosition", offsetof(AudioPlayerData, outputPosition), 40},
        {"current", offsetof(AudioPlayerData, current), 48},
        {"queue", offsetof(AudioPlayerData, queue), 56},
        {"queueCount", offsetof(AudioPlayerData, queueCount), 56 + 200 * 8},
        {"ioProc", offsetof(AudioPlayerData, ioProc), 1660},
    };
    for (const auto& field : fields) EXPECT_EQ(field.offset, field.expected) << field.field;
    EXPECT_EQ(sizeof(player::PlayItem), 8u);
    EXPECT_EQ(offsetof(player::PlayItem, data), 4u);
    EXPECT_EQ(sizeof(AudioPlayerData), 1664u);
}

TEST_F(PlayerState, Aligns64BitFields)
{
    EXPECT_EQ(offsetof(AudioPlayerData, baseSampleIndex) % 8, 0u);
    EXPECT_EQ(offsetof(AudioPlayerData, outputPositionRelative) % 8, 0u);
    EXPECT_EQ(offsetof(AudioPlayerData, outputPosition) % 8, 0u);
}

// The memory is filled with 0xFF before the construction.
TEST_F(PlayerState, TheConstructorSetsEveryField)
{
    const PlayerObject object;
    EXPECT_EQ(object->deviceSampleRate, 44100.0f);
    EXPECT_EQ(object->sampleRate, 44100.0f);
    EXPECT_EQ(object->numberOfChannels, 1);
    EXPECT_EQ(object->isRunning, 0);
    EXPECT_EQ(object->stopRequested, 0);
    EXPECT_EQ(object->noUnderflow, 0);
    EXPECT_EQ(object->hadUnderflow, 0);
    EXPECT_EQ(object->outputDeviceID, 0u);
    EXPECT_EQ(object->baseSampleIndex, 0);
    EXPECT_EQ(object->outputPositionRelative, 0.0);
    EXPECT_EQ(object->outputPosition, 0.0);
    EXPECT_EQ(object->current.count, 0);
    EXPECT_EQ(object->current.data, nullptr);
    for (const player::PlayItem& slot : object->queue) {
        EXPECT_EQ(slot.count, 0);
        EXPECT_EQ(slot.data, nullptr);
    }
    EXPECT_EQ(object->queueCount, 0);
    EXPECT_NE(object->ioProc, nullptr);
}

TEST_F(PlayerState, TheConstructorCallsNoPlatformFunctionAndStaysInsideTheRecord)
{
    const PlayerObject object;
    EXPECT_EQ(spy::calls(), std::vector<std::string>());
    const auto* end = reinterpret_cast<const unsigned char*>(&object.data() + 1);
    const auto* begin = reinterpret_cast<const unsigned char*>(&object.data());
    for (int i = 0; i < 64; ++i) EXPECT_EQ(end[i], 0xFF) << i;
    for (int i = 1; i <= 48; ++i) EXPECT_EQ(begin[-i], 0xFF) << i;
}

TEST_F(PlayerState, ANewObjectReportsItsDefaults)
{
    const PlayerObject object;
    EXPECT_EQ(test::members.get<float>(object, "SampleRate"), 44100.0f);
    EXPECT_EQ(test::members.get<HostInteger>(object, "NumberOfChannels"), 1);
    EXPECT_EQ(test::members.get<HostInteger>(object, "OutputDeviceID"), 0);
    EXPECT_EQ(test::members.get<HostBoolean>(object, "IsRunning"), 0);
    EXPECT_EQ(test::members.get<HostBoolean>(object, "NoUnderflow"), 0);
    EXPECT_EQ(test::members.get<HostBoolean>(object, "HadUnderflow"), 0);
    EXPECT_EQ(test::members.get<double>(object, "OutputPosition"), 0.0);
    EXPECT_EQ(test::members.get<double>(object, "OutputPositionRelative"), 0.0);
    EXPECT_EQ(test::members.call<HostInteger>("FreeSpace", object), 200);
    EXPECT_EQ(test::members.call<HostBoolean>("HasFreeSpace", object), 1);
}

// The offset of the class data is not constant: the host writes the offset into the class definition.
TEST_F(PlayerState, GettersReadTheirFieldAtAnyOffset)
{
    for (const Word offset : {Word{0}, Word{16}, Word{48}, Word{4096}}) {
        SCOPED_TRACE(offset);
        const PlayerObject object(offset);
        object->outputPositionRelative = 1.25;
        object->sampleRate = 8000.5f;
        object->numberOfChannels = -3;
        object->outputDeviceID = 0x12345678;
        object->isRunning = 1;
        object->outputPosition = 1e15 + 0.5;
        EXPECT_EQ(test::members.get<double>(object, "OutputPositionRelative"), 1.25);
        EXPECT_EQ(test::members.get<float>(object, "SampleRate"), 8000.5f);
        EXPECT_EQ(test::members.get<HostInteger>(object, "NumberOfChannels"), -3);
        EXPECT_EQ(test::members.get<HostInteger>(object, "OutputDeviceID"), 0x12345678);
        EXPECT_EQ(test::members.get<HostBoolean>(object, "IsRunning"), 1);
        EXPECT_EQ(test::members.get<double>(object, "OutputPosition"), 1e15 + 0.5);

        EXPECT_EQ(test::members.get<HostBoolean>(object, "NoUnderflow"), 0);
        object->noUnderflow = 1;
        EXPECT_EQ(test::members.get<HostBoolean>(object, "NoUnderflow"), 1);
        EXPECT_EQ(test::members.get<HostBoolean>(object, "HadUnderflow"), 0);
        object->hadUnderflow = 1;
        EXPECT_EQ(test::members.get<HostBoolean>(object, "HadUnderflow"), 1);
    }
}

TEST_F(PlayerState, SettersStoreEveryValue)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const PlayerObject object(32);
    for (const float rate : {44100.0f, 1.0f, 0.999f, 0.0f, -1.0f, infinity, 1e-40f}) {
        test::members.set<float>(object, "SampleRate", rate);
        EXPECT_EQ(object->sampleRate, rate);
    }
    test::members.set<float>(object, "SampleRate", std::nanf(""));
    EXPECT_TRUE(std::isnan(object->sampleRate));

    for (const HostInteger channels : {2, 1, 0, 3, -1, INT32_MAX, INT32_MIN}) {
        test::members.set<HostInteger>(object, "NumberOfChannels", channels);
        EXPECT_EQ(object->numberOfChannels, channels);
    }
    for (const HostInteger device : {0, 7, INT32_MAX, -1}) {
        test::members.set<HostInteger>(object, "OutputDeviceID", device);
        EXPECT_EQ(object->outputDeviceID, static_cast<std::uint32_t>(device));
    }
    for (const HostBoolean flag : {1, 0}) {
        test::members.set<HostBoolean>(object, "NoUnderflow", flag);
        EXPECT_EQ(object->noUnderflow, flag);
        test::members.set<HostBoolean>(object, "HadUnderflow", flag);
        EXPECT_EQ(object->hadUnderflow, flag);
    }
    EXPECT_EQ(spy::calls(), std::vector<std::string>());
}

TEST_F(PlayerState, ADeviceIDAboveTheSignedRangeKeepsItsValueOnThe32BitTarget)
{
    if (sizeof(void*) != 4) GTEST_SKIP() << "the host's Integer is wider here";
    const PlayerObject object;
    test::members.set<HostInteger>(object, "OutputDeviceID", -2);
    EXPECT_EQ(test::members.get<HostInteger>(object, "OutputDeviceID"), -2);
}

TEST_F(PlayerState, ASetterChangesNoOtherField)
{
    const PlayerObject object, untouched;
    test::members.set<HostBoolean>(object, "NoUnderflow", 1);
    EXPECT_EQ(object->isRunning, 0);
    EXPECT_EQ(object->stopRequested, 0);
    EXPECT_EQ(object->hadUnderflow, 0);
    test::members.set<HostBoolean>(object, "HadUnderflow", 1);
    test::members.set<HostBoolean>(object, "NoUnderflow", 0);
    EXPECT_EQ(object->hadUnderflow, 1);
    test::members.set<float>(object, "SampleRate", 1.0f);
    EXPECT_EQ(object->deviceSampleRate, 44100.0f);
    EXPECT_EQ(untouched->sampleRate, 44100.0f);
    EXPECT_EQ(untouched->hadUnderflow, 0);
}

} // namespace
