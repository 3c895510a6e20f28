/*
 * Sound components: the classic path from a program's samples to an output. C; structs are 2-byte packed, as
 * in all Carbon headers.
 *
 * The program's output component pulls the sum of all sources from a mixer. The mixer converts each source to
 * the output's format, rate, channels and volume.
 *
 * Units    rates in Hz, 16.16 fixed point; volumes 8.8 fixed point, 0x100 is full; counts in frames.
 * Owner    the samples of a buffer stay the caller's. They must be valid until the buffer's completion
 *          routine is called, or until the source is stopped or removed.
 * Errors   of every function. badComponentInstance: a NULL, closed or unknown component.
 *          badComponentSelector: the component does not know the call. paramErr (-50): a required pointer is
 *          NULL. memFullErr (-108): no memory. badFormat: the mixer was not opened by
 *          OpenMixerSoundComponent. badChannel: an unknown source.
 * All functions: [any], unless stated otherwise.
 */
#ifndef CARBON_SOUND_H
#define CARBON_SOUND_H

#include <Carbon/Components.h>
#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN
#pragma pack(push, 2)

/* A source of a mixer; NULL for none. */
typedef struct OpaqueSoundSource* SoundSource;

/*
 * An array of values.
 * Owner    the component allocates infoHandle, the caller disposes it.
 */
typedef struct SoundInfoList {
    short count;
    Handle infoHandle;
} SoundInfoList, *SoundInfoListPtr;

/*
 * A buffer of samples, or the description of a requested format.
 * Shape    one or two channels, interleaved; 8 or 16 bits.
 */
typedef struct SoundComponentData {
    long flags;    /* 0 */
    OSType format; /* a sample format below */
    short numChannels;
    short sampleSize; /* bits per sample */
    UnsignedFixed sampleRate;
    long sampleCount; /* number of frames */
    Byte* buffer;
    long reserved; /* 0 */
} SoundComponentData, *SoundComponentDataPtr;

struct SoundParamBlock;
typedef struct SoundParamBlock* SoundParamBlockPtr;

/*
 * A routine of a buffer; *pb points to the buffer's struct.
 * As moreRtn: called when all frames of the buffer have been consumed. The routine returns true to continue
 * with *pb, which the routine may replace; a struct without samples ends the sound.
 * As completionRtn: called once, in the order of the buffers, when the last frame has been consumed. The
 * result is ignored. The routine may call any function.
 * Called on the thread of SoundComponentGetSourceData.
 * [audio & running]
 */
typedef Boolean (*SoundParamProcPtr)(SoundParamBlockPtr* pb);
typedef SoundParamProcPtr SoundParamUPP;

/*
 * A buffer to play.
 * Owner    the caller owns the struct and the samples. Both must stay valid until completionRtn is called, or
 *          until the source is stopped or removed.
 */
typedef struct SoundParamBlock {
    long recordSize; /* ignored */
    SoundComponentData desc;
    UnsignedFixed rateMultiplier; /* factor of the sample rate; 0x10000 or 0 means 1 */
    short leftVolume;
    short rightVolume;
    long quality;                /* ignored */
    ComponentInstance filter;    /* ignored */
    SoundParamUPP moreRtn;       /* may be NULL */
    SoundParamUPP completionRtn; /* may be NULL */
    long refCon;                 /* free for the caller's use */
    short result;                /* 0 once the buffer has ended */
} SoundParamBlock;

#pragma pack(pop)

/* component types, and the subtype of a mixer */
enum {
    kSoundOutputDeviceType = 'sdev',
    kSoundComponentType = 'sift',
    kMixerType = 'mixr',
    kSourceType = 'sour'
};

/* sample formats */
enum {
    kSoundNotCompressed = 'NONE',     /* 8 bits: unsigned; 16 bits: big-endian */
    kOffsetBinary = 'raw ',           /* 8 bits, unsigned */
    kTwosComplement = 'twos',         /* signed; 16 bits: big-endian */
    k16BitLittleEndianFormat = 'sowt' /* 16 bits, signed */
};

/* actions of SoundComponentPlaySourceBuffer */
enum {
    kSourcePaused = 1, /* do not start the source */
    kPassThrough = 1L << 16,
    kNoSoundComponentChain = 1L << 17
};

