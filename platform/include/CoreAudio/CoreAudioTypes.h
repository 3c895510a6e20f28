/*
 * Structs and constants of audio data, formats and time. C; natural packing: on 32-bit x86 a Float64 or
 * UInt64 field is 4-aligned.
 *
 * Units    sizes are in bytes. A frame is one sample of every channel; a packet of linear PCM is one frame.
 */
#ifndef COREAUDIO_COREAUDIOTYPES_H
#define COREAUDIO_COREAUDIOTYPES_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* ---- values ---- */

/* The lowest and the highest number of a range, in the unit of the property. */
typedef struct AudioValueRange {
    Float64 mMinimum;
    Float64 mMaximum;
} AudioValueRange;

/*
 * A property value that maps one value to another.
 * Shape    the caller puts the value to look up into mInputData; the property writes the result to
 *          mOutputData.
 * Owner    the caller owns both memory blocks.
 */
typedef struct AudioValueTranslation {
    void* mInputData;
    UInt32 mInputDataSize;
    void* mOutputData;
    UInt32 mOutputDataSize;
} AudioValueTranslation;

/* ---- buffers ---- */

/*
 * Samples of one channel, or interleaved samples of several.
 * Shape    mData[frame * mNumberChannels + channel] in the stream's sample format.
 * Owner    mData belongs to the code that made the buffer list, unless a function's contract differs.
 */
typedef struct AudioBuffer {
    UInt32 mNumberChannels; /* channels interleaved in mData */
    UInt32 mDataByteSize;   /* capacity, or size of the data, in bytes */
    void* mData;
} AudioBuffer;

/*
 * The buffers of a stream.
 * Shape    mNumberBuffers elements: one with all channels interleaved, or one per channel.
 */
typedef struct AudioBufferList {
    UInt32 mNumberBuffers;
    AudioBuffer mBuffers[1];
} AudioBufferList;

typedef Float32 AudioSampleType;     /* full scale is -1 to 1 */
typedef Float32 AudioUnitSampleType; /* full scale is -1 to 1 */

/* ---- formats ---- */

/*
 * A stream format.
 * Shape    with kAudioFormatFlagIsNonInterleaved, bytes per packet and per frame count one channel, and a
 *          buffer list has mChannelsPerFrame buffers. Fields that a compressed format cannot fill are 0.
 */
typedef struct AudioStreamBasicDescription {
    Float64 mSampleRate; /* Hz */
    UInt32 mFormatID;    /* an enumerator below */
    UInt32 mFormatFlags; /* flags below */
    UInt32 mBytesPerPacket;
    UInt32 mFramesPerPacket; /* 1 for linear PCM; 0: a varying number */
    UInt32 mBytesPerFrame;
    UInt32 mChannelsPerFrame;
    UInt32 mBitsPerChannel; /* bits of a sample, without padding */
    UInt32 mReserved;       /* 0 */
} AudioStreamBasicDescription;

/*
 * Position and size of a packet in a buffer of compressed data. No function of the platform fills or reads
 * it.
 */
typedef struct AudioStreamPacketDescription {
    SInt64 mStartOffset;            /* bytes */
    UInt32 mVariableFramesInPacket; /* 0: mFramesPerPacket of the format */
    UInt32 mDataByteSize;
} AudioStreamPacketDescription;

#define kAudioStreamAnyRate 0.0

enum {
    kAudioFormatLinearPCM = 'lpcm',
    kAudioFormatAC3 = 'ac-3',
    kAudioFormat60958AC3 = 'cac3',
    kAudioFormatAppleIMA4 = 'ima4',
    kAudioFormatMPEG4AAC = 'aac ',
    kAudioFormatMACE3 = 'MAC3',
    kAudioFormatMACE6 = 'MAC6',
    kAudioFormatULaw = 'ulaw',
    kAudioFormatALaw = 'alaw',
    kAudioFormatMPEGLayer1 = '.mp1',
    kAudioFormatMPEGLayer2 = '.mp2',
    kAudioFormatMPEGLayer3 = '.mp3',
    kAudioFormatDVIIntelIMA = 0x6D730011,
    kAudioFormatMicrosoftGSM = 0x6D730031,
    kAudioFormatAppleLossless = 'alac'
};

enum {
    kAudioFormatFlagIsFloat = 0x1,
    kAudioFormatFlagIsBigEndian = 0x2,
    kAudioFormatFlagIsSignedInteger = 0x4,
    kAudioFormatFlagIsPacked = 0x8,
    kAudioFormatFlagIsAlignedHigh = 0x10,
    kAudioFormatFlagIsNonInterleaved = 0x20,
    kAudioFormatFlagIsNonMixable = 0x40, /* devices only */

    kLinearPCMFormatFlagIsFloat = kAudioFormatFlagIsFloat,
    kLinearPCMFormatFlagIsBigEndian = kAudioFormatFlagIsBigEndian,
    kLinearPCMFormatFlagIsSignedInteger = kAudioFormatFlagIsSignedInteger,
    kLinearPCMFormatFlagIsPacked = kAudioFormatFlagIsPacked,
    kLinearPCMFormatFlagIsAlignedHigh = kAudioFormatFlagIsAlignedHigh,
    kLinearPCMFormatFlagIsNonInterleaved = kAudioFormatFlagIsNonInterleaved,
    kLinearPCMFormatFlagIsNonMixable = kAudioFormatFlagIsNonMixable,
    kLinearPCMFormatFlagsSampleFractionShift = 7,
    kLinearPCMFormatFlagsSampleFractionMask = 0x3F << kLinearPCMFormatFlagsSampleFractionShift,

