/*
 * Sound files: what a file contains, without its samples. C.
 *
 * Owner    the caller of AudioFileOpenURL closes the file. A file from kExtAudioFileProperty_AudioFile
 *          belongs to its extended audio file; the caller may close it too.
 * Errors   of every function. paramErr (-50): a NULL, closed or unknown file, or a required pointer is NULL;
 *          memFullErr (-108): no memory. Further errors are in the enumeration below.
 * One call at a time per file.
 * All functions: [any].
 */
#ifndef AUDIOTOOLBOX_AUDIOFILE_H
#define AUDIOTOOLBOX_AUDIOFILE_H

#include <CoreAudio/CoreAudioTypes.h>
#include <CoreFoundation/CoreFoundation.h>
#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

typedef struct OpaqueAudioFileID* AudioFileID;
typedef UInt32 AudioFileTypeID;
typedef UInt32 AudioFilePropertyID;

enum {
    kAudioFileAIFFType = 'AIFF',
    kAudioFileAIFCType = 'AIFC',
    kAudioFileWAVEType = 'WAVE',
    kAudioFileSoundDesigner2Type = 'Sd2f',
    kAudioFileNextType = 'NeXT',
    kAudioFileMP3Type = 'MPG3',
    kAudioFileMP2Type = 'MPG2',
    kAudioFileMP1Type = 'MPG1',
    kAudioFileAC3Type = 'ac-3',
    kAudioFileAAC_ADTSType = 'adts',
    kAudioFileMPEG4Type = 'mp4f',
    kAudioFileM4AType = 'm4af',
    kAudioFileCAFType = 'caff'
};

enum {
    kAudioFileUnspecifiedError = 'wht?',
    kAudioFileUnsupportedFileTypeError = 'typ?',
    kAudioFileUnsupportedDataFormatError = 'fmt?',
    kAudioFileUnsupportedPropertyError = 'pty?',
    kAudioFileBadPropertySizeError = '!siz',
    kAudioFilePermissionsError = 'prm?',
    kAudioFileNotOptimizedError = 'optm',
    kAudioFileInvalidChunkError = 'chk?',
    kAudioFileDoesNotAllow64BitDataSizeError = 'off?',
    kAudioFileInvalidPacketOffsetError = 'pck?',
    kAudioFileInvalidFileError = 'dta?',
    kAudioFileOperationNotSupportedError = 0x6F703F3F
};

enum { kAudioFileReadPermission = 1, kAudioFileWritePermission = 2, kAudioFileReadWritePermission = 3 };

/*
 * Properties, all read-only. If a file has no value for a property, kAudioFileUnsupportedPropertyError is
 * returned.
 */
enum {
    kAudioFilePropertyFileFormat = 'ffmt',           /* AudioFileTypeID; 0 for a type without a constant */
    kAudioFilePropertyDataFormat = 'dfmt',           /* AudioStreamBasicDescription */
    kAudioFilePropertyAudioDataByteCount = 'bcnt',   /* UInt64 bytes; if a packet is one frame */
    kAudioFilePropertyAudioDataPacketCount = 'pcnt', /* UInt64; if a packet is one frame */
    kAudioFilePropertyMaximumPacketSize = 'psze',    /* UInt32 bytes; if the coding has a limit */
    kAudioFilePropertyBitRate = 'brat',              /* UInt32 bits per second */
    kAudioFilePropertySourceBitDepth = 'sbtd',       /* SInt32 bits per sample before encoding, if known */
    kAudioFilePropertyEstimatedDuration = 'edur'     /* Float64 seconds */
};

/*
 * Open a sound file for reading. The type is recognised from the contents.
 * Shape    permissions is kAudioFileReadPermission; hint is ignored.
 * Owner    the caller closes *out_file; url stays the caller's.
 * Errors   after an error *out_file is NULL.
 *          kAudioFilePermissionsError: permissions other than reading.
 *          fnfErr (-43): no such file; permErr (-54): not readable; errFSNameTooLong (-1410): name too long;
 *          tmfoErr (-42): too many open files, or 4,096 open AudioFiles; kPOSIXErrorBase + errno: any other
 *          error of the system; ioErr (-36): a read failed. kAudioFileUnsupportedFileTypeError: not a sound
 *          file. kAudioFileUnsupportedDataFormatError: the coding cannot be decoded, or the rate or channel
 *          count is beyond the limits in KVXPlatform.h. kAudioFileInvalidFileError: a folder, pipe, socket or
 *          device, or a header that contradicts itself.
 */
KVX_PLATFORM_EXPORT OSStatus AudioFileOpenURL(CFURLRef url, SInt8 permissions, AudioFileTypeID hint,
                                              AudioFileID* out_file);

/*
 * Close a file. An extended audio file stays open when its AudioFileID is closed.
 * Errors   paramErr as listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AudioFileClose(AudioFileID file);

/*
 * Get the size of a property's value, which is the same for every file.
 * Shape    either out-pointer may be NULL.
 * Units    *out_size in bytes; *out_is_writable is always 0.
 * Errors   kAudioFileUnsupportedPropertyError: unknown property.
 */
KVX_PLATFORM_EXPORT OSStatus AudioFileGetPropertyInfo(AudioFileID file, AudioFilePropertyID property,
                                                      UInt32* out_size, UInt32* out_is_writable);

/*
 * Get a property's value.
 * Shape    *io_size is the capacity of out_data on entry and the size of the value on return, in bytes.
 * Errors   after an error nothing is written. kAudioFileUnsupportedPropertyError: unknown property, or this
 *          file has no such value. kAudioFileBadPropertySizeError: the capacity is smaller than the value.
 */
KVX_PLATFORM_EXPORT OSStatus AudioFileGetProperty(AudioFileID file, AudioFilePropertyID property,
                                                  UInt32* io_size, void* out_data);

KVX_PLATFORM_END

#endif