/* selectors of SoundComponentGetInfo and SoundComponentSetInfo, with the type of the value */
enum {
    siNumberChannels = 'chan',      /* short */
    siChannelAvailable = 'chav',    /* list of short */
    siSampleSize = 'ssiz',          /* short, bits */
    siSampleSizeAvailable = 'ssav', /* list of short */
    siSampleRate = 'srat',          /* UnsignedFixed */
    siSampleRateAvailable = 'srav', /* list of UnsignedFixed */
    siVolume = 'volu',              /* long: right << 16 | left */
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

/*
 * Selectors of the functions below. An output component may delegate calls whose selectors are at or above
 * kDelegatedSoundComponentSelectors.
 */
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

/*
 * Open a mixer with a given output format.
 * Shape    sampleCount of the description is the number of frames per mixed buffer, up to 65,536; 0 or less
 *          means 1,024. outputFlags is 0.
 * Owner    the caller closes *mixerComponent; the description is copied.
 * Errors   after an error *mixerComponent is NULL. paramErr: also for outputFlags other than 0.
 *          notEnoughHardwareErr: more than two channels, or none. siInvalidSampleRate: a rate of 0.
 *          badFormat, siInvalidSampleSize: unknown sample format or size.
 */
KVX_PLATFORM_EXPORT OSErr OpenMixerSoundComponent(SoundComponentDataPtr outputDescription, long outputFlags,
                                                  ComponentInstance* mixerComponent);

/*
 * Close a mixer. The function waits for a SoundComponentGetSourceData call in progress, except in a
 * completion routine. No completion routine is called afterwards.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSErr CloseMixerSoundComponent(ComponentInstance ci);

/*
 * Ask an output component to open its device and a mixer.
 * Returns  the component's result.
 */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentInitOutputDevice(ComponentInstance ti, long actions);

/*
 * Mix the next buffer. Neither allocates nor blocks. The last buffer of a sound may be shorter; a buffer of 0
 * frames means that no source plays at present.
 * Shape    if the only source has the mixer's format and full volume, its bytes are copied. Otherwise the
 *          sources are summed in 32-bit float, rounded to nearest, ties to even, and clipped.
 * Owner    the struct and its samples belong to the mixer, and are valid until the next call.
 * Errors   after an error *sourceData is NULL. channelBusy: another call is in progress, for example the one
 *          whose completion routine calls this function. badComponentInstance: also if a completion routine
 *          has closed the mixer.
 * One call at a time per mixer.
 * [audio]
 */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentGetSourceData(ComponentInstance ti,
                                                                SoundComponentDataPtr* sourceData);

/*
 * Add a source to a mixer. The source is stopped and has full volume.
 * Owner    the caller removes the source.
 * Errors   after an error *sourceID is NULL. notEnoughHardwareErr: the mixer already has 64 sources.
 */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentAddSource(ComponentInstance ti, SoundSource* sourceID);

/*
 * Remove a source and discard its buffers, without calling their completion routines. The function waits for
 * a SoundComponentGetSourceData call in progress, except in a completion routine.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentRemoveSource(ComponentInstance ti, SoundSource sourceID);

/*
 * Get a value of a mixer or source, by selector. A mixer has siNumberChannels, siSampleSize, siSampleRate,
 * and the list of available values of each. A source has siVolume and siRateMultiplier.
 * Shape    a value of up to 4 bytes, or a SoundInfoList, is written to *infoPtr.
 * Owner    the caller disposes the handle of a list.
 * Errors   siUnknownInfoType: another selector.
 */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentGetInfo(ComponentInstance ti, SoundSource sourceID,
                                                          OSType selector, void* infoPtr);

/*
 * Set siVolume or siRateMultiplier of a source. A volume applies to the next frames, a multiplier to buffers
 * that are queued later.
 * Shape    infoPtr is the value itself, not a pointer to the value.
 * Errors   siUnknownInfoType: another selector. siInvalidSampleRate: a multiplier of 0.
 */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentSetInfo(ComponentInstance ti, SoundSource sourceID,
                                                          OSType selector, void* infoPtr);

/*
 * Start sources, all at the start of the same mixed buffer. Unknown sources are ignored.
 * Errors   paramErr: count is negative.
 */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentStartSource(ComponentInstance ti, short count,
                                                              SoundSource* sources);

/*
 * Stop sources and discard their buffers, without calling their completion routines. The function waits for a
 * SoundComponentGetSourceData call in progress, except in a completion routine. Unknown sources are ignored.
 * Errors   paramErr: count is negative.
 */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentStopSource(ComponentInstance ti, short count,
                                                             SoundSource* sources);

/*
 * Pause sources; their buffers stay. The function waits for a SoundComponentGetSourceData call in progress,
 * except in a completion routine. Unknown sources are ignored.
 * Errors   paramErr: count is negative.
 */
KVX_PLATFORM_EXPORT ComponentResult SoundComponentPauseSource(ComponentInstance ti, short count,
                                                              SoundSource* sources);

/*
 * Queue a buffer after the buffers that the source already has, and start the source unless actions has
 * kSourcePaused.
 * Owner    the caller owns the struct and the samples, as SoundParamBlock states.
 * Errors   queueFull: 64 buffers of the source wait. notEnoughHardwareErr, badFormat, siInvalidSampleSize: as
 *          for OpenMixerSoundComponent. siInvalidSampleRate: a rate of 0, or a rate more than 256 times or
 *          less than 1/256 of the mixer's rate. paramErr: the buffer has no samples, or a negative count of
 *          frames.
 */
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
