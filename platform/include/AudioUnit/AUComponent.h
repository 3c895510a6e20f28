/*
 * The functions of every audio unit. C.
 *
 * Order    open, set formats, element counts, slice limit, connections and callbacks, initialise, render.
 * Units    slices and sample times in frames; sizes in bytes.
 * Owner    the opener closes the unit. A unit in a graph belongs to the graph.
 * Errors   of every function. badComponentInstance (0x80008001): a NULL, closed or unknown unit.
 *          badComponentSelector (0x80008002): a component that is not an audio unit. paramErr (-50): a
 *          required pointer is NULL. memFullErr (-108): no memory. kAudioUnitErr_InvalidScope,
 *          InvalidElement: the unit has no such scope or element. A refused call changes nothing.
 * All functions: [any], unless stated otherwise.
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

/* component types, each followed by its subtypes, and the manufacturer */
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
 * A render callback: fill ioData with the input of a unit. A callback without data writes zeros, and may set
 * kAudioUnitRenderAction_OutputIsSilence. A unit also calls it as a render notification, before and after
 * each slice.
 * Shape    inNumberFrames frames in the format of the unit's input element inBusNumber. Buffers that the
 *          callback shortens or replaces are used up to mDataByteSize; the rest is silence.
 * Owner    all arguments are valid during the call only; inRefCon belongs to the callback.
 * Returns  noErr, or the status that AudioUnitRender returns; the slice is then silent.
 * [audio & running]
 */
typedef OSStatus (*AURenderCallback)(void* inRefCon, AudioUnitRenderActionFlags* ioActionFlags,
                                     const AudioTimeStamp* inTimeStamp, UInt32 inBusNumber,
                                     UInt32 inNumberFrames, AudioBufferList* ioData);

/*
 * Allocate the memory that rendering needs. Formats, element counts and the slice limit are fixed until
 * AudioUnitUninitialize. No effect on an initialised unit.
 * Errors   after an error the unit stays uninitialised. kAudioUnitErr_FormatNotSupported: the formats do not
 *          match each other or a connected source. kAudioUnitErr_NoConnection: a connected source is closed.
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitInitialize(AudioUnit unit);

/*
 * Free the memory that rendering needed, after a render call in progress has returned. A running output unit
 * is stopped first. No effect on an uninitialised unit.
 * Errors   kAudioUnitErr_CannotDoInCurrentContext: called inside a slice of the unit.
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitUninitialize(AudioUnit unit);

/*
 * Clear delay lines, filters and tails at the start of the next slice. Parameters, formats and connections
 * stay.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitReset(AudioUnit unit, AudioUnitScope scope, AudioUnitElement element);

/*
 * Get the maximum size of a property's value, in bytes, and whether the property can be set. Either
 * out-pointer may be NULL.
 * Errors   kAudioUnitErr_InvalidProperty: unknown property.
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitGetPropertyInfo(AudioUnit unit, AudioUnitPropertyID property,
                                                      AudioUnitScope scope, AudioUnitElement element,
                                                      UInt32* out_size, Boolean* out_writable);

/*
 * Get a property's value.
 * Shape    *io_size is the capacity of out_data on entry and the size of the value on return, in bytes. With
 *          out_data NULL only the size is returned.
 * Owner    the caller releases a CFString in the value.
 * Errors   after an error nothing is written. InvalidProperty: unknown or write-only property.
 *          InvalidPropertyValue: the capacity is smaller than the value.
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitGetProperty(AudioUnit unit, AudioUnitPropertyID property,
                                                  AudioUnitScope scope, AudioUnitElement element,
                                                  void* out_data, UInt32* io_size);

/*
 * Set a property. The data is copied.
 * Shape    size is exactly the size of the value, in bytes.
 * Errors   checked in this order: InvalidProperty, InvalidScope, InvalidElement: the unit has no such
 *          property, scope or element. PropertyNotWritable: read-only. Initialized: a property that must be
 *          set before initialisation. InvalidPropertyValue: wrong size, or out of range. FormatNotSupported:
 *          the unit refuses the format.
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property,
                                                  AudioUnitScope scope, AudioUnitElement element,
                                                  const void* data, UInt32 size);

/*
 * Get a parameter's value. Neither allocates nor locks.
 * Errors   kAudioUnitErr_InvalidParameter: unknown parameter, or one that the unit does not have at present.
 *          InvalidScope: the parameter is in another scope.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitGetParameter(AudioUnit unit, AudioUnitParameterID parameter,
                                                   AudioUnitScope scope, AudioUnitElement element,
                                                   AudioUnitParameterValue* out_value);

/*
 * Set a parameter from the next slice on. A gain changes gradually over 512 frames. A value out of range
 * becomes the nearest value in range. offset_frames is ignored. Neither allocates nor locks.
 * Errors   kAudioUnitErr_InvalidParameter: unknown parameter, or one that the unit does not have at present.
 *          InvalidScope: the parameter is in another scope. PropertyNotWritable: a meter.
 *          InvalidPropertyValue: NaN.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitSetParameter(AudioUnit unit, AudioUnitParameterID parameter,
                                                   AudioUnitScope scope, AudioUnitElement element,
                                                   AudioUnitParameterValue value, UInt32 offset_frames);

/*
 * Render a slice of an output element. Neither allocates nor locks.
 * Shape    io_data has the buffers of the element's format. A buffer with mData NULL gets the unit's memory.
 *          Other buffers are filled; their mDataByteSize covers the slice on entry. On return mDataByteSize
 *          is the number of bytes rendered. time_stamp has a valid sample time, which advances by the frames
 *          rendered. io_flags may be NULL.
 * Owner    the unit's memory is valid until its next slice.
 * Errors   Uninitialized: not initialised. TooManyFramesToProcess: more frames than the slice limit.
 *          NoConnection: a required input has neither connection nor callback. CannotDoInCurrentContext:
 *          another slice is in progress, or a device renders this element. paramErr: the buffer list does not
 *          match the format, or there is no sample time. Any error of the input.
 * One call at a time per unit.
 * [audio]
 */
KVX_PLATFORM_EXPORT OSStatus AudioUnitRender(AudioUnit unit, AudioUnitRenderActionFlags* io_flags,
                                             const AudioTimeStamp* time_stamp, UInt32 bus, UInt32 frames,
                                             AudioBufferList* io_data);

KVX_PLATFORM_END

#endif
