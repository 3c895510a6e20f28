/*
 * Control of the platform, for hosts and tests: actions that a user performs in the system settings, or by
 * plugging in devices. Plug-ins never include this header. C; no other header of the platform is needed.
 *
 * Units    rates in Hz; latencies and slices in frames of the device.
 * Errors   a function with an int32_t result returns 0 or the platform's status; after a failure
 *          KVXPlatformErrorText() names the problem and the next step. Errors of every function with a
 *          device: '!dev': no device has this ID (0 is never a device); 'unop': the function does not support
 *          this kind of device; 'what': no memory or thread.
 * Do not call these functions in an I/O cycle.
 * All functions: [any], unless stated otherwise.
 */
#ifndef KVXPLATFORM_KVXPLATFORM_H
#define KVXPLATFORM_KVXPLATFORM_H

#include <KVXPlatform/export.h>

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The AudioObjectID of a device; 0 for none. */
typedef uint32_t KVXDeviceID;

struct OpaqueExtAudioFile; /* an ExtAudioFileRef points to it */

/* An entry of the device list. Texts are UTF-8, cut to the field's size and terminated. */
typedef struct KVXDeviceInfo {
    KVXDeviceID device;
    char name[128];
    char manufacturer[64];
    char uid[128];
    double sampleRate;       /* Hz, nominal */
    uint32_t outputChannels; /* number of channels of all output streams */
    uint32_t inputChannels;
    uint32_t sliceFrames;
    uint32_t latencyFrames;
    uint8_t isSimulated;
    uint8_t isDefaultOutput;
    uint8_t isAlive;
    uint8_t isRunning;
    char system[32]; /* "JACK", "ALSA", another sound system of PortAudio, or "simulated" */
} KVXDeviceInfo;

/* Settings of a new simulated device. A zero field takes the default in brackets. */
typedef struct KVXSimulatedDevice {
    const char* name;        /* ["Simulated Device"] */
    const char* uid;         /* [a unique one from the name] */
    double sampleRate;       /* 1,000 to 768,000 [44100] */
    uint32_t outputChannels; /* up to 64 [2; 0 if there are inputs] */
    uint32_t sliceFrames;    /* up to 8,192 [512] */
    uint32_t latencyFrames;  /* [0] */
    uint8_t isStepped;       /* 1: runs in KVXPlatformStep only; 0: paced by a clock [0] */
    uint32_t inputChannels;  /* up to 64, silent [0] */
} KVXSimulatedDevice;

/* ---- devices ---- */

/*
 * List the devices.
 * Shape    fills up to `capacity` rows; rows may be NULL if capacity is 0.
 * Returns  the number of devices; 0 without memory.
 */
KVX_PLATFORM_EXPORT uint32_t KVXPlatformGetDevices(KVXDeviceInfo* rows, uint32_t capacity);

/*
 * Find the devices that a user names: the device with the row number `text` ("1" or "row:1"), or with the ID
 * in "id:4"; or else the devices whose name or UID is `text`; or else the devices whose name is `text` in
 * upper or lower case; or else the devices whose name contains `text` in upper or lower case.
 *
 * Shape    fills up to `capacity` rows, in the order of the list; rows may be NULL if capacity is 0.
 * Returns  the number of devices found; 0 for NULL, for "", or without memory.
 */
KVX_PLATFORM_EXPORT uint32_t KVXPlatformFindDevices(const char* text, KVXDeviceInfo* rows, uint32_t capacity);

/* Get the simulated device that always exists. */
KVX_PLATFORM_EXPORT KVXDeviceID KVXPlatformBuiltInSimulatedDevice(void);

/*
 * Plug in a simulated device.
 * Owner    the description is copied. The caller may unplug the device.
 * Returns  the device; 0 if description is NULL, a field is out of range, or there is no memory.
 */
KVX_PLATFORM_EXPORT KVXDeviceID KVXPlatformAddSimulatedDevice(const KVXSimulatedDevice* description);

/*
 * Unplug a simulated device. The device's started I/O procedures are still called, with buffers that are
 * discarded, until the last procedure is stopped. Another default device is chosen.
 * Errors   'unop': the device is not simulated, or is the built-in device.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformRemoveSimulatedDevice(KVXDeviceID device);

/*
 * Make a device die. A dead device stays in the list, is reported as not alive, and calls its I/O procedures
 * with buffers that are discarded.
 * Errors   'unop': the device is the built-in device.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformKillDevice(KVXDeviceID device);

/* Make AudioDeviceStart on a device fail with `status`; a `status` of 0 lets it succeed again. */
KVX_PLATFORM_EXPORT int32_t KVXPlatformRefuseStart(KVXDeviceID device, int32_t status);

/*
 * Change a simulated device between two I/O cycles. A zero argument keeps the present value.
 * Errors   'unop': the device is not simulated. '!dat': a value out of range, or output channels for a device
 *          without outputs.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformConfigureDevice(KVXDeviceID device, double sampleRate,
                                                       uint32_t outputChannels, uint32_t sliceFrames);

/*
 * Choose the default output device, as the environment variable KVX_AUDIO_DEVICE does before the first call.
 * Shape    "simulated", a row number of the list ("1" or "row:1"), an ID ("id:4"), a name, or a part of a
 * name that fits one device only. Errors   '!dev': no device fits, or several devices fit.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformChooseOutputDevice(const char* choice);

/*
 * Read PortAudio's device list again.
 * Errors   'what': a PortAudio device runs, a PortAudio device died while it ran, or the sound server has
 *          ended or does not answer. The list then stays unchanged.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformRefreshDevices(void);

/*
 * Check whether PortAudio's devices could be read. If they could not, the list has simulated devices only.
 * Errors   'what': they could not be read.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformCheckHardware(void);

/* ---- time ---- */

