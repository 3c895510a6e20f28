// Field offsets that compiled programs depend on.
#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>
#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstddef>

namespace {

TEST(Offsets, MatchThe32BitTarget)
{
    if (sizeof(void*) != 4) GTEST_SKIP() << "offsets are those of the 32-bit target";
    const struct {
        const char* field;
        std::size_t offset, expected;
    } facts[] = {
#define FIELD(type, field, expected) {#type "." #field, offsetof(type, field), expected}
        FIELD(AudioObjectPropertyAddress, mSelector, 0),
        FIELD(AudioObjectPropertyAddress, mScope, 4),
        FIELD(AudioObjectPropertyAddress, mElement, 8),
        FIELD(AudioValueRange, mMinimum, 0),
        FIELD(AudioValueRange, mMaximum, 8),
        FIELD(AudioValueTranslation, mInputData, 0),
        FIELD(AudioValueTranslation, mInputDataSize, 4),
        FIELD(AudioValueTranslation, mOutputData, 8),
        FIELD(AudioValueTranslation, mOutputDataSize, 12),
        FIELD(AudioBuffer, mNumberChannels, 0),
        FIELD(AudioBuffer, mDataByteSize, 4),
        FIELD(AudioBuffer, mData, 8),
        FIELD(AudioBufferList, mNumberBuffers, 0),
        FIELD(AudioBufferList, mBuffers, 4),
        FIELD(AudioStreamBasicDescription, mSampleRate, 0),
        FIELD(AudioStreamBasicDescription, mFormatID, 8),
        FIELD(AudioStreamBasicDescription, mFormatFlags, 12),
        FIELD(AudioStreamBasicDescription, mBytesPerPacket, 16),
        FIELD(AudioStreamBasicDescription, mFramesPerPacket, 20),
        FIELD(AudioStreamBasicDescription, mBytesPerFrame, 24),
        FIELD(AudioStreamBasicDescription, mChannelsPerFrame, 28),
        FIELD(AudioStreamBasicDescription, mBitsPerChannel, 32),
        FIELD(AudioStreamBasicDescription, mReserved, 36),
        FIELD(AudioStreamPacketDescription, mStartOffset, 0),
        FIELD(AudioStreamPacketDescription, mVariableFramesInPacket, 8),
        FIELD(AudioStreamPacketDescription, mDataByteSize, 12),
        FIELD(AudioStreamRangedDescription, mFormat, 0),
        FIELD(AudioStreamRangedDescription, mSampleRateRange, 40),
        FIELD(SMPTETime, mSubframes, 0),
        FIELD(SMPTETime, mSubframeDivisor, 2),
        FIELD(SMPTETime, mCounter, 4),
        FIELD(SMPTETime, mType, 8),
        FIELD(SMPTETime, mFlags, 12),
        FIELD(SMPTETime, mHours, 16),
        FIELD(SMPTETime, mMinutes, 18),
        FIELD(SMPTETime, mSeconds, 20),
        FIELD(SMPTETime, mFrames, 22),
        FIELD(AudioTimeStamp, mSampleTime, 0),
        FIELD(AudioTimeStamp, mHostTime, 8),
        FIELD(AudioTimeStamp, mRateScalar, 16),
        FIELD(AudioTimeStamp, mWordClockTime, 24),
        FIELD(AudioTimeStamp, mSMPTETime, 32),
        FIELD(AudioTimeStamp, mFlags, 56),
        FIELD(AudioTimeStamp, mReserved, 60),
        FIELD(AudioHardwareIOProcStreamUsage, mIOProc, 0),
        FIELD(AudioHardwareIOProcStreamUsage, mNumberStreams, 4),
        FIELD(AudioHardwareIOProcStreamUsage, mStreamIsOn, 8),
        FIELD(AudioChannelDescription, mChannelLabel, 0),
        FIELD(AudioChannelDescription, mChannelFlags, 4),
        FIELD(AudioChannelDescription, mCoordinates, 8),
        FIELD(AudioChannelLayout, mChannelLayoutTag, 0),
        FIELD(AudioChannelLayout, mChannelBitmap, 4),
        FIELD(AudioChannelLayout, mNumberChannelDescriptions, 8),
        FIELD(AudioChannelLayout, mChannelDescriptions, 12),
        FIELD(CFRange, location, 0),
        FIELD(CFRange, length, 4),
        FIELD(AbsoluteTime, lo, 0),
        FIELD(AbsoluteTime, hi, 4),
        FIELD(Float80, exp, 0),
        FIELD(Float80, man, 2),
        FIELD(ComponentDescription, componentType, 0),
        FIELD(ComponentDescription, componentSubType, 4),
        FIELD(ComponentDescription, componentManufacturer, 8),
        FIELD(ComponentDescription, componentFlags, 12),
        FIELD(ComponentDescription, componentFlagsMask, 16),
        FIELD(ComponentParameters, flags, 0),
        FIELD(ComponentParameters, paramSize, 1),
        FIELD(ComponentParameters, what, 2),
        FIELD(ComponentParameters, params, 4),
        FIELD(SoundInfoList, count, 0),
        FIELD(SoundInfoList, infoHandle, 2),
        FIELD(SoundComponentData, flags, 0),
        FIELD(SoundComponentData, format, 4),
        FIELD(SoundComponentData, numChannels, 8),
        FIELD(SoundComponentData, sampleSize, 10),
        FIELD(SoundComponentData, sampleRate, 12),
        FIELD(SoundComponentData, sampleCount, 16),
        FIELD(SoundComponentData, buffer, 20),
        FIELD(SoundComponentData, reserved, 24),
        FIELD(SoundParamBlock, recordSize, 0),
        FIELD(SoundParamBlock, desc, 4),
        FIELD(SoundParamBlock, rateMultiplier, 32),
        FIELD(SoundParamBlock, leftVolume, 36),
        FIELD(SoundParamBlock, rightVolume, 38),
        FIELD(SoundParamBlock, quality, 40),
        FIELD(SoundParamBlock, filter, 44),
        FIELD(SoundParamBlock, moreRtn, 48),
        FIELD(SoundParamBlock, completionRtn, 52),
        FIELD(SoundParamBlock, refCon, 56),
        FIELD(SoundParamBlock, result, 60),
#undef FIELD
    };
    for (const auto& fact : facts) EXPECT_EQ(fact.offset, fact.expected) << fact.field;
}

TEST(Offsets, RecordsHaveNoTrailingPadding)
{
    if (sizeof(void*) != 4) GTEST_SKIP() << "sizes are those of the 32-bit target";
    EXPECT_EQ(sizeof(ComponentRecord), 4u);
    EXPECT_EQ(sizeof(ComponentInstanceRecord), 4u);
    EXPECT_EQ(sizeof(ComponentDescription), 20u);
    EXPECT_EQ(sizeof(ComponentParameters), 8u);
    EXPECT_EQ(sizeof(SoundInfoList), 6u);
    EXPECT_EQ(sizeof(SoundComponentData), 28u);
    EXPECT_EQ(sizeof(SoundParamBlock), 62u);
    EXPECT_EQ(alignof(SoundParamBlock), 2u);
    EXPECT_EQ(sizeof(Str255), 256u);
}

} // namespace
