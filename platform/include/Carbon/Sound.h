/*
 * Sound components: the classic way from a program's samples to an output. C; 2-byte packed.
 *
 * An output component (the program's own) asks the mixer for the sum of all sources; the mixer brings each
 * source's format, rate, channels and volume to what the output asked for.
 *
 * Units    rates are Hz in unsigned 16.16, volumes 8.8 with 0x100 as full, counts are frames (one sample of
 *          each channel).
 *
 * Thread   [any]. SoundComponentGetSourceData belongs on an [audio] thread, too: it allocates nothing and
 * waits for nobody.
 *
 * Errors   those below; a NULL, closed or made-up component is badComponentInstance, one that is no sound
 *          component badComponentSelector, a missing pointer paramErr (-50).
 */
#ifndef CARBON_SOUND_H
#define CARBON_SOUND_H

#include <Carbon/Components.h>
#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN
#pragma pack(push, 2)

/* One source of a mixer; 0 is none. */
typedef struct OpaqueSoundSource* SoundSource;

/* A list of values that a component allocates and its caller disposes. */
typedef struct SoundInfoList {
    short count;
    Handle infoHandle;
} SoundInfoList, *SoundInfoListPtr;

/* Samples, or the form that is wanted of them. */
typedef struct SoundComponentData {
    long flags;
    OSType format;
    short numChannels;
    short sampleSize; /* bits */
    UnsignedFixed sampleRate;
    long sampleCount; /* frames */
    Byte* buffer;
    long reserved; /* 0 */
} SoundComponentData, *SoundComponentDataPtr;

struct SoundParamBlock;
typedef struct SoundParamBlock* SoundParamBlockPtr;

/* Called when a buffer has been used up, or another is wanted. Thread [audio]. */
typedef Boolean (*SoundParamProcPtr)(SoundParamBlockPtr* pb);
typedef SoundParamProcPtr SoundParamUPP;

/* A buffer to play. Its samples stay the caller's, and stay, until the completion routine has been called. */
typedef struct SoundParamBlock {
    long recordSize;
    SoundComponentData desc;
    UnsignedFixed rateMultiplier; /* 0x10000: as recorded */
    short leftVolume;
    short rightVolume;
    long quality;
    ComponentInstance filter;    /* NULL */
    SoundParamUPP moreRtn;       /* NULL: no more */
    SoundParamUPP completionRtn; /* NULL: nobody is told */
    long refCon;
    short result;
} SoundParamBlock;

#pragma pack(pop)

/* component types, and the subtype of a mixer */
enum {
    kSoundOutputDeviceType = 'sdev',
    kSoundComponentType = 'sift',
    kMixerType = 'mixr',
    kSourceType = 'sour'
};

/* formats */
enum {
    kSoundNotCompressed = 'NONE', /* as the sample size says: 8 bits offset binary, 16 bits big-endian */
    kOffsetBinary = 'raw ',
    kTwosComplement = 'twos', /* 8 bits, and big-endian 16 */
    k16BitLittleEndianFormat = 'sowt'
};

/* what PlaySourceBuffer is to do */
enum {
    kSourcePaused = 1, /* set it up only: StartSource starts it */
    kPassThrough = 1L << 16,
    kNoSoundComponentChain = 1L << 17
};

/* selectors of information, each with its value */
enum {
    siNumberChannels = 'chan',      /* short */
    siChannelAvailable = 'chav',    /* list of short */
    siSampleSize = 'ssiz',          /* short, bits */
    siSampleSizeAvailable = 'ssav', /* list of short */
    siSampleRate = 'srat',          /* UnsignedFixed */
    siSampleRateAvailable = 'srav', /* list of UnsignedFixed */
    siVolume = 'volu',              /* long: right in the high half, left in the low */
    siRateMultiplier = 'rmul',      /* UnsignedFixed */
    siQuality = 'qual'              /* long */
};

