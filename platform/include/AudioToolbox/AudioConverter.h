/*
 * Conversion between linear PCM formats: sample width, byte order, interleaving, channels and rate. C.
 *
 * Units    a packet is one frame. Sizes are in bytes.
 * Owner    the caller of AudioConverterNew disposes the converter.
 * Errors   of every function. paramErr (-50): a NULL, disposed or unknown converter, or a required pointer is
 *          NULL; memFullErr (-108): no memory. kAudioConverterErr_OperationNotSupported: Reset, SetProperty
 *          or FillComplexBuffer was called while another of these three calls on the converter is in
 *          progress, for example from the converter's input procedure. A refused call changes nothing.
 * All functions: [any].
 */
#ifndef AUDIOTOOLBOX_AUDIOCONVERTER_H
#define AUDIOTOOLBOX_AUDIOCONVERTER_H

#include <CoreAudio/CoreAudioTypes.h>
#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

typedef struct OpaqueAudioConverter* AudioConverterRef;
typedef UInt32 AudioConverterPropertyID;

enum {
    kAudioConverterErr_FormatNotSupported = 'fmt?',
    kAudioConverterErr_OperationNotSupported = 0x6F703F3F,
    kAudioConverterErr_PropertyNotSupported = 'prop',
    kAudioConverterErr_InvalidInputSize = 'insz',
    kAudioConverterErr_InvalidOutputSize = 'otsz',
    kAudioConverterErr_UnspecifiedError = 'what',
    kAudioConverterErr_BadPropertySizeError = '!siz',
    kAudioConverterErr_RequiresPacketDescriptionsError = '!pkd',
    kAudioConverterErr_InputSampleRateOutOfRange = '!isr',
    kAudioConverterErr_OutputSampleRateOutOfRange = '!osr'
};

/* Properties. Setting complexity, quality or channel map resets the converter. */
enum {
    kAudioConverterSampleRateConverterComplexity = 'srca', /* UInt32 below, r/w */
    kAudioConverterSampleRateConverterQuality = 'srcq',    /* UInt32 0 to 127, r/w */
    kAudioConverterPrimeMethod = 'prmm',                   /* UInt32 below, r/w; Normal only */
    kAudioConverterPrimeInfo = 'prim',                     /* AudioConverterPrimeInfo, read-only */
    kAudioConverterChannelMap = 'chmp',                    /* SInt32[], see below, r/w */
    kAudioConverterCurrentInputStreamDescription = 'acid', /* AudioStreamBasicDescription, read-only */
    kAudioConverterCurrentOutputStreamDescription = 'acod' /* AudioStreamBasicDescription, read-only */
};

/*
 * The filter of a rate conversion. Linear is the fastest, Mastering the best. Normal depends on the quality:
 * the fastest filter below Medium, the best filter at Max, and a medium filter otherwise.
 */
enum {
    kAudioConverterSampleRateConverterComplexity_Linear = 'line',
    kAudioConverterSampleRateConverterComplexity_Normal = 'norm', /* the default */
    kAudioConverterSampleRateConverterComplexity_Mastering = 'bats'
};

enum {
    kAudioConverterQuality_Max = 0x7F,
    kAudioConverterQuality_High = 0x60, /* the default */
    kAudioConverterQuality_Medium = 0x40,
    kAudioConverterQuality_Low = 0x20,
    kAudioConverterQuality_Min = 0
};

/*
 * A channel map has one entry for each output channel: the input channel, from 0, or -1 for silence; an input
 * channel that does not exist is silent too. Without a map, output channel n plays input channel n, and a
 * single input channel plays on the first two output channels.
 */

/*
 * Prime methods. With Normal, silence precedes the input, and the first output frame has the time of the
 * first input frame. The filter looks ahead, so the first fill pulls trailingFrames more input frames.
 */
enum { kConverterPrimeMethod_Pre = 0, kConverterPrimeMethod_Normal = 1, kConverterPrimeMethod_None = 2 };

/*
 * The reach of the rate filter in input frames: before and after the time of the first output frame. Both
 * fields are 0 at equal rates.
 */
typedef struct AudioConverterPrimeInfo {
    UInt32 leadingFrames;
    UInt32 trailingFrames;
} AudioConverterPrimeInfo;

