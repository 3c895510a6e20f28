/*
 * Properties of the units, and their structs. C; natural packing.
 *
 * Each constant states the value's type, its scopes and its access; the element is 0 unless stated otherwise.
 * "r/w before": settable only before initialisation.
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

/* properties of all units */
/* clang-format off */
enum {
    kAudioUnitProperty_MakeConnection = 1,         /* AudioUnitConnection, input, write-only */
    kAudioUnitProperty_SampleRate = 2,             /* Float64 Hz, input and output, r/w before */
    kAudioUnitProperty_ParameterList = 3,          /* AudioUnitParameterID[], all scopes, read-only */
    kAudioUnitProperty_ParameterInfo = 4,          /* AudioUnitParameterInfo, element: the parameter's ID, read-only */
    kAudioUnitProperty_StreamFormat = 8,           /* AudioStreamBasicDescription, input and output, r/w before */
    kAudioUnitProperty_ElementCount = 11,          /* UInt32, all scopes, read-only; mixer inputs r/w before */
    kAudioUnitProperty_BusCount = 11,
    kAudioUnitProperty_Latency = 12,               /* Float64 seconds, global, read-only */
    kAudioUnitProperty_SupportedNumChannels = 13,  /* AUChannelInfo[], global, read-only */
    kAudioUnitProperty_MaximumFramesPerSlice = 14, /* UInt32 frames, global, r/w before */
    kAudioUnitProperty_TailTime = 20,              /* Float64 seconds, global, read-only */
    kAudioUnitProperty_LastRenderError = 22,       /* OSStatus, global, read-only; reading clears it */
    kAudioUnitProperty_SetRenderCallback = 23      /* AURenderCallbackStruct, input, write-only */
};

/* properties of the units that a row names */
enum {
    kAudioUnitProperty_BypassEffect = 21,   /* UInt32 0 or 1, global, r/w: equaliser, rate units */
    kAudioUnitProperty_RenderQuality = 26,  /* UInt32 0 to 127, global, r/w: rate units, converter */
    kAudioUnitProperty_MeteringMode = 3007, /* UInt32 0 or 1, input and output, r/w: mixer */
    kAudioUnitProperty_SampleRateConverterComplexity = 3014 /* UInt32, global, r/w: converter */
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

/* properties of output units; element 0 is the client side, element 1 the device's input */
enum {
    kAudioOutputUnitProperty_CurrentDevice = 2000,    /* AudioDeviceID, global, read-only; HAL unit r/w */
    kAudioOutputUnitProperty_IsRunning = 2001,        /* UInt32 0 or 1, global, read-only */
    kAudioOutputUnitProperty_ChannelMap = 2002,       /* SInt32[], output, r/w: entry n: the source of channel n, or -1 */
    kAudioOutputUnitProperty_EnableIO = 2003,         /* UInt32 0 or 1, output 0 and input 1, r/w before */
    kAudioOutputUnitProperty_SetInputCallback = 2005, /* AURenderCallbackStruct, global, write-only */
    kAudioOutputUnitProperty_HasIO = 2006,            /* UInt32 0 or 1, output 0 and input 1, read-only */
    kAudioOutputUnitProperty_StartTimestampsAtZero = 2007 /* UInt32 0 or 1, global, r/w */
};
/* clang-format on */

/*
 * A connection of an input element to an output element of another unit. The input element takes over the
 * output element's format. A sourceAudioUnit of NULL disconnects the input element.
 */
typedef struct AudioUnitConnection {
    AudioUnit sourceAudioUnit;
    UInt32 sourceOutputNumber;
    UInt32 destInputNumber;
} AudioUnitConnection;

/*
 * A render callback and its context. An inputProc of NULL removes the callback.
 * Owner    inputProcRefCon stays the caller's.
 */
typedef struct AURenderCallbackStruct {
    AURenderCallback inputProc;
    void* inputProcRefCon;
} AURenderCallbackStruct;

/*
 * A supported pair of channel counts. The pair -1, -1 means any equal counts; the pair -1, -2 means any
 * counts.
 */
typedef struct AUChannelInfo {
    SInt16 inChannels;
    SInt16 outChannels;
} AUChannelInfo;

/* A description of a parameter. unitName and cfNameString are NULL, clumpID is 0. */
typedef UInt32 AudioUnitParameterUnit;
typedef struct AudioUnitParameterInfo {
    char name[52]; /* UTF-8, terminated */
    CFStringRef unitName;
    UInt32 clumpID;
    CFStringRef cfNameString;
    AudioUnitParameterUnit unit; /* below */
    AudioUnitParameterValue minValue;
    AudioUnitParameterValue maxValue;
    AudioUnitParameterValue defaultValue;
    UInt32 flags; /* below */
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
