// Tests the buffer list of a render callback. A list with a single buffer has memory for a second, empty
// buffer record, because some callbacks silence two buffers whatever the buffer count is.
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

using namespace test;

/// Counts calls with a buffer list of one buffer whose second buffer record is not empty.
struct PairCallback {
    int calls = 0;
    int faults = 0;

    static OSStatus checkSecond(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32,
                                UInt32, AudioBufferList* list)
    {
        auto& self = *static_cast<PairCallback*>(context);
        ++self.calls;
        const AudioBuffer& second = list->mBuffers[1];
        if (list->mNumberBuffers != 1 || second.mNumberChannels || second.mDataByteSize || second.mData)
            ++self.faults;
        std::memset(list->mBuffers[0].mData, 0, list->mBuffers[0].mDataByteSize);
        return noErr;
    }
};

/// Allocate and free memory blocks filled with bytes other than zero, so that a buffer record past the end of
/// a list's memory does not look empty.
void fillFreedBlocks()
{
    constexpr std::size_t bytes = sizeof(AudioBufferList) + sizeof(AudioBuffer);
    std::vector<volatile unsigned char*> blocks(1000);
    for (auto& block : blocks) {
        block = new unsigned char[bytes];
        for (std::size_t i = 0; i < bytes; ++i) block[i] = 0xEE;
    }
    for (const auto block : blocks) delete[] block;
}

const struct {
    AudioStreamBasicDescription format;
    const char* name;
} formats[] = {
    {canonical(44100, 1), "mono"},
    {interleaved(44100, 2), "interleaved stereo"},
};

TEST(CallbackList, HasEmptySecondRecordInDeviceOutputs)
{
    SteppedDevice device(44100, 2, 512);
    device.makeDefault();
    device.makeDefault(kAudioHardwarePropertyDefaultSystemOutputDevice);
    for (const OSType subType : {'ahal', 'def ', 'sys '})
        for (const auto& fact : formats) {
            SCOPED_TRACE(testing::Message() << std::hex << subType << ", " << fact.name);
            PairCallback callback;
            fillFreedBlocks();
            const Unit unit(subType);
            if (subType == 'ahal') {
                ASSERT_EQ(unit.set<AudioDeviceID>(kAudioOutputUnitProperty_CurrentDevice, 0, 0, device.id()),
                          noErr);
            }
            ASSERT_EQ(unit.setFormat(kAudioUnitScope_Input, fact.format), noErr);
            // Slice limit that requires several callback calls per I/O cycle.
            ASSERT_EQ(unit.setLimit(200), noErr);
            ASSERT_EQ(unit.setCallback(PairCallback::checkSecond, &callback), noErr);
            ASSERT_EQ(AudioUnitInitialize(unit), noErr);
            ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
            EXPECT_EQ(device.step(1024), 1024u);
            ASSERT_EQ(AudioOutputUnitStop(unit), noErr);
            EXPECT_GT(callback.calls, 2);
            EXPECT_EQ(callback.faults, 0);
        }
}

TEST(CallbackList, HasEmptySecondRecordInPulledUnits)
{
    const struct {
        OSType type, subType;
    } units[] = {{'auou', 'genr'}, {'aufc', 'conv'}};
    for (const auto& which : units)
        for (const auto& fact : formats) {
            SCOPED_TRACE(testing::Message() << std::hex << which.subType << ", " << fact.name);
            PairCallback callback;
            fillFreedBlocks();
            const Unit unit(which.subType, which.type);
            ASSERT_EQ(unit.setFormat(kAudioUnitScope_Input, fact.format), noErr);
            ASSERT_EQ(unit.setFormat(kAudioUnitScope_Output, fact.format), noErr);
            ASSERT_EQ(unit.setCallback(PairCallback::checkSecond, &callback), noErr);
            ASSERT_EQ(AudioUnitInitialize(unit), noErr);
            List list(fact.format, 256);
            AudioUnitRenderActionFlags flags = 0;
            const AudioTimeStamp time = sampleTime(0);
            EXPECT_EQ(AudioUnitRender(unit, &flags, &time, 0, 256, list.get()), noErr);
            EXPECT_EQ(callback.calls, 1);
            EXPECT_EQ(callback.faults, 0);
        }
}

} // namespace