/*
 * An input procedure: point the buffers of io_data at the next input frames.
 * Shape    io_data has the buffers of the source format, with NULL memory and size 0. *io_packets is the
 *          number of frames requested on entry and supplied on return; fewer or more frames are allowed.
 *          out_descriptions is NULL.
 *          Frames that mDataByteSize does not cover, or that have no memory, are silence. *io_packets itself
 *          is not checked.
 * Owner    the input memory stays the procedure's, and must be valid until the next call of the procedure, a
 *          reset or the disposal.
 * Returns  0 frames and noErr mean the end of the input. 0 frames and an error mean no input for now: the
 *          fill returns the error and the frames made so far, and the next fill continues. Frames returned
 *          with an error are kept for the next fill.
 *          If the procedure disposes the converter, the fill ends with paramErr.
 * Called on the thread of the fill.
 * [any]
 */
typedef OSStatus (*AudioConverterComplexInputDataProc)(AudioConverterRef converter, UInt32* io_packets,
                                                       AudioBufferList* io_data,
                                                       AudioStreamPacketDescription** out_descriptions,
                                                       void* user_data);

/*
 * Make a converter.
 * Shape    both formats: linear PCM of 1 to 1,024 channels; 32-bit or 64-bit float, or integers of 8 to 32
 *          bits in up to 4 bytes, either byte order, packed or aligned, interleaved or not.
 * Owner    the caller disposes *out_converter; the formats are copied.
 * Errors   after an error *out_converter is NULL. FormatNotSupported: another format, or the rates differ and
 *          both sides have more than 128 channels. InputSampleRateOutOfRange, OutputSampleRateOutOfRange: a
 *          rate is not positive and finite, or the output rate is not within 1/256 to 256 times the input
 *          rate. memFullErr: also if 4,096 converters are live.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterNew(const AudioStreamBasicDescription* source,
                                               const AudioStreamBasicDescription* destination,
                                               AudioConverterRef* out_converter);

/*
 * Dispose a converter. A fill in progress on another thread returns paramErr after its next input.
 * Errors   paramErr as listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterDispose(AudioConverterRef converter);

/*
 * Discard unread input and filter history. Call it at every discontinuity of the input, and to continue after
 * the end of the input.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterReset(AudioConverterRef converter);

/*
 * Get the size of a property's value, in bytes, and whether the property can be set. Either out-pointer
 * may be NULL.
 * Errors   PropertyNotSupported: unknown property.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterGetPropertyInfo(AudioConverterRef converter,
                                                           AudioConverterPropertyID property,
                                                           UInt32* out_size, Boolean* out_writable);

/*
 * Get a property's value.
 * Shape    *io_size is the capacity of out_data on entry and the size of the value on return, in bytes.
 * Errors   PropertyNotSupported: unknown property. BadPropertySizeError: the capacity is smaller than the
 *          value.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterGetProperty(AudioConverterRef converter,
                                                       AudioConverterPropertyID property, UInt32* io_size,
                                                       void* out_data);

/*
 * Set a property. Setting complexity, quality or channel map resets the converter. The data is copied.
 * Errors   PropertyNotSupported: unknown property. OperationNotSupported: a read-only property, or a prime
 *          method other than Normal. BadPropertySizeError: size is not the size of the value. paramErr: the
 *          value is out of range.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterSetProperty(AudioConverterRef converter,
                                                       AudioConverterPropertyID property, UInt32 size,
                                                       const void* data);

/*
 * Fill the output buffers, pulling the input that the conversion needs. Neither allocates nor locks. n input
 * frames in all give n * output rate / input rate output frames, rounded up.
 * Shape    out_data has the buffers and channels of the output format. *io_packets is the number of frames
 *          requested on entry and made on return. mDataByteSize is the capacity of each buffer on entry and
 *          the number of bytes made on return. packet_descriptions is ignored.
 * Units    samples of the same kind and width keep their bits. Otherwise an n-bit integer is value / 2^(n-1)
 *          of full scale; writing rounds to nearest, ties to even, and clips at full scale; NaN becomes 0.
 * Returns  fewer frames than requested at the end of the input, when a buffer is full, or with an error of
 *          the input procedure. After the end of the input, 0 frames until a reset.
 * Errors   paramErr: the buffer list does not match the output format, or a buffer has no memory.
 *          InvalidOutputSize: the capacity is less than a frame. Any error of the input procedure.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterFillComplexBuffer(
    AudioConverterRef converter, AudioConverterComplexInputDataProc input, void* user_data,
    UInt32* io_packets, AudioBufferList* out_data, AudioStreamPacketDescription* packet_descriptions);

KVX_PLATFORM_SIZE(AudioConverterPrimeInfo, 8);

KVX_PLATFORM_END

#endif
