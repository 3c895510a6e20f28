// The eight "Add…" and "Play…" methods: how many bytes they use, and when they start the player.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/device_spy.h"

#include <gtest/gtest.h>

namespace {

using test::Memory;
using test::PlayerObject;
using Bytes = std::vector<unsigned char>;

const struct Method {
    const char* name;
    bool isFloat, isStereo, plays;
} methods[] = {
    {"AddAudio", false, false, false},      {"AddFloatAudio", true, false, false},
    {"AddAudioStereo", false, true, false}, {"AddFloatAudioStereo", true, true, false},
    {"PlayAudio", false, false, true},      {"PlayFloatAudio", true, false, true},
    {"PlayAudioStereo", false, true, true}, {"PlayFloatAudioStereo", true, true, true},
};

struct Arguments {
    HostInteger offset = 0, count = 0, bitSize = 16;
    HostBoolean clearBuffers = 0;
};

HostBoolean call(const Method& method, const PlayerObject& object, Memory block1, Memory block2,
                 Arguments a = {})
{
    if (method.isFloat && method.isStereo)
        return test::members.call<HostBoolean>(method.name, object, block1, block2, a.offset, a.count,
                                               a.clearBuffers);
    if (method.isFloat)
        return test::members.call<HostBoolean>(method.name, object, block1, a.offset, a.count,
                                               a.clearBuffers);
    if (method.isStereo)
        return test::members.call<HostBoolean>(method.name, object, block1, block2, a.offset, a.count,
                                               a.bitSize, a.clearBuffers);
    return test::members.call<HostBoolean>(method.name, object, block1, a.offset, a.count, a.bitSize,
                                           a.clearBuffers);
}

class PlayerAddingMethods : public test::FreshPlatform {
protected:
    /// Return the number of samples that the method queues for `bytes` bytes of each block.
    static int samples(const Method& method, int bytes)
    {
        return bytes / (method.isFloat ? 4 : 2) * (method.isStereo ? 2 : 1);
    }
};

TEST_F(PlayerAddingMethods, ACountOfZeroMeansTheWholeFirstBlock)
{
    for (const Method& method : methods) {
        SCOPED_TRACE(method.name);
        startHost();
        const PlayerObject object;
        const test::Block first(Bytes(16, 0)), second(Bytes(32, 0));
        EXPECT_EQ(call(method, object, first, second), 1);
        EXPECT_EQ(object->queue[0].count, samples(method, 16));
        EXPECT_EQ(calls("memoryBlockGetSize"), 1) << "only the first block's size is read";
    }
}

TEST_F(PlayerAddingMethods, UseTheGivenCount)
{
    for (const Method& method : methods) {
        SCOPED_TRACE(method.name);
        startHost();
        const PlayerObject object;
        const test::Block block(Bytes(16, 0));
        EXPECT_EQ(call(method, object, block, block, {0, 8, 16, 0}), 1);
        EXPECT_EQ(object->queue[0].count, samples(method, 8));
        EXPECT_EQ(calls("memoryBlockGetSize"), 0);
    }
}

TEST_F(PlayerAddingMethods, AnOffsetDoesNotReduceTheDefaultCount)
{
    for (const Method& method : methods) {
        SCOPED_TRACE(method.name);
        const PlayerObject object;
        // Each block has 24 bytes but reports a size of 16.
        Bytes bytes(24, 0);
        bytes[8] = 1;
        test::Block first(bytes), second(bytes);
        host().claimSize(first, 16);
        EXPECT_EQ(call(method, object, first, second, {8, 0, 16, 0}), 1);
        EXPECT_EQ(object->queue[0].count, samples(method, 16));
        EXPECT_NE(object->queue[0].data[0], 0.0f) << "the samples begin at the offset";
    }
}

TEST_F(PlayerAddingMethods, WithoutTheSizeServiceAZeroCountStaysZero)
{
    for (const Method& method : methods) {
        SCOPED_TRACE(method.name);
        startHost({"memoryBlockGetSize"});
        const PlayerObject object;
        const test::Block block(Bytes(16, 0));
        EXPECT_EQ(call(method, object, block, block), 0);
        EXPECT_EQ(object->queueCount, 0);
        EXPECT_TRUE(host().raised().empty());
        EXPECT_EQ(call(method, object, block, block, {0, 8, 16, 0}), 1) << "an explicit count needs no size";
    }
}

TEST_F(PlayerAddingMethods, DoNotReadTheSizeOfANilBlock)
{
    for (const Method& method : methods) {
        SCOPED_TRACE(method.name);
        startHost();
        const PlayerObject object;
        const test::Block block(Bytes(16, 0));
        EXPECT_EQ(call(method, object, nullptr, block), 0);
        EXPECT_EQ(calls("memoryBlockGetSize"), 0);
        EXPECT_EQ(host().raised().size(), method.isFloat ? 0u : 1u);
        EXPECT_EQ(object->isRunning, 0);
        EXPECT_EQ(spy::calls(), std::vector<std::string>());
        if (!method.isStereo) continue;
        startHost();
        EXPECT_EQ(call(method, object, block, nullptr), 0);
        EXPECT_EQ(calls("memoryBlockGetSize"), 1);
        EXPECT_EQ(host().raised().size(), method.isFloat ? 0u : 1u);
    }
}

TEST_F(PlayerAddingMethods, ANilBlockMakesAddFloatAudioFalseAndAddAudioRaise)
{
    const PlayerObject object;
    EXPECT_EQ(call(methods[1], object, nullptr, nullptr), 0);
    EXPECT_TRUE(host().raised().empty());
    EXPECT_EQ(call(methods[0], object, nullptr, nullptr), 0);
    ASSERT_EQ(host().raised().size(), 1u);
    EXPECT_EQ(host().raised()[0].className, "NilObjectException");
    EXPECT_EQ(host().raised()[0].message, "Memoryblock is nil");
    EXPECT_EQ(heldValues(), fake::Notes());
}

TEST_F(PlayerAddingMethods, AnEmptyBlockIsRefused)
{
    for (const Method& method : methods) {
        SCOPED_TRACE(method.name);
        const PlayerObject object;
        const test::Block block{Bytes()};
        EXPECT_EQ(call(method, object, block, block), 0);
        EXPECT_EQ(object->queueCount, 0);
        EXPECT_TRUE(host().raised().empty());
    }
}

TEST_F(PlayerAddingMethods, ClearBuffersReplacesAllWaitingBuffers)
{
    for (const Method& method : methods)
        for (const HostBoolean clearBuffers : {0, 1}) {
            SCOPED_TRACE(::testing::Message() << method.name << ' ' << int{clearBuffers});
            const PlayerObject object;
            ASSERT_TRUE(object.add({1}));
            ASSERT_TRUE(object.add({2}));
            const test::Block block(Bytes(16, 0));
            EXPECT_EQ(call(method, object, block, block, {0, 0, 16, clearBuffers}), 1);
            EXPECT_EQ(object->queueCount, clearBuffers ? 1 : 3);
        }
}

TEST_F(PlayerAddingMethods, AddingMethodsStartNothing)
{
    for (const Method& method : methods) {
        if (method.plays) continue;
        SCOPED_TRACE(method.name);
        const PlayerObject object;
        const test::Block block(Bytes(16, 0));
        EXPECT_EQ(call(method, object, block, block), 1);
        EXPECT_EQ(object->isRunning, 0);
        EXPECT_EQ(spy::calls(), std::vector<std::string>());
    }
}

TEST_F(PlayerAddingMethods, PlayingMethodsQueueAndStart)
{
    for (const Method& method : methods) {
        if (!method.plays) continue;
        SCOPED_TRACE(method.name);
        device_spy::reset();
        const PlayerObject object;
        const test::Block block(Bytes(16, 0));
        EXPECT_EQ(call(method, object, block, block), 1);
        EXPECT_EQ(object->queueCount, 1);
        EXPECT_EQ(object->isRunning, 1);
        EXPECT_EQ(spy::count("AudioDeviceStart"), 1);
    }
}

TEST_F(PlayerAddingMethods, PlayingMethodsDoNotRestartARunningPlayer)
{
    for (const Method& method : methods) {
        if (!method.plays) continue;
        SCOPED_TRACE(method.name);
        device_spy::reset();
        const PlayerObject object;
        ASSERT_TRUE(object.add({1, 2, 3, 4}));
        ASSERT_TRUE(object.start());
        test::render(object, 2);
        ASSERT_EQ(object->outputPosition, 2.0);
        spy::forgetCalls();
        const test::Block block(Bytes(16, 0));
        EXPECT_EQ(call(method, object, block, block), 1);
        EXPECT_EQ(object->queueCount, 1);
        EXPECT_EQ(object->outputPosition, 2.0);
        EXPECT_EQ(spy::calls(), std::vector<std::string>());
    }
}

TEST_F(PlayerAddingMethods, PlayingMethodsKeepTheBufferWhenTheStartFails)
{
    for (const Method& method : methods)
        for (const char* const refusing : {"AudioHardwareGetProperty", "AudioDeviceGetProperty",
                                           "AudioDeviceAddIOProc", "AudioDeviceStart"}) {
            if (!method.plays) continue;
            SCOPED_TRACE(method.name);
            device_spy::reset();
            spy::answer(refusing).status = kAudioHardwareUnspecifiedError;
            const PlayerObject object;
            const test::Block block(Bytes(16, 0));
            EXPECT_EQ(call(method, object, block, block), 0);
            EXPECT_EQ(object->queueCount, 1);
        }
}

TEST_F(PlayerAddingMethods, PlayingMethodsDoNotStartWhenTheBufferIsRefused)
{
    for (const Method& method : methods) {
        if (!method.plays) continue;
        SCOPED_TRACE(method.name);
        const PlayerObject object;
        const test::Block block(Bytes(16, 0));
        EXPECT_EQ(call(method, object, block, block, {-1, 8, 16, 0}), 0);
        EXPECT_EQ(call(method, object, block, block, {0, -8, 16, 0}), 0);
        EXPECT_EQ(call(method, object, block, block, {0, 1, 16, 0}), 0);
        for (int i = 0; i < 200; ++i) ASSERT_TRUE(object.add({1}));
        EXPECT_EQ(call(method, object, block, block), 0) << "the queue is full";
        EXPECT_EQ(spy::calls(), std::vector<std::string>());
        EXPECT_EQ(object->isRunning, 0);
    }
}

TEST_F(PlayerAddingMethods, PlayingMethodsReturnFalseForARefusedBufferOnARunningPlayer)
{
    const PlayerObject object;
    ASSERT_TRUE(object.start());
    const test::Block block(Bytes(16, 0));
    for (const Method& method : methods)
        if (method.plays) {
            EXPECT_EQ(call(method, object, block, block, {-1, 8, 16, 0}), 0) << method.name;
        }
}

} // namespace
