/*
 * Sound files, seen from outside: what they hold, and for how long it plays. C.
 *
 * Owner    an open file is its opener's, who closes it; one that an extended audio file hands out is that
 *          file's. Closing such a one, and then disposing the extended file, is safe.
 *
 * Thread   [any], one call at a time on a file.
 *
 * Errors   below; a NULL, closed or made-up file, and a missing value or size, is paramErr (-50). On opening:
 *          fnfErr (-43), permErr (-54) and others of the file system; InvalidFile for what is no regular
 *          file, or is at odds with itself; UnsupportedFileType for what is no sound file.
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

/* Read-only, all of them. Sizes and numbers of packets are those of codings whose packets are alike; for
 * others they are UnsupportedProperty, as is a depth that there never was. */
enum {
    kAudioFilePropertyFileFormat = 'ffmt',           /* AudioFileTypeID; 0 for a type without a name here */
    kAudioFilePropertyDataFormat = 'dfmt',           /* AudioStreamBasicDescription */
    kAudioFilePropertyAudioDataByteCount = 'bcnt',   /* UInt64 */
    kAudioFilePropertyAudioDataPacketCount = 'pcnt', /* UInt64 */
    kAudioFilePropertyMaximumPacketSize = 'psze',    /* UInt32 bytes */
    kAudioFilePropertyBitRate = 'brat',              /* UInt32 bits a second */
    kAudioFilePropertySourceBitDepth = 'sbtd',       /* SInt32 */
    kAudioFilePropertyEstimatedDuration = 'edur'     /* Float64 seconds */
};

/* Open for reading; another permission is kAudioFilePermissionsError. The hint is not needed. */
KVX_PLATFORM_EXPORT OSStatus AudioFileOpenURL(CFURLRef url, SInt8 permissions, AudioFileTypeID hint,
                                              AudioFileID* out_file);
KVX_PLATFORM_EXPORT OSStatus AudioFileClose(AudioFileID file);

KVX_PLATFORM_EXPORT OSStatus AudioFileGetPropertyInfo(AudioFileID file, AudioFilePropertyID property,
                                                      UInt32* out_size, UInt32* out_is_writable);
KVX_PLATFORM_EXPORT OSStatus AudioFileGetProperty(AudioFileID file, AudioFilePropertyID property,
                                                  UInt32* io_size, void* out_data);

KVX_PLATFORM_END

#endif