    kAudioFormatFlagsNativeEndian = 0,
    kAudioFormatFlagsNativeFloatPacked = kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked,
    kAudioFormatFlagsCanonical = kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked,
    kAudioFormatFlagsAudioUnitCanonical =
        kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked | kAudioFormatFlagIsNonInterleaved
};

/* A macro, because the value is too large for a C enumerator. */
#define kAudioFormatFlagsAreAllClear ((UInt32)0x80000000)
#define kLinearPCMFormatFlagsAreAllClear kAudioFormatFlagsAreAllClear

/* ---- time ---- */

/* SMPTE time code. No function of the platform fills it. */
typedef struct SMPTETime {
    SInt16 mSubframes;
    SInt16 mSubframeDivisor;
    UInt32 mCounter;
    UInt32 mType;
    UInt32 mFlags;
    SInt16 mHours;
    SInt16 mMinutes;
    SInt16 mSeconds;
    SInt16 mFrames;
} SMPTETime;

/*
 * One moment, as read on several clocks.
 * Shape    mFlags names the valid fields; the other fields are 0.
 */
typedef struct AudioTimeStamp {
    Float64 mSampleTime; /* frames */
    UInt64 mHostTime;    /* units of the host clock */
    Float64 mRateScalar; /* actual / nominal host ticks per frame */
    UInt64 mWordClockTime;
    SMPTETime mSMPTETime;
    UInt32 mFlags;
    UInt32 mReserved; /* 0 */
} AudioTimeStamp;

enum {
    kAudioTimeStampSampleTimeValid = 1,
    kAudioTimeStampHostTimeValid = 2,
    kAudioTimeStampRateScalarValid = 4,
    kAudioTimeStampWordClockTimeValid = 8,
    kAudioTimeStampSMPTETimeValid = 16
};

/* ---- channels ---- */

typedef UInt32 AudioChannelLabel;
typedef UInt32 AudioChannelLayoutTag;

/* The role of one channel. */
typedef struct AudioChannelDescription {
    AudioChannelLabel mChannelLabel;
    UInt32 mChannelFlags;
    Float32 mCoordinates[3];
} AudioChannelDescription;

/*
 * The roles of the channels of a stream.
 * Shape    mNumberChannelDescriptions elements, used with the tag UseChannelDescriptions.
 */
typedef struct AudioChannelLayout {
    AudioChannelLayoutTag mChannelLayoutTag;
    UInt32 mChannelBitmap;
    UInt32 mNumberChannelDescriptions;
    AudioChannelDescription mChannelDescriptions[1];
} AudioChannelLayout;

/* The low 16 bits of a layout tag are the channel count of the layout. */
enum {
    kAudioChannelLayoutTag_UseChannelDescriptions = 0,
    kAudioChannelLayoutTag_UseChannelBitmap = 0x10000,
    kAudioChannelLayoutTag_Mono = 0x640001,
    kAudioChannelLayoutTag_Stereo = 0x650002,
    kAudioChannelLayoutTag_DiscreteInOrder = 0x930000
};
#define kAudioChannelLayoutTag_Unknown ((UInt32)0xFFFF0000)

enum {
    kAudioChannelLabel_Unused = 0,
    kAudioChannelLabel_Left = 1,
    kAudioChannelLabel_Right = 2,
    kAudioChannelLabel_Mono = 42
};
#define kAudioChannelLabel_Unknown ((UInt32)0xFFFFFFFF)

/* ---- sizes and offsets ---- */

/* clang-format off */
KVX_PLATFORM_SIZE(AudioValueRange, 16);
KVX_PLATFORM_OFFSET(AudioValueRange, mMaximum, 8);
KVX_PLATFORM_SIZE(AudioValueTranslation, 16);
KVX_PLATFORM_OFFSET(AudioValueTranslation, mOutputData, 8);
KVX_PLATFORM_SIZE(AudioBuffer, 12);
KVX_PLATFORM_OFFSET(AudioBuffer, mData, 8);
KVX_PLATFORM_SIZE(AudioBufferList, 16);
KVX_PLATFORM_OFFSET(AudioBufferList, mBuffers, 4);
KVX_PLATFORM_SIZE(AudioStreamBasicDescription, 40);
KVX_PLATFORM_OFFSET(AudioStreamBasicDescription, mFormatID, 8);
KVX_PLATFORM_OFFSET(AudioStreamBasicDescription, mReserved, 36);
KVX_PLATFORM_SIZE(AudioStreamPacketDescription, 16);
KVX_PLATFORM_OFFSET(AudioStreamPacketDescription, mVariableFramesInPacket, 8);
KVX_PLATFORM_SIZE(SMPTETime, 24);
KVX_PLATFORM_OFFSET(SMPTETime, mHours, 16);
KVX_PLATFORM_SIZE(AudioTimeStamp, 64);
KVX_PLATFORM_OFFSET(AudioTimeStamp, mSMPTETime, 32);
KVX_PLATFORM_OFFSET(AudioTimeStamp, mFlags, 56);
KVX_PLATFORM_SIZE(AudioChannelDescription, 20);
KVX_PLATFORM_OFFSET(AudioChannelDescription, mCoordinates, 8);
KVX_PLATFORM_SIZE(AudioChannelLayout, 32);
KVX_PLATFORM_OFFSET(AudioChannelLayout, mChannelDescriptions, 12);
/* clang-format on */

KVX_PLATFORM_END

#endif
