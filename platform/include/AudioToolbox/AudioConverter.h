/*
 * Conversion between linear PCM formats: width, byte order, interleaving, channels and rate. C.
 *
 * Owner    a converter is its maker's, who disposes it.
 *
 * Thread   [any], one call at a time on a converter. Filling allocates nothing and takes no lock.
 *
 * Errors   below; a NULL, disposed or made-up converter, and a missing pointer, is paramErr (-50).
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

enum {
    kAudioConverterSampleRateConverterComplexity = 'srca', /* UInt32, read and write */
    kAudioConverterSampleRateConverterQuality = 'srcq',    /* UInt32 0 to 127, read and write */
    kAudioConverterPrimeMethod = 'prmm',                   /* UInt32, read and write */
    kAudioConverterPrimeInfo = 'prim',                     /* AudioConverterPrimeInfo, read */
    kAudioConverterChannelMap = 'chmp', /* SInt32 for each output channel, read and write */
    kAudioConverterCurrentInputStreamDescription = 'acid', /* AudioStreamBasicDescription, read */
    kAudioConverterCurrentOutputStreamDescription = 'acod' /* likewise */
};

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
 * Shape    `io_packets` asks for a count; fewer is taken, and more asked for later, and more is kept. A count
 *          left as it is, is believed: the buffers cover it, or the rest is silence.
 *
 * Result   0 packets and noErr are the end of the input; 0 packets and an error are "none for now": the fill
 *          ends with that error and what was converted so far, and can go on later.
 */
typedef OSStatus (*AudioConverterComplexInputDataProc)(AudioConverterRef converter, UInt32* io_packets,
                                                       AudioBufferList* io_data,
                                                       AudioStreamPacketDescription** out_descriptions,
                                                       void* user_data);

KVX_PLATFORM_EXPORT OSStatus AudioConverterNew(const AudioStreamBasicDescription* source,
                                               const AudioStreamBasicDescription* destination,
                                               AudioConverterRef* out_converter);
KVX_PLATFORM_EXPORT OSStatus AudioConverterDispose(AudioConverterRef converter);

/* Forget the past: for every discontinuity, and before an input that ended can go on. */
KVX_PLATFORM_EXPORT OSStatus AudioConverterReset(AudioConverterRef converter);

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
 * than wanted at the end of the input, or with an error. mDataByteSize of each buffer is its room on the way
 * in and what was written on the way out. `packet_descriptions` may be NULL.
 */
KVX_PLATFORM_EXPORT OSStatus AudioConverterFillComplexBuffer(
    AudioConverterRef converter, AudioConverterComplexInputDataProc input, void* user_data,
    UInt32* io_packets, AudioBufferList* out_data, AudioStreamPacketDescription* packet_descriptions);

KVX_PLATFORM_SIZE(AudioConverterPrimeInfo, 8);

KVX_PLATFORM_END

#endif
