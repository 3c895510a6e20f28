/*
 * The properties of the units and their records. C; natural packing. Each constant names its value, scope and
 * access; "before" marks those that can only be set before the unit is initialised.
 */
#ifndef AUDIOUNIT_AUDIOUNITPROPERTIES_H
#define AUDIOUNIT_AUDIOUNITPROPERTIES_H

#include <AudioUnit/AUComponent.h>
#include <CoreFoundation/CoreFoundation.h>

KVX_PLATFORM_BEGIN

enum {
    kAudioUnitScope_Global = 0,
    kAudioUnitScope_Input = 1,
    kAudioUnitScope_Output = 2,
    kAudioUnitScope_Group = 3,
    kAudioUnitScope_Part = 4,
    kAudioUnitScope_Note = 5
};

/* every unit */
/* clang-format off */
enum {
    kAudioUnitProperty_MakeConnection = 1,         /* AudioUnitConnection, input, write */
    kAudioUnitProperty_SampleRate = 2,             /* Float64 Hz, input and output, read and write before */
    kAudioUnitProperty_ParameterList = 3,          /* AudioUnitParameterID[], each scope, read */
    kAudioUnitProperty_ParameterInfo = 4,          /* AudioUnitParameterInfo, element = parameter ID, read */
    kAudioUnitProperty_StreamFormat = 8,           /* AudioStreamBasicDescription, input and output, likewise */
    kAudioUnitProperty_ElementCount = 11,          /* UInt32, each scope, read; write before where buses vary */
    kAudioUnitProperty_BusCount = 11,
    kAudioUnitProperty_Latency = 12,               /* Float64 seconds, global, read */
    kAudioUnitProperty_SupportedNumChannels = 13,  /* AUChannelInfo[], global, read */
    kAudioUnitProperty_MaximumFramesPerSlice = 14, /* UInt32, global, read and write before */
    kAudioUnitProperty_TailTime = 20,              /* Float64 seconds, global, read */
    kAudioUnitProperty_LastRenderError = 22,       /* OSStatus, global, read; reading clears it */
    kAudioUnitProperty_SetRenderCallback = 23      /* AURenderCallbackStruct, input, write */
};

/* some units */
enum {
    kAudioUnitProperty_BypassEffect = 21,   /* UInt32 0 or 1, global, read and write: effects, rate units */
    kAudioUnitProperty_RenderQuality = 26,  /* UInt32 0 to 127, global, read and write: rate units, converter */
    kAudioUnitProperty_MeteringMode = 3007, /* UInt32 0 or 1, input and output, read and write: mixer */
    kAudioUnitProperty_SampleRateConverterComplexity = 3014 /* UInt32, global, read and write: converter */
};
enum {
    kRenderQuality_Max = 0x7F,
    kRenderQuality_High = 0x60,
    kRenderQuality_Medium = 0x40,
    kRenderQuality_Low = 0x20,
    kRenderQuality_Min = 0
};
enum {
    kAudioUnitSampleRateConverterComplexity_Linear = 'line',
    kAudioUnitSampleRateConverterComplexity_Normal = 'norm', /* the default */
    kAudioUnitSampleRateConverterComplexity_Mastering = 'bats'
};

/* output units */
enum {
    kAudioOutputUnitProperty_CurrentDevice = 2000,    /* AudioDeviceID, global, read; the HAL unit's: write */
    kAudioOutputUnitProperty_IsRunning = 2001,        /* UInt32, global, read */
    kAudioOutputUnitProperty_ChannelMap = 2002,       /* SInt32[], one a destination channel; output 0, both */
    kAudioOutputUnitProperty_EnableIO = 2003,         /* UInt32, output 0 and input 1, read and write before */
    kAudioOutputUnitProperty_SetInputCallback = 2005, /* AURenderCallbackStruct, global, write */
    kAudioOutputUnitProperty_HasIO = 2006,            /* UInt32, output 0 and input 1, read */
    kAudioOutputUnitProperty_StartTimestampsAtZero = 2007 /* UInt32, global, read and write */
};
/* clang-format on */

/* Take input `destInputNumber` from output `sourceOutputNumber` of another unit; a NULL unit disconnects. */
typedef struct AudioUnitConnection {
    AudioUnit sourceAudioUnit;
    UInt32 sourceOutputNumber;
    UInt32 destInputNumber;
} AudioUnitConnection;

typedef struct AURenderCallbackStruct {
    AURenderCallback inputProc;
    void* inputProcRefCon;
} AURenderCallbackStruct;

/* Channel counts that go together; -1, -1 any equal ones, -1, -2 any at all. */
typedef struct AUChannelInfo {
    SInt16 inChannels;
    SInt16 outChannels;
} AUChannelInfo;

typedef UInt32 AudioUnitParameterUnit;
typedef struct AudioUnitParameterInfo {
    char name[52]; /* UTF-8 */
    CFStringRef unitName;
    UInt32 clumpID;
    CFStringRef cfNameString;
    AudioUnitParameterUnit unit;
    AudioUnitParameterValue minValue;
    AudioUnitParameterValue maxValue;
    AudioUnitParameterValue defaultValue;
    UInt32 flags;
} AudioUnitParameterInfo;

enum {
    kAudioUnitParameterUnit_Generic = 0,
    kAudioUnitParameterUnit_Indexed = 1,
    kAudioUnitParameterUnit_Boolean = 2,
    kAudioUnitParameterUnit_Percent = 3,
    kAudioUnitParameterUnit_Seconds = 4,
    kAudioUnitParameterUnit_Rate = 7,
    kAudioUnitParameterUnit_Hertz = 8,
    kAudioUnitParameterUnit_Cents = 9,
    kAudioUnitParameterUnit_Decibels = 13,
    kAudioUnitParameterUnit_LinearGain = 14,
    kAudioUnitParameterUnit_MixerFaderCurve1 = 17,
    kAudioUnitParameterUnit_Pan = 18
};

#define kAudioUnitParameterFlag_MeterReadOnly (1u << 15)
#define kAudioUnitParameterFlag_CanRamp (1u << 25)
#define kAudioUnitParameterFlag_IsReadable (1u << 30)
#define kAudioUnitParameterFlag_IsWritable (1u << 31)

KVX_PLATFORM_SIZE(AudioUnitConnection, 12);
KVX_PLATFORM_SIZE(AURenderCallbackStruct, 8);
KVX_PLATFORM_SIZE(AUChannelInfo, 4);
KVX_PLATFORM_SIZE(AudioUnitParameterInfo, 84);
KVX_PLATFORM_OFFSET(AudioUnitParameterInfo, unit, 64);

KVX_PLATFORM_END

#endif