/*
 * Make a simulated device stepped (1) or paced by a clock (0).
 * Errors   'unop': the device is not simulated.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformSetStepped(KVXDeviceID device, uint8_t isStepped);

/*
 * Run I/O cycles of a stepped device on the calling thread, without waiting: whole slices, then a shorter
 * slice for the rest of `frames`.
 * Returns  the number of frames for which I/O procedures were called: fewer than `frames` if the last
 *          procedure stopped; 0 if the device is not stepped, or in an I/O cycle.
 */
KVX_PLATFORM_EXPORT uint32_t KVXPlatformStep(KVXDeviceID device, uint32_t frames);

/* ---- output ---- */

/*
 * A tap: a function that receives the mixed output of each I/O cycle. A tap must neither allocate nor block.
 * Shape    samples[frame * channels + channel], 32-bit float, valid during the call only.
 * [audio & running]
 */
typedef void (*KVXOutputTap)(void* context, const float* samples, uint32_t frames, uint32_t channels);

/*
 * Set the tap of a device; NULL removes it. When the call returns, the former tap is not called any more.
 * Owner    context stays the caller's.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformSetOutputTap(KVXDeviceID device, KVXOutputTap tap, void* context);

/*
 * Write a device's output to a WAV file of 32-bit float, at its rate and channels. A writer thread writes the
 * file. The environment variable KVX_AUDIO_CAPTURE starts such a capture at the first start of the default
 * output device.
 * Owner    path is copied. The caller stops the capture. A former capture of the device is finished first.
 * Errors   'nope': no path. 'unop': the device has no output. 'what': the file cannot be written.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformStartCapture(KVXDeviceID device, const char* path);

/*
 * Finish a capture. Its file then has all output since the start of the capture. No effect if the device has
 * no capture.
 * Errors   'what': frames were lost, the format changed, or the file could not be written.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformStopCapture(KVXDeviceID device);

/* ---- sound files ---- */

/* Limits of sound files. Other files are refused with kAudioFileUnsupportedDataFormatError. */
enum {
    KVXLowestFileRate = 1000,    /* Hz */
    KVXHighestFileRate = 768000, /* Hz */
    KVXMostFileChannels = 1024
};

/* The length of a sound file, and what its header states. Units: frames of the file. */
typedef struct KVXSoundFileReport {
    int64_t frames;          /* number of decodable frames, as kExtAudioFileProperty_FileLengthFrames */
    int64_t statedFrames;    /* number of frames that the header states; 0: not stated in frames */
    uint8_t isCutShort;      /* 1 if the file ends before the stated length */
    uint32_t omittedStreams; /* joined streams that are not decoded: damaged, an unknown
                                coding, another rate or channel count, or after the 1,024th */
} KVXSoundFileReport;

/*
 * Report the length of an open extended audio file.
 * Errors   paramErr (-50): a NULL, disposed or unknown file, or outReport is NULL.
 */
KVX_PLATFORM_EXPORT int32_t KVXPlatformReportSoundFile(struct OpaqueExtAudioFile* file,
                                                       KVXSoundFileReport* outReport);

/* ---- main thread ---- */

/*
 * Run the functions and blocks that are on the main queue. The call waits up to timeoutSeconds for the first
 * one. Functions and blocks that are queued during the call run in the next call.
 * Returns  the number of functions and blocks that ran; 0 on a thread other than the main thread.
 * [main]
 */
KVX_PLATFORM_EXPORT uint32_t KVXPlatformDrainMainQueue(double timeoutSeconds);

/*
 * Get the text of the calling thread's last failure; "" if there was none.
 * Owner    the text belongs to the platform, and is valid until the next failure on this thread.
 */
KVX_PLATFORM_EXPORT const char* KVXPlatformErrorText(void);

/* ---- problem reports ---- */

/* A library that the platform has loaded. Texts are UTF-8, cut to the field's size and terminated. */
typedef struct KVXLibraryInfo {
    char name[32];
    char version[64]; /* as the library reports it: "1.2.0"; "" if it has no function that reports it */
    char path[256];   /* file of the library, without symbolic links; "" if unknown */
    char
        systems[128]; /* PortAudio, after its devices were read: its audio systems, as "ALSA, OSS"; else "" */
} KVXLibraryInfo;

/*
 * List the loaded libraries that decode, convert, stretch and play.
 * Shape    fills up to `capacity` rows; rows may be NULL if capacity is 0.
 * Returns  the number of libraries; 0 without memory.
 */
KVX_PLATFORM_EXPORT uint32_t KVXPlatformGetLibraries(KVXLibraryInfo* rows, uint32_t capacity);

/* ---- leak reports ---- */

/* The number of live objects of a kind that a caller must release, such as "CFString" or "IOProc". */
typedef struct KVXLiveCount {
    const char* kind;
    uint32_t count;
} KVXLiveCount;

/*
 * Count the live objects of each kind, for leak reports.
 * Shape    fills up to `capacity` rows, sorted by kind; rows may be NULL.
 * Owner    the texts of the rows are constant.
 * Returns  the number of kinds with live objects.
 */
KVX_PLATFORM_EXPORT uint32_t KVXPlatformGetLiveCounts(KVXLiveCount* rows, uint32_t capacity);

#ifdef __cplusplus
}
#endif

#endif
