/*
 * Conversion between linear PCM formats: width, byte order, interleaving, channels and rate. C.
 *
 * Owner    a converter is its maker's, who disposes it.
 *
 * Thread   [any], one call at a time on a converter. Filling allocates nothing and takes no lock.
 *
 * Errors   below; a NULL, disposed or made-up converter, and a missing pointer, is paramErr (-50); no memory,
 *          or more than 4,096 converters, memFullErr (-108). A call that changes or fills a converter while
 *          another does, from its input procedure too, is OperationNotSupported.
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

/* A new value forgets the past, as a reset does. */
enum {
    kAudioConverterSampleRateConverterComplexity = 'srca', /* UInt32, read and write */
    kAudioConverterSampleRateConverterQuality = 'srcq',    /* UInt32 0 to 127, read and write: see below */
    kAudioConverterPrimeMethod = 'prmm', /* UInt32, read and write; only Normal can be chosen */
    kAudioConverterPrimeInfo = 'prim',   /* AudioConverterPrimeInfo, read */
    kAudioConverterChannelMap = 'chmp',  /* SInt32 for each output channel, read and write: see below */
    kAudioConverterCurrentInputStreamDescription = 'acid', /* AudioStreamBasicDescription, read */
    kAudioConverterCurrentOutputStreamDescription = 'acod' /* likewise */
};

/* The filter of a rate conversion: Linear is the fastest, Mastering the best; Normal goes by the quality: the
 * fastest below Medium, the best at Max, one between for the rest. */
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

/* A channel map's entry is a source channel from 0, or -1 for silence, as is a channel that the source has
 * not. Without a map channel n plays channel n, and a single channel plays on the first two. */

/* Normal: what lies before the input is silent, and the first frame out stands where the first frame in
 * stood; the filter looks ahead, so the first fill asks for trailingFrames more. */
enum { kConverterPrimeMethod_Pre = 0, kConverterPrimeMethod_Normal = 1, kConverterPrimeMethod_None = 2 };

/* Frames that the first output frame wants from before, and from behind, its place in the input. */
typedef struct AudioConverterPrimeInfo {
    UInt32 leadingFrames;
    UInt32 trailingFrames;
} AudioConverterPrimeInfo;

/*
 * Gives a converter input: points `io_data`'s buffers, which arrive without memory, at frames in the source
 * format and says how many. The memory stays until its next call.
 *
 * Shape    `io_packets` asks for a count; fewer is taken, and more asked for later, and more is kept. The
 *          count is believed, one left as it is, too: frames that a buffer's mDataByteSize does not cover, or
 *          that it has no memory for, are silence. `out_descriptions` is NULL.
 *
 * Result   0 packets and noErr are the end of the input; 0 packets and an error are "none for now": the fill
 *          ends with that error and what was converted so far, and can go on later. Packets that come with
 *          an error are kept for then.
 *
 * Disposing the converter from here ends the fill with paramErr.
 */
typedef OSStatus (*AudioConverterComplexInputDataProc)(AudioConverterRef converter, UInt32* io_packets,
                                                       AudioBufferList* io_data,
                                                       AudioStreamPacketDescription** out_descriptions,
                                                       void* user_data);

/*
 * Errors   FormatNotSupported: a side is not linear PCM (float of 32 or 64 bits, integers of 8 to 32 bits in
 *          up to 4 bytes, either byte order, 1 to 1,024 channels), or the rates differ and both sides have
 *          more than 128 channels; InputSampleRateOutOfRange, OutputSampleRateOutOfRange: a rate is not
 *          positive, or the output's is beyond 1/256 to 256 times the input's.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterNew(const AudioStreamBasicDescription* source,
                                               const AudioStreamBasicDescription* destination,
                                               AudioConverterRef* out_converter);
KVX_PLATFORM_EXPORT OSStatus AudioConverterDispose(AudioConverterRef converter);

/* Forget the past, kept input too: for every discontinuity, and before an input that ended can go on. */
KVX_PLATFORM_EXPORT OSStatus AudioConverterReset(AudioConverterRef converter);

/*
 * Errors   PropertyNotSupported; BadPropertySizeError: room for less than the value, or a new value of
 * another size; OperationNotSupported: a new value for what can only be read, or a prime method but Normal;
 *          paramErr: a value out of range. After an error nothing has changed.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterGetPropertyInfo(AudioConverterRef converter,
                                                           AudioConverterPropertyID property,
                                                           UInt32* out_size, Boolean* out_writable);
KVX_PLATFORM_EXPORT OSStatus AudioConverterGetProperty(AudioConverterRef converter,
                                                       AudioConverterPropertyID property, UInt32* io_size,
                                                       void* out_data);
KVX_PLATFORM_EXPORT OSStatus AudioConverterSetProperty(AudioConverterRef converter,
                                                       AudioConverterPropertyID property, UInt32 size,
                                                       const void* data);

/*
 * Fill the output's buffers, pulling as much input as that takes.
 *
 * Shape    a packet is a frame. `io_packets`: frames wanted on the way in, produced on the way out; fewer
 *          than wanted at the end of the input, with an error, or when a buffer has no room for more.
 *          mDataByteSize of each buffer is its room on the way in and what was written on the way out.
 *          `packet_descriptions` may be NULL. All of an input of n frames makes n x (rate out / rate in)
 *          frames, rounded up; then 0, until a reset.
 *
 * Samples  of the same kind and width keep their bits. Otherwise an integer of n bits is value / 2^(n-1) of
 *          full scale; a narrower one rounds to the nearest, ties to even, and stops at full scale, and what
 *          is not a number becomes 0.
 *
 * Errors   paramErr: the list does not have the output format's buffers and channels, each with memory;
 *          InvalidOutputSize: room for no frame; and the input procedure's own.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterFillComplexBuffer(
    AudioConverterRef converter, AudioConverterComplexInputDataProc input, void* user_data,
    UInt32* io_packets, AudioBufferList* out_data, AudioStreamPacketDescription* packet_descriptions);

KVX_PLATFORM_SIZE(AudioConverterPrimeInfo, 8);

KVX_PLATFORM_END

#endif
