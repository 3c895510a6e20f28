/*
 * The calls every audio unit answers. C.
 *
 * Order    open, set formats, element counts, slice limit and callbacks, initialise, render.
 *
 * Units    formats and sizes in bytes as their records say; sample times and slices in frames.
 *
 * Thread   [any] unless said otherwise. Only AudioUnitRender and the two parameter calls belong on an
 *          [audio] thread: they allocate nothing and take no lock.
 *
 * Errors   a NULL, closed or made-up unit is badComponentInstance (0x80008001), a component that is no
 *          audio unit badComponentSelector (0x80008002), a missing out-pointer -50; the rest are below.
 */
#ifndef AUDIOUNIT_AUCOMPONENT_H
#define AUDIOUNIT_AUCOMPONENT_H

#include <AudioUnit/AudioComponent.h>
#include <CoreAudio/CoreAudioTypes.h>
#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

typedef AudioComponentInstance AudioUnit;
typedef UInt32 AudioUnitPropertyID;
typedef UInt32 AudioUnitScope;
typedef UInt32 AudioUnitElement;
typedef UInt32 AudioUnitParameterID;
typedef UInt32 AudioUnitRenderActionFlags;
typedef Float32 AudioUnitParameterValue;

/* types, each with its subtypes; the manufacturer */
enum {
    kAudioUnitType_FormatConverter = 'aufc',
    kAudioUnitSubType_AUConverter = 'conv',
    kAudioUnitSubType_Varispeed = 'vari',
    kAudioUnitSubType_TimePitch = 'tmpt',
    kAudioUnitSubType_NewTimePitch = 'nutp',
    kAudioUnitType_Effect = 'aufx',
    kAudioUnitSubType_GraphicEQ = 'greq',
    kAudioUnitType_Mixer = 'aumx',
    kAudioUnitSubType_MultiChannelMixer = 'mcmx',
    kAudioUnitType_Output = 'auou',
    kAudioUnitSubType_GenericOutput = 'genr',
    kAudioUnitSubType_HALOutput = 'ahal',
    kAudioUnitSubType_DefaultOutput = 'def ',
    kAudioUnitSubType_SystemOutput = 'sys ',
    kAudioUnitManufacturer_Apple = 'appl'
};

enum {
    kAudioUnitRenderAction_PreRender = 1 << 2,
    kAudioUnitRenderAction_PostRender = 1 << 3,
    kAudioUnitRenderAction_OutputIsSilence = 1 << 4,
    kAudioOfflineUnitRenderAction_Preflight = 1 << 5,
    kAudioOfflineUnitRenderAction_Render = 1 << 6,
    kAudioOfflineUnitRenderAction_Complete = 1 << 7,
    kAudioUnitRenderAction_PostRenderError = 1 << 8
};

enum {
    kAudioUnitErr_InvalidProperty = -10879,
    kAudioUnitErr_InvalidParameter = -10878,
    kAudioUnitErr_InvalidElement = -10877,
    kAudioUnitErr_NoConnection = -10876,
    kAudioUnitErr_FailedInitialization = -10875,
    kAudioUnitErr_TooManyFramesToProcess = -10874,
    kAudioUnitErr_IllegalInstrument = -10873,
    kAudioUnitErr_InstrumentTypeNotFound = -10872,
    kAudioUnitErr_InvalidFile = -10871,
    kAudioUnitErr_UnknownFileType = -10870,
    kAudioUnitErr_FileNotSpecified = -10869,
    kAudioUnitErr_FormatNotSupported = -10868,
    kAudioUnitErr_Uninitialized = -10867,
    kAudioUnitErr_InvalidScope = -10866,
    kAudioUnitErr_PropertyNotWritable = -10865,
    kAudioUnitErr_CannotDoInCurrentContext = -10863,
    kAudioUnitErr_InvalidPropertyValue = -10851,
    kAudioUnitErr_PropertyNotInUse = -10850,
    kAudioUnitErr_Initialized = -10849,
    kAudioUnitErr_InvalidOfflineRender = -10848,
    kAudioUnitErr_Unauthorized = -10847
};

/*
 * Gives a unit its input: fill `ioData`, which is in the format of the unit's input `inBusNumber`, with
 * `inNumberFrames` frames. A callback with nothing to give writes zeros; its error becomes the result of the
 * render. Also the shape of a render notification, called before and after each slice.
 *
 * Thread   [audio & running].
 */
typedef OSStatus (*AURenderCallback)(void* inRefCon, AudioUnitRenderActionFlags* ioActionFlags,
                                     const AudioTimeStamp* inTimeStamp, UInt32 inBusNumber,
                                     UInt32 inNumberFrames, AudioBufferList* ioData);

/* Allocate for rendering. Formats and the slice limit are fixed until the unit is uninitialised. */
KVX_PLATFORM_EXPORT OSStatus AudioUnitInitialize(AudioUnit unit);
KVX_PLATFORM_EXPORT OSStatus AudioUnitUninitialize(AudioUnit unit);

/* Forget what sound has left behind (delay lines, tails); settings stay. Takes effect with the next slice. */
KVX_PLATFORM_EXPORT OSStatus AudioUnitReset(AudioUnit unit, AudioUnitScope scope, AudioUnitElement element);

/* The largest size a value takes, and whether it can be written. Both out-pointers may be NULL. */
KVX_PLATFORM_EXPORT OSStatus AudioUnitGetPropertyInfo(AudioUnit unit, AudioUnitPropertyID property,
                                                      AudioUnitScope scope, AudioUnitElement element,
                                                      UInt32* out_size, Boolean* out_writable);

/* Data first, then its size: the buffer's on the way in, the value's on the way out. */
KVX_PLATFORM_EXPORT OSStatus AudioUnitGetProperty(AudioUnit unit, AudioUnitPropertyID property,
                                                  AudioUnitScope scope, AudioUnitElement element,
                                                  void* out_data, UInt32* io_size);
KVX_PLATFORM_EXPORT OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property,
                                                  AudioUnitScope scope, AudioUnitElement element,
                                                  const void* data, UInt32 size);

/* Thread [any], [audio] too. */
KVX_PLATFORM_EXPORT OSStatus AudioUnitGetParameter(AudioUnit unit, AudioUnitParameterID parameter,
                                                   AudioUnitScope scope, AudioUnitElement element,
                                                   AudioUnitParameterValue* out_value);
KVX_PLATFORM_EXPORT OSStatus AudioUnitSetParameter(AudioUnit unit, AudioUnitParameterID parameter,
                                                   AudioUnitScope scope, AudioUnitElement element,
                                                   AudioUnitParameterValue value, UInt32 offset_frames);

/*
 * Pull a slice out of output `bus`.
 *
 * Shape    the list has the buffers of the bus's format. Buffers with mData NULL get the unit's own memory,
 *          valid until the next slice; others are filled, and hold at least the slice. mDataByteSize is
 *          rewritten.
 *
 * Thread   [audio], one call at a time per unit.
 *
 * Errors   Uninitialized; TooManyFramesToProcess beyond the slice limit, nothing is rendered; NoConnection
 *          without an input; CannotDoInCurrentContext while another slice runs; -50 for a list that does
 *          not fit the format, or a time stamp without a sample time; and whatever the source returns.
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitRender(AudioUnit unit, AudioUnitRenderActionFlags* io_flags,
                                             const AudioTimeStamp* time_stamp, UInt32 bus, UInt32 frames,
                                             AudioBufferList* io_data);

KVX_PLATFORM_END

#endif
