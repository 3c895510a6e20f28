/*
 * Sound files, read in the caller's own PCM format. C.
 *
 * Units    lengths and places in frames of the file, reads in frames of the client format.
 *
 * Owner    a file is its opener's, who disposes it; the handles it gives out stay its own.
 *
 * Thread   [any], one call at a time on a file.
 *
 * Errors   below, and those of AudioFile.h on opening; a missing file is fnfErr (-43), one that may not be
 *          read permErr (-54); a NULL, disposed or made-up file, and a missing value or size, is paramErr
 *          (-50). A refused call changes nothing.
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
    kExtAudioFileProperty_FileDataFormat = 'ffmt',      /* AudioStreamBasicDescription, read */
    kExtAudioFileProperty_ClientDataFormat = 'cfmt',    /* AudioStreamBasicDescription, linear PCM, both */
    kExtAudioFileProperty_AudioFile = 'afil',           /* AudioFileID, read; the file's own */
    kExtAudioFileProperty_FileMaxPacketSize = 'fmps',   /* UInt32 bytes, read */
    kExtAudioFileProperty_ClientMaxPacketSize = 'cmps', /* UInt32 bytes, read */
    kExtAudioFileProperty_FileLengthFrames = '#frm'     /* SInt64, read */
};

/* Open for reading. PCM is read as it stands until a client format is set; coded files need one. */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileOpenURL(CFURLRef url, ExtAudioFileRef* out_file);
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileDispose(ExtAudioFileRef file);

KVX_PLATFORM_EXPORT OSStatus ExtAudioFileGetPropertyInfo(ExtAudioFileRef file,
                                                         ExtAudioFilePropertyID property, UInt32* out_size,
                                                         Boolean* out_writable);
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileGetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property,
                                                     UInt32* io_size, void* out_data);
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileSetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property,
                                                     UInt32 size, const void* data);

/*
 * Read up to `io_frames` frames into the list, and say how many came, also in its buffers' sizes: fewer at
 * the end, or when the buffers are too small for the request; 0 with noErr at the end. Native float of the
 * file's own channels and rate, interleaved, is decoded straight into the buffer.
 *
 * Errors   InvalidOperationOrder for a coded file without a client format; paramErr for a list that does
 *          not fit the format, or has no room for a frame.
 */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileRead(ExtAudioFileRef file, UInt32* io_frames,
                                              AudioBufferList* io_data);

/* Where the next read begins, 0 to the file's length. InvalidSeek elsewhere. */
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileSeek(ExtAudioFileRef file, SInt64 frame);
KVX_PLATFORM_EXPORT OSStatus ExtAudioFileTell(ExtAudioFileRef file, SInt64* out_frame);

KVX_PLATFORM_END

#endif
