/*
 * Control of the platform itself, for hosts and tests only: what a user would do in the system's settings or
 * with a screwdriver. Plug-ins never include it. C, plain integers, no other header of the platform.
 *
 * Threads: [any] unless said otherwise; none of these may be called from a device's cycle. Device IDs are the
 * audio objects' IDs; 0 is no device. Functions that can fail return 0 for success or the platform's status,
 * and KVXPlatformErrorText() then says in a sentence what went wrong and what to do.
 */
#ifndef KVXPLATFORM_KVXPLATFORM_H
#define KVXPLATFORM_KVXPLATFORM_H

#include <KVXPlatform/export.h>

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t KVXDeviceID;

struct OpaqueExtAudioFile; /* as in AudioToolbox/ExtendedAudioFile.h */

/** A device as a list shows it. Texts are UTF-8 and cut to fit. */
typedef struct KVXDeviceInfo {
    KVXDeviceID device;
    char name[128];
    char manufacturer[64];
    char uid[128];
    double sampleRate;       /**< nominal, Hz */
    uint32_t outputChannels; /**< of all output streams */
    uint32_t inputChannels;
    uint32_t sliceFrames;
    uint32_t latencyFrames;
    uint8_t isSimulated;
    uint8_t isDefaultOutput;
    uint8_t isAlive;
    uint8_t isRunning;
} KVXDeviceInfo;

/** How a simulated device begins. Zero fields take the default in brackets. Rates from 1000 to 768000 Hz, up
 * to 64 channels and slices of up to 8192 frames. */
typedef struct KVXSimulatedDevice {
    const char* name;        /**< ["Simulated Device"] */
    const char* uid;         /**< [made from the name, unique] */
    double sampleRate;       /**< Hz [44100] */
    uint32_t outputChannels; /**< [2; none if there are inputs] */
    uint32_t sliceFrames;    /**< [512] */
    uint32_t latencyFrames;  /**< [0] */
    uint8_t isStepped;       /**< 1: turned by KVXPlatformStep only; 0: paced by a clock of its own */
    uint32_t inputChannels;  /**< [0]; they hear nothing */
} KVXSimulatedDevice;

/* ---- devices ---- */

/** Fill up to `capacity` rows and return how many devices there are. */
KVX_PLATFORM_EXPORT uint32_t KVXPlatformGetDevices(KVXDeviceInfo* rows, uint32_t capacity);

/** The simulated device that is always there. */
KVX_PLATFORM_EXPORT KVXDeviceID KVXPlatformBuiltInSimulatedDevice(void);

/** Plug in another simulated device; the caller may unplug it again. 0 on failure. */
KVX_PLATFORM_EXPORT KVXDeviceID KVXPlatformAddSimulatedDevice(const KVXSimulatedDevice* description);

/** Unplug a simulated device, running or not. Its procedures go on being called, into a discarded buffer,
   until the last has stopped; then the object ends. The default device moves on. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformRemoveSimulatedDevice(KVXDeviceID device);

/** Let a device die where it is: it stays in the list, is no longer alive, and cycles into a discarded
 * buffer. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformKillDevice(KVXDeviceID device);

/** Make AudioDeviceStart on a simulated device fail with `status` from now on; 0 lets it start again. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformRefuseStart(KVXDeviceID device, int32_t status);

/** Change a simulated device; a zero argument leaves that value. Takes effect between two cycles. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformConfigureDevice(KVXDeviceID device, double sampleRate,
                                                       uint32_t outputChannels, uint32_t sliceFrames);

/** Choose the default output device: "simulated", a name (or a part of one that fits a single device), or a
   number as the list has it. The environment's KVX_AUDIO_DEVICE does the same before the first call. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformChooseOutputDevice(const char* choice);

/** Read PortAudio's list again. Fails, and leaves the list as it is, while one of its devices plays, or once
 * one has ended by itself while it played, or its sound server ended. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformRefreshDevices(void);

/** 0 if the devices of PortAudio could be read. If not, the list has simulated devices only. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformCheckHardware(void);

/* ---- time ---- */

/** Have a simulated device stepped (1) or paced (0). */
KVX_PLATFORM_EXPORT int32_t KVXPlatformSetStepped(KVXDeviceID device, uint8_t isStepped);

/** Turn a stepped device by `frames` device frames, on the calling thread, without waiting: whole slices,
   then a shorter one for the rest. Returns the frames that procedures were called for; less than asked when
   the last procedure stopped on the way. */
KVX_PLATFORM_EXPORT uint32_t KVXPlatformStep(KVXDeviceID device, uint32_t frames);

/* ---- what is heard ---- */

/** Receives each cycle's mixed output, interleaved 32-bit float, on the cycle's own thread. Allocates
 * nothing. */
typedef void (*KVXOutputTap)(void* context, const float* samples, uint32_t frames, uint32_t channels);

/** Set the one tap of a device, or none (null). After it returns, the former tap is not called any more. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformSetOutputTap(KVXDeviceID device, KVXOutputTap tap, void* context);

/** Write what `device` plays from now on to a WAV file of 32-bit float, at its rate and channels, off the
    real-time thread. The environment's KVX_AUDIO_CAPTURE does the same for the default device's first start.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformStartCapture(KVXDeviceID device, const char* path);

/** Finish the file: all that was played is in it when this returns. Nothing to finish is no error. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformStopCapture(KVXDeviceID device);

/* ---- sound files ---- */

/** What the platform opens; other sound files are refused with kAudioFileUnsupportedDataFormatError. */
enum {
    KVXLowestFileRate = 1000,    /**< Hz */
    KVXHighestFileRate = 768000, /**< Hz */
    KVXMostFileChannels = 1024
};

/** What a sound file states, beside what it holds. Frames are the file's own. */
typedef struct KVXSoundFileReport {
    int64_t frames;          /**< that decode; kExtAudioFileProperty_FileLengthFrames reads the same */
    int64_t statedFrames;    /**< that the header states; 0 where it states no length, or none in frames */
    uint8_t isCutShort;      /**< a stated length is missed: the file ends before it */
    uint32_t omittedStreams; /**< joined streams that are not decoded: damaged, of an unknown coding, of
                                another rate or channel count, or past the 1,024th */
} KVXSoundFileReport;

/** Report on an open extended audio file (an ExtAudioFileRef). -50 for a NULL or disposed file, or a null
 * report. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformReportSoundFile(struct OpaqueExtAudioFile* file,
                                                       KVXSoundFileReport* outReport);

/* ---- main thread ---- */

/** Run what waits on the main queue; waits up to `timeoutSeconds` for the first. Returns how many ran. [main]
 */
KVX_PLATFORM_EXPORT uint32_t KVXPlatformDrainMainQueue(double timeoutSeconds);

/** What the last failing call on this thread wants the user to know; "" if none failed. Valid until the next.
 */
KVX_PLATFORM_EXPORT const char* KVXPlatformErrorText(void);

/* ---- accounts ---- */

/** Platform objects alive that a caller must release ("CFString", "IOProc", …), for leak reports. Fills up to
    `capacity` rows; returns the number of kinds with a count above zero. */
typedef struct KVXLiveCount {
    const char* kind;
    uint32_t count;
} KVXLiveCount;
KVX_PLATFORM_EXPORT uint32_t KVXPlatformGetLiveCounts(KVXLiveCount* rows, uint32_t capacity);

#ifdef __cplusplus
}
#endif

#endif