enum {
    noHardwareErr = -200,
    notEnoughHardwareErr = -201,
    queueFull = -203,
    badChannel = -205,
    badFormat = -206,
    notEnoughBufferSpace = -207,
    channelBusy = -209,
    siInvalidCompression = -223,
    siInvalidSampleRate = -225,
    siInvalidSampleSize = -226,
    siUnknownInfoType = -231
};

/* the selectors of the calls below; from kDelegatedSoundComponentSelectors up an output may pass them on */
enum {
    kSoundComponentInitOutputDeviceSelect = 1,
    kSoundComponentSetSourceSelect = 2,
    kSoundComponentGetSourceSelect = 3,
    kSoundComponentGetSourceDataSelect = 4,
    kSoundComponentSetOutputSelect = 5,
    kDelegatedSoundComponentSelectors = 0x100,
    kSoundComponentAddSourceSelect = 0x101,
    kSoundComponentRemoveSourceSelect = 0x102,
    kSoundComponentGetInfoSelect = 0x103,
    kSoundComponentSetInfoSelect = 0x104,
    kSoundComponentStartSourceSelect = 0x105,
    kSoundComponentStopSourceSelect = 0x106,
    kSoundComponentPauseSourceSelect = 0x107,
    kSoundComponentPlaySourceBufferSelect = 0x108
};

#define kFullVolume 0x0100
#define kNoVolume 0

/* A mixer that gives what `outputDescription` describes, and its end. Flags are 0. */
KVX_PLATFORM_EXPORT OSErr OpenMixerSoundComponent(SoundComponentDataPtr outputDescription, long outputFlags,
                                                  ComponentInstance* mixerComponent);
KVX_PLATFORM_EXPORT OSErr CloseMixerSoundComponent(ComponentInstance ci);

/* For output components: claim the hardware, and open a mixer. */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentInitOutputDevice(ComponentInstance ti, long actions);

/* The next samples of the sum: a record of the mixer's, good until the next call. Its count is 0 when nothing
 * plays now. */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentGetSourceData(ComponentInstance ti,
                                                                SoundComponentDataPtr* sourceData);

KVX_PLATFORM_EXPORT ComponentResult SoundComponentAddSource(ComponentInstance ti, SoundSource* sourceID);
KVX_PLATFORM_EXPORT ComponentResult SoundComponentRemoveSource(ComponentInstance ti, SoundSource sourceID);

/* A value of at most 4 bytes is written at `infoPtr`; a longer one is a SoundInfoList there. */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentGetInfo(ComponentInstance ti, SoundSource sourceID,
                                                          OSType selector, void* infoPtr);
/* A value of at most 4 bytes is `infoPtr` itself. */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentSetInfo(ComponentInstance ti, SoundSource sourceID,
                                                          OSType selector, void* infoPtr);

/* All answer noErr, also for sources that play nothing. Stop throws away what a source still had; pause keeps
 * it. */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentStartSource(ComponentInstance ti, short count,
                                                              SoundSource* sources);
KVX_PLATFORM_EXPORT ComponentResult SoundComponentStopSource(ComponentInstance ti, short count,
                                                             SoundSource* sources);
KVX_PLATFORM_EXPORT ComponentResult SoundComponentPauseSource(ComponentInstance ti, short count,
                                                              SoundSource* sources);

/* Play a buffer behind those the source still has. */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentPlaySourceBuffer(ComponentInstance ti, SoundSource sourceID,
                                                                   SoundParamBlockPtr pb, long actions);

KVX_PLATFORM_SIZE(SoundInfoList, 6);
KVX_PLATFORM_SIZE(SoundComponentData, 28);
KVX_PLATFORM_SIZE(SoundParamBlock, 62);
KVX_PLATFORM_OFFSET(SoundComponentData, buffer, 20);
KVX_PLATFORM_OFFSET(SoundParamBlock, rateMultiplier, 32);
KVX_PLATFORM_OFFSET(SoundParamBlock, moreRtn, 48);
KVX_PLATFORM_OFFSET(SoundParamBlock, result, 60);

KVX_PLATFORM_END

#endif
