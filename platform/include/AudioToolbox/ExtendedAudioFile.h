/*
 * Sound files whose frames are read in a PCM format of the caller's choice, the client format. C.
 *
 * Units    lengths and positions count frames of the file; ExtAudioFileRead counts frames of the client
 *          format. Sizes are in bytes.
 * Owner    the caller of ExtAudioFileOpenURL disposes the file. The AudioFileID of an extended audio file
 *          belongs to that file.
 * Errors   of every function. paramErr (-50): a NULL, disposed or unknown file, or a required pointer is
 *          NULL; memFullErr (-108): no memory. A refused call changes nothing.
 * One call at a time per file.
 * All functions: [any].
 */
#ifndef AUDIOTOOLBOX_EXTENDEDAUDIOFILE_H
#define AUDIOTOOLBOX_EXTENDEDAUDIOFILE_H

#include <AudioToolbox/AudioFile.h>

KVX_PLATFORM_BEGIN

typedef struct OpaqueExtAudioFile* ExtAudioFileRef;
typedef UInt32 ExtAudioFilePropertyID;

enum {
    kExtAudioFileError_InvalidProperty = -66561,
    kExtAudioFileError_InvalidPropertySize = -66562,
    kExtAudioFileError_NonPCMClientFormat = -66563,
    kExtAudioFileError_InvalidChannelMap = -66564,
    kExtAudioFileError_InvalidOperationOrder = -66565,
    kExtAudioFileError_InvalidDataFormat = -66566,
    kExtAudioFileError_MaxPacketSizeUnknown = -66567,
    kExtAudioFileError_InvalidSeek = -66568,
    kExtAudioFileError_AsyncWriteTooLarge = -66569,
    kExtAudioFileError_AsyncWriteBufferOverflow = -66570
};

enum {
    kExtAudioFileProperty_FileDataFormat = 'ffmt',      /* AudioStreamBasicDescription, read-only */
    kExtAudioFileProperty_ClientDataFormat = 'cfmt',    /* AudioStreamBasicDescription, linear PCM, r/w */
    kExtAudioFileProperty_AudioFile = 'afil',           /* AudioFileID, read-only */
    kExtAudioFileProperty_FileMaxPacketSize = 'fmps',   /* UInt32 bytes, read-only */
    kExtAudioFileProperty_ClientMaxPacketSize = 'cmps', /* UInt32 bytes, read-only */
    kExtAudioFileProperty_FileLengthFrames = '#frm'     /* SInt64 decodable frames, read-only */
};

/*
 * Open a sound file for reading. The client format of a PCM file is the file's format until the caller sets
 * another one. A compressed file has no client format at first.
 * Owner    the caller disposes *out_file; url stays the caller's.
 * Errors   those of AudioFileOpenURL; after an error *out_file is NULL.
 */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileOpenURL(CFURLRef url, ExtAudioFileRef* out_file);

/*
 * Close a file and its AudioFileID.
 * Errors   paramErr as listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileDispose(ExtAudioFileRef file);

/*
 * Get the size of a property's value, in bytes, and whether the property can be set. Either out-pointer
 * may be NULL.
 * Errors   kExtAudioFileError_InvalidProperty: unknown property.
 */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileGetPropertyInfo(ExtAudioFileRef file,
                                                         ExtAudioFilePropertyID property, UInt32* out_size,
                                                         Boolean* out_writable);

/*
 * Get a property's value.
 * Shape    *io_size is the capacity of out_data on entry and the size of the value on return, in bytes.
 * Owner    the AudioFileID belongs to the file. If the caller has closed the AudioFileID, the next call
 *          returns a new one.
 * Errors   after an error nothing is written. InvalidProperty: unknown property. InvalidPropertySize: the
 *          capacity is smaller than the value. MaxPacketSizeUnknown: the coding has no limit. tmfoErr (-42):
 *          too many open AudioFiles.
 */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileGetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property,
                                                     UInt32* io_size, void* out_data);

/*
 * Set the client format. Reading continues at the same position.
 * Errors   after an error the former client format stays. InvalidProperty: unknown or read-only property.
 *          InvalidPropertySize: size is not the size of the value. NonPCMClientFormat: not a linear PCM
 *          format that AudioConverterNew accepts. InvalidDataFormat: the ratio of the rates is beyond 1 to
 *          256, or more than 128 channels would need a rate conversion. InvalidSeek: the position cannot be
 *          reached again.
 */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileSetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property,
                                                     UInt32 size, const void* data);

/*
 * Read the next frames. Native float at the file's channels and rate is decoded straight into the buffers.
 * Shape    io_data has the buffers and channels of the client format. *io_frames is the number of frames
 *          requested on entry and read on return. mDataByteSize is the capacity of each buffer on entry and
 *          the number of bytes read on return.
 * Returns  fewer frames at the end of the file, at damaged data, or when the buffers are smaller than the
 *          request; 0 frames with noErr at the end.
 * Errors   InvalidOperationOrder: a compressed file without a client format. paramErr: the buffer list does
 *          not match the client format, a buffer has no memory, or the capacity is less than a frame. ioErr
 *          (-36): the disk cannot be read.
 */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileRead(ExtAudioFileRef file, UInt32* io_frames,
                                              AudioBufferList* io_data);

/*
 * Set the position of the next read: 0 to the file's length, in frames of the file. A coding without random
 * access is decoded again from the start.
 * Errors   InvalidSeek: the frame is outside the file, or cannot be reached. If the frame cannot be reached,
 *          the position may be at another frame afterwards.
 */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileSeek(ExtAudioFileRef file, SInt64 frame);

/*
 * Get the position of the next read, in frames of the file. Between two frames, the earlier frame is
 * returned.
 * Errors   paramErr as listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileTell(ExtAudioFileRef file, SInt64* out_frame);

KVX_PLATFORM_END

#endif
