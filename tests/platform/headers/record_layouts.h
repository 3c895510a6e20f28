// Sizes of records and offsets of their fields on the 32-bit target. Compiled programs depend on them.
#pragma once

#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <type_traits>

// The C++ overload and the printf format of a UInt32 depend on its underlying type.
static_assert(std::is_same_v<UInt32, unsigned long> == (sizeof(void*) == 4));

#ifndef __LP64__

#define SIZE(type, expected) static_assert(sizeof(type) == (expected))
#define FIELD(type, field, expected) static_assert(offsetof(type, field) == (expected))

SIZE(AudioObjectPropertyAddress, 12);
SIZE(AudioValueRange, 16);
SIZE(AudioValueTranslation, 16);
SIZE(AudioBuffer, 12);
SIZE(AudioBufferList, 16);
SIZE(AudioStreamBasicDescription, 40);
SIZE(AudioStreamPacketDescription, 16);
SIZE(AudioStreamRangedDescription, 56);
SIZE(SMPTETime, 24);
SIZE(AudioTimeStamp, 64);
SIZE(AudioHardwareIOProcStreamUsage, 12);
SIZE(AudioChannelDescription, 20);
SIZE(AudioChannelLayout, 32);
SIZE(AbsoluteTime, 8);
SIZE(Float80, 10);
SIZE(CFRange, 8);
SIZE(ComponentDescription, 20);
SIZE(UInt32, 4);
SIZE(SInt64, 8);
SIZE(UniChar, 2);
SIZE(Boolean, 1);
SIZE(ComponentRecord, 4);
SIZE(ComponentInstanceRecord, 4);
SIZE(ComponentParameters, 8);
SIZE(SoundInfoList, 6);
SIZE(SoundComponentData, 28);
SIZE(SoundParamBlock, 62);
static_assert(alignof(SoundParamBlock) == 2);
SIZE(Str255, 256);

FIELD(AudioObjectPropertyAddress, mSelector, 0);
FIELD(AudioObjectPropertyAddress, mScope, 4);
FIELD(AudioObjectPropertyAddress, mElement, 8);
FIELD(AudioValueRange, mMinimum, 0);
FIELD(AudioValueRange, mMaximum, 8);
FIELD(AudioValueTranslation, mInputData, 0);
FIELD(AudioValueTranslation, mInputDataSize, 4);
FIELD(AudioValueTranslation, mOutputData, 8);
FIELD(AudioValueTranslation, mOutputDataSize, 12);
FIELD(AudioBuffer, mNumberChannels, 0);
FIELD(AudioBuffer, mDataByteSize, 4);
FIELD(AudioBuffer, mData, 8);
FIELD(AudioBufferList, mNumberBuffers, 0);
FIELD(AudioBufferList, mBuffers, 4);
FIELD(AudioStreamBasicDescription, mSampleRate, 0);
FIELD(AudioStreamBasicDescription, mFormatID, 8);
FIELD(AudioStreamBasicDescription, mFormatFlags, 12);
FIELD(AudioStreamBasicDescription, mBytesPerPacket, 16);
FIELD(AudioStreamBasicDescription, mFramesPerPacket, 20);
FIELD(AudioStreamBasicDescription, mBytesPerFrame, 24);
FIELD(AudioStreamBasicDescription, mChannelsPerFrame, 28);
FIELD(AudioStreamBasicDescription, mBitsPerChannel, 32);
FIELD(AudioStreamBasicDescription, mReserved, 36);
FIELD(AudioStreamPacketDescription, mStartOffset, 0);
FIELD(AudioStreamPacketDescription, mVariableFramesInPacket, 8);
FIELD(AudioStreamPacketDescription, mDataByteSize, 12);
FIELD(AudioStreamRangedDescription, mFormat, 0);
FIELD(AudioStreamRangedDescription, mSampleRateRange, 40);
FIELD(SMPTETime, mSubframes, 0);
FIELD(SMPTETime, mSubframeDivisor, 2);
FIELD(SMPTETime, mCounter, 4);
FIELD(SMPTETime, mType, 8);
FIELD(SMPTETime, mFlags, 12);
FIELD(SMPTETime, mHours, 16);
FIELD(SMPTETime, mMinutes, 18);
FIELD(SMPTETime, mSeconds, 20);
FIELD(SMPTETime, mFrames, 22);
FIELD(AudioTimeStamp, mSampleTime, 0);
FIELD(AudioTimeStamp, mHostTime, 8);
FIELD(AudioTimeStamp, mRateScalar, 16);
FIELD(AudioTimeStamp, mWordClockTime, 24);
FIELD(AudioTimeStamp, mSMPTETime, 32);
FIELD(AudioTimeStamp, mFlags, 56);
FIELD(AudioTimeStamp, mReserved, 60);
FIELD(AudioHardwareIOProcStreamUsage, mIOProc, 0);
FIELD(AudioHardwareIOProcStreamUsage, mNumberStreams, 4);
FIELD(AudioHardwareIOProcStreamUsage, mStreamIsOn, 8);
FIELD(AudioChannelDescription, mChannelLabel, 0);
FIELD(AudioChannelDescription, mChannelFlags, 4);
FIELD(AudioChannelDescription, mCoordinates, 8);
FIELD(AudioChannelLayout, mChannelLayoutTag, 0);
FIELD(AudioChannelLayout, mChannelBitmap, 4);
FIELD(AudioChannelLayout, mNumberChannelDescriptions, 8);
FIELD(AudioChannelLayout, mChannelDescriptions, 12);
FIELD(CFRange, location, 0);
FIELD(CFRange, length, 4);
FIELD(AbsoluteTime, lo, 0);
FIELD(AbsoluteTime, hi, 4);
FIELD(Float80, exp, 0);
FIELD(Float80, man, 2);
FIELD(ComponentDescription, componentType, 0);
FIELD(ComponentDescription, componentSubType, 4);
FIELD(ComponentDescription, componentManufacturer, 8);
FIELD(ComponentDescription, componentFlags, 12);
FIELD(ComponentDescription, componentFlagsMask, 16);
FIELD(ComponentParameters, flags, 0);
FIELD(ComponentParameters, paramSize, 1);
FIELD(ComponentParameters, what, 2);
FIELD(ComponentParameters, params, 4);
FIELD(SoundInfoList, count, 0);
FIELD(SoundInfoList, infoHandle, 2);
FIELD(SoundComponentData, flags, 0);
FIELD(SoundComponentData, format, 4);
FIELD(SoundComponentData, numChannels, 8);
FIELD(SoundComponentData, sampleSize, 10);
FIELD(SoundComponentData, sampleRate, 12);
FIELD(SoundComponentData, sampleCount, 16);
FIELD(SoundComponentData, buffer, 20);
FIELD(SoundComponentData, reserved, 24);
FIELD(SoundParamBlock, recordSize, 0);
FIELD(SoundParamBlock, desc, 4);
FIELD(SoundParamBlock, rateMultiplier, 32);
FIELD(SoundParamBlock, leftVolume, 36);
FIELD(SoundParamBlock, rightVolume, 38);
FIELD(SoundParamBlock, quality, 40);
FIELD(SoundParamBlock, filter, 44);
FIELD(SoundParamBlock, moreRtn, 48);
FIELD(SoundParamBlock, completionRtn, 52);
FIELD(SoundParamBlock, refCon, 56);
FIELD(SoundParamBlock, result, 60);

#endif
