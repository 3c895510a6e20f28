/*
 * Audio devices: one tree of objects (the system, its devices, their streams), their properties, and the
 * procedures that a device calls each cycle. C.
 *
 * Errors   0 is success. An object that is not there is kAudioHardwareBadObjectError (a device
 * kAudioHardwareBadDeviceError, a stream kAudioHardwareBadStreamError), a property it lacks
 * kAudioHardwareUnknownPropertyError, a buffer smaller than a fixed-size value
 * kAudioHardwareBadPropertySizeError.
 * Sizes    in bytes: of the buffer on the way in, of the value on the way out.
 * Owner    a CFString that a property gives is the caller's to release.
 * Thread   [any] unless said otherwise. A property set is a request: it has happened when its listeners are
 * called.
 */
#ifndef COREAUDIO_AUDIOHARDWARE_H
#define COREAUDIO_AUDIOHARDWARE_H

#include <CoreAudio/CoreAudioTypes.h>
#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* ---- names of things ---- */

typedef UInt32 AudioObjectID;
typedef AudioObjectID AudioDeviceID;
typedef AudioObjectID AudioStreamID;
typedef UInt32 AudioClassID;
typedef UInt32 AudioObjectPropertySelector;
typedef UInt32 AudioObjectPropertyScope;
typedef UInt32 AudioObjectPropertyElement; /* 0 the whole, then one a channel */
typedef AudioObjectPropertySelector AudioHardwarePropertyID;
typedef AudioObjectPropertySelector AudioDevicePropertyID;

typedef struct AudioObjectPropertyAddress {
    AudioObjectPropertySelector mSelector;
    AudioObjectPropertyScope mScope;
    AudioObjectPropertyElement mElement;
} AudioObjectPropertyAddress;

/* As long as mNumberStreams says. */
typedef struct AudioHardwareIOProcStreamUsage {
    void* mIOProc;
    UInt32 mNumberStreams;
    UInt32 mStreamIsOn[1];
} AudioHardwareIOProcStreamUsage;

/* A stream format and the rates it is had at. */
typedef struct AudioStreamRangedDescription {
    AudioStreamBasicDescription mFormat;
    AudioValueRange mSampleRateRange;
} AudioStreamRangedDescription;

enum {
    kAudioObjectUnknown = 0,
    kAudioDeviceUnknown = kAudioObjectUnknown,
    kAudioStreamUnknown = kAudioObjectUnknown,
    kAudioObjectSystemObject = 1,

    kAudioObjectPropertyElementMaster = 0,
    kAudioObjectPropertyScopeGlobal = 'glob',
    kAudioDevicePropertyScopeInput = 'inpt',
    kAudioDevicePropertyScopeOutput = 'outp',
    kAudioDevicePropertyScopePlayThrough = 'ptru',

    kAudioObjectPropertySelectorWildcard = '****',
    kAudioObjectPropertyScopeWildcard = '****',
    kAudioPropertyWildcardPropertyID = kAudioObjectPropertySelectorWildcard,
    kAudioPropertyWildcardSection = 0xFF,

    kAudioObjectClassID = 'aobj',
    kAudioSystemObjectClassID = 'asys',
    kAudioDeviceClassID = 'adev',
    kAudioStreamClassID = 'astr',
    kAudioControlClassID = 'actl',
    kAudioPlugInClassID = 'aplg',
    kAudioObjectClassIDWildcard = '****'
};

/* Beyond what a C enumerator holds. */
#define kAudioObjectPropertyElementWildcard ((UInt32)0xFFFFFFFF)
#define kAudioPropertyWildcardChannel kAudioObjectPropertyElementWildcard

enum {
    kAudioHardwareNoError = 0,
    kAudioHardwareNotRunningError = 'stop',
    kAudioHardwareUnspecifiedError = 'what',
    kAudioHardwareUnknownPropertyError = 'who?',
    kAudioHardwareBadPropertySizeError = '!siz',
    kAudioHardwareIllegalOperationError = 'nope',
    kAudioHardwareBadObjectError = '!obj',
    kAudioHardwareBadDeviceError = '!dev',
    kAudioHardwareBadStreamError = '!str',
    kAudioHardwareUnsupportedOperationError = 'unop',
    kAudioDeviceUnsupportedFormatError = '!dat',
    kAudioDevicePermissionsError = '!hog'
};

/* ---- selectors of every object ---- */

enum {
    kAudioObjectPropertyClass = 'clas',               /* AudioClassID */
    kAudioObjectPropertyOwner = 'stdv',               /* AudioObjectID */
    kAudioObjectPropertyCreator = 'oplg',             /* CFString */
    kAudioObjectPropertyName = 'lnam',                /* CFString */
    kAudioObjectPropertyManufacturer = 'lmak',        /* CFString */
    kAudioObjectPropertyElementName = 'lchn',         /* CFString */
    kAudioObjectPropertyElementCategoryName = 'lccn', /* CFString */
    kAudioObjectPropertyElementNumberName = 'lcnn',   /* CFString */
    kAudioObjectPropertyOwnedObjects = 'ownd'         /* AudioObjectID[]; qualifier: AudioClassID[] to list */
};

/* ---- selectors of the system object ---- */

enum {
    kAudioHardwarePropertyDevices = 'dev#',                   /* AudioDeviceID[] */
    kAudioHardwarePropertyDefaultInputDevice = 'dIn ',        /* AudioDeviceID, r/w */
    kAudioHardwarePropertyDefaultOutputDevice = 'dOut',       /* AudioDeviceID, r/w */
    kAudioHardwarePropertyDefaultSystemOutputDevice = 'sOut', /* AudioDeviceID, r/w */
    kAudioHardwarePropertyDeviceForUID = 'duid', /* AudioValueTranslation: CFString to device, 0 for none */
    kAudioHardwarePropertyProcessIsMaster = 'mast', /* UInt32, as the next eight */
    kAudioHardwarePropertyIsInitingOrExiting = 'inot',
    kAudioHardwarePropertyUserIDChanged = 'euid',
    kAudioHardwarePropertyProcessIsAudible = 'pmut',
    kAudioHardwarePropertySleepingIsAllowed = 'slep',
    kAudioHardwarePropertyUnloadingIsAllowed = 'unld',
    kAudioHardwarePropertyHogModeIsAllowed = 'hogr',
    kAudioHardwarePropertyUserSessionIsActiveOrHeadless = 'user',
    kAudioHardwarePropertyMixStereoToMono = 'stmo',
    kAudioHardwarePropertyRunLoop = 'rnlp',          /* CFRunLoop, r/w */
    kAudioHardwarePropertyPlugInForBundleID = 'pibi' /* AudioValueTranslation */
};

enum {
    kAudioHardwarePropertyBootChimeVolumeScalar = 'bbvs',                          /* Float32 */
    kAudioHardwarePropertyBootChimeVolumeDecibels = 'bbvd',                        /* Float32 */
    kAudioHardwarePropertyBootChimeVolumeRangeDecibels = 'bbd#',                   /* AudioValueRange */
    kAudioHardwarePropertyBootChimeVolumeScalarToDecibels = 'bv2d',                /* Float32 in place */
    kAudioHardwarePropertyBootChimeVolumeDecibelsToScalar = 'bd2v',                /* Float32 in place */
    kAudioHardwarePropertyBootChimeVolumeDecibelsToScalarTransferFunction = 'bvtf' /* UInt32 */
};

/* ---- selectors of devices ---- */

/* what it is */
enum {
    kAudioDevicePropertyPlugIn = 'plug',                         /* OSStatus */
    kAudioDevicePropertyConfigurationApplication = 'capp',       /* CFString */
    kAudioDevicePropertyDeviceUID = 'uid ',                      /* CFString */
    kAudioDevicePropertyModelUID = 'muid',                       /* CFString */
    kAudioDevicePropertyTransportType = 'tran',                  /* UInt32, below */
    kAudioDevicePropertyRelatedDevices = 'akin',                 /* AudioDeviceID[] */
    kAudioDevicePropertyClockDomain = 'clkd',                    /* UInt32 */
    kAudioDevicePropertyDeviceCanBeDefaultDevice = 'dflt',       /* UInt32 */
    kAudioDevicePropertyDeviceCanBeDefaultSystemDevice = 'sflt', /* UInt32 */
    kAudioDevicePropertyIcon = 'icon',                           /* CFURL */
    kAudioDevicePropertyIsHidden = 'hidn',                       /* UInt32 */
    kAudioDevicePropertyDeviceName = 'name',                     /* C text */
    kAudioDevicePropertyDeviceNameCFString = kAudioObjectPropertyName,
    kAudioDevicePropertyDeviceManufacturer = 'makr', /* C text */
    kAudioDevicePropertyDeviceManufacturerCFString = kAudioObjectPropertyManufacturer,
    kAudioDevicePropertyChannelName = 'chnm', /* C text */
    kAudioDevicePropertyChannelNameCFString = kAudioObjectPropertyElementName,
    kAudioDevicePropertyChannelCategoryName = 'ccnm', /* C text */
    kAudioDevicePropertyChannelCategoryNameCFString = kAudioObjectPropertyElementCategoryName,
    kAudioDevicePropertyChannelNumberName = 'cnnm', /* C text */
    kAudioDevicePropertyChannelNumberNameCFString = kAudioObjectPropertyElementNumberName
};

/* how it runs */
enum {
    kAudioDevicePropertyDeviceIsAlive = 'livn',                /* UInt32 */
    kAudioDevicePropertyDeviceHasChanged = 'diff',             /* UInt32 */
    kAudioDevicePropertyDeviceIsRunning = 'goin',              /* UInt32: for this process */
    kAudioDevicePropertyDeviceIsRunningSomewhere = 'gone',     /* UInt32: for any */
    kAudioDeviceProcessorOverload = 'over',                    /* UInt32; told from the [audio] thread */
    kAudioDevicePropertyHogMode = 'oink',                      /* pid_t, -1 for none; setting toggles */
    kAudioDevicePropertyLatency = 'ltnc',                      /* UInt32 frames; device and stream add up */
    kAudioDevicePropertySafetyOffset = 'saft',                 /* UInt32 frames */
    kAudioDevicePropertyBufferFrameSize = 'fsiz',              /* UInt32 frames, r/w */
    kAudioDevicePropertyBufferFrameSizeRange = 'fsz#',         /* AudioValueRange */
    kAudioDevicePropertyUsesVariableBufferFrameSizes = 'vfsz', /* UInt32: the largest slice */
    kAudioDevicePropertyBufferSize = 'bsiz',                   /* UInt32 bytes */
    kAudioDevicePropertyBufferSizeRange = 'bsz#',              /* AudioValueRange, bytes */
    kAudioDevicePropertyRegisterBufferList = 'rbuf',           /* AudioBufferList */
    kAudioDevicePropertySupportsMixing = 'mix?',               /* UInt32 */
    kAudioDevicePropertyIOCycleUsage = 'ncyc',                 /* Float32, 0 to 1 */
    kAudioDevicePropertyIOProcStreamUsage = 'suse',            /* AudioHardwareIOProcStreamUsage */
    kAudioDevicePropertyNominalSampleRate = 'nsrt',            /* Float64 Hz, r/w */
    kAudioDevicePropertyActualSampleRate = 'asrt',             /* Float64 Hz */
    kAudioDevicePropertyAvailableNominalSampleRates = 'nsr#'   /* AudioValueRange[] */
};

/* what it carries, each scope apart */
enum {
    kAudioDevicePropertyStreams = 'stm#',                    /* AudioStreamID[] */
    kAudioDevicePropertyStreamConfiguration = 'slay',        /* AudioBufferList without data */
    kAudioDevicePropertyStreamFormat = 'sfmt',               /* AudioStreamBasicDescription, r/w */
    kAudioDevicePropertyStreamFormats = 'sfm#',              /* AudioStreamBasicDescription[] */
    kAudioDevicePropertyStreamFormatSupported = 'sfm?',      /* AudioStreamBasicDescription in: 0 or '!dat' */
    kAudioDevicePropertyStreamFormatMatch = 'sfmm',          /* AudioStreamBasicDescription in place */
    kAudioDevicePropertyPreferredChannelsForStereo = 'dch2', /* UInt32[2] */
    kAudioDevicePropertyPreferredChannelLayout = 'srnd'      /* AudioChannelLayout */
};

/* controls */
enum {
    kAudioDevicePropertyJackIsConnected = 'jack',                        /* UInt32 */
    kAudioDevicePropertyVolumeScalar = 'volm',                           /* Float32, 0 to 1, r/w */
    kAudioDevicePropertyVolumeDecibels = 'vold',                         /* Float32, r/w */
    kAudioDevicePropertyVolumeRangeDecibels = 'vdb#',                    /* AudioValueRange */
    kAudioDevicePropertyVolumeScalarToDecibels = 'v2db',                 /* Float32 in place */
    kAudioDevicePropertyVolumeDecibelsToScalar = 'db2v',                 /* Float32 in place */
    kAudioDevicePropertyVolumeDecibelsToScalarTransferFunction = 'vctf', /* UInt32 */
    kAudioDevicePropertyStereoPan = 'span',                              /* Float32 */
    kAudioDevicePropertyStereoPanChannels = 'spn#',                      /* UInt32[2] */
    kAudioDevicePropertyMute = 'mute',                                   /* UInt32, as the next two */
    kAudioDevicePropertySolo = 'solo',
    kAudioDevicePropertyPlayThru = 'thru',
    kAudioDevicePropertyDataSource = 'ssrc',                  /* UInt32 */
    kAudioDevicePropertyDataSources = 'ssc#',                 /* UInt32[] */
    kAudioDevicePropertyDataSourceNameForID = 'sscn',         /* AudioValueTranslation: UInt32 to C text */
    kAudioDevicePropertyDataSourceNameForIDCFString = 'lscn', /* AudioValueTranslation: UInt32 to CFString */
    kAudioDevicePropertyClockSource = 'csrc',                 /* the same four for clocks */
    kAudioDevicePropertyClockSources = 'csc#',
    kAudioDevicePropertyClockSourceNameForID = 'cscn',
    kAudioDevicePropertyClockSourceNameForIDCFString = 'lcsn',
    kAudioDevicePropertyPlayThruSolo = 'thrs',
    kAudioDevicePropertyPlayThruVolumeScalar = 'mvsc',
    kAudioDevicePropertyPlayThruVolumeDecibels = 'mvdb',
    kAudioDevicePropertyPlayThruVolumeRangeDecibels = 'mvd#',
    kAudioDevicePropertyPlayThruVolumeScalarToDecibels = 'mv2d',
    kAudioDevicePropertyPlayThruVolumeDecibelsToScalar = 'mv2s',
    kAudioDevicePropertyPlayThruStereoPan = 'mspn',
    kAudioDevicePropertyPlayThruStereoPanChannels = 'msp#',
    kAudioDevicePropertyPlayThruDestination = 'mdds',
    kAudioDevicePropertyPlayThruDestinations = 'mdd#',
    kAudioDevicePropertyPlayThruDestinationNameForIDCFString = 'mddc',
    kAudioDevicePropertyPlayThruDestinationNameForID = 'mddn',
    kAudioDevicePropertyChannelNominalLineLevel = 'nlvl',
    kAudioDevicePropertyChannelNominalLineLevels = 'nlv#',
    kAudioDevicePropertyChannelNominalLineLevelNameForIDCFString = 'lcnl',
    kAudioDevicePropertyChannelNominalLineLevelNameForID = 'cnlv',
    kAudioDevicePropertyDriverShouldOwniSub = 'isub',
    kAudioDevicePropertySubVolumeScalar = 'svlm', /* as the volume, of the low-frequency channel */
    kAudioDevicePropertySubVolumeDecibels = 'svld',
    kAudioDevicePropertySubVolumeRangeDecibels = 'svd#',
    kAudioDevicePropertySubVolumeScalarToDecibels = 'sv2d',
    kAudioDevicePropertySubVolumeDecibelsToScalar = 'sd2v',
    kAudioDevicePropertySubMute = 'smut'
};

enum {
    kAudioDeviceTransportTypeUnknown = 0,
    kAudioDeviceTransportTypeBuiltIn = 'bltn',
    kAudioDeviceTransportTypeAggregate = 'grup',
    kAudioDeviceTransportTypeAutoAggregate = 'fgrp',
    kAudioDeviceTransportTypeVirtual = 'virt',
    kAudioDeviceTransportTypePCI = 'pci ',
    kAudioDeviceTransportTypeUSB = 'usb ',
    kAudioDeviceTransportTypeFireWire = '1394',
    kAudioDeviceTransportTypeBluetooth = 'blue'
};

/* ---- selectors of streams ---- */

/*
 * A linear virtual format is always native-endian packed 32-bit float, one interleaved buffer a stream. A
 * format that is asked about has zero in the fields that do not matter.
 */
enum {
    kAudioStreamPropertyDirection = 'sdir',                /* UInt32: 0 output, 1 input */
    kAudioStreamPropertyTerminalType = 'term',             /* UInt32, below */
    kAudioStreamPropertyStartingChannel = 'schn',          /* UInt32, the device's channel, from 1 */
    kAudioStreamPropertyLatency = 'ltnc',                  /* UInt32 frames */
    kAudioStreamPropertyOwningDevice = 'stdv',             /* AudioDeviceID */
    kAudioStreamPropertyVirtualFormat = 'sfmt',            /* AudioStreamBasicDescription, r/w */
    kAudioStreamPropertyAvailableVirtualFormats = 'sfma',  /* AudioStreamRangedDescription[] */
    kAudioStreamPropertyPhysicalFormat = 'pft ',           /* AudioStreamBasicDescription, r/w */
    kAudioStreamPropertyAvailablePhysicalFormats = 'pfta', /* AudioStreamRangedDescription[] */
    kAudioStreamPropertyPhysicalFormats = 'pft#',          /* AudioStreamBasicDescription[] */
    kAudioStreamPropertyPhysicalFormatSupported = 'pft?',  /* AudioStreamBasicDescription in: 0 or '!dat' */
    kAudioStreamPropertyPhysicalFormatMatch = 'pftm'       /* AudioStreamBasicDescription in place */
};

enum {
    kAudioStreamTerminalTypeUnknown = 0,
    kAudioStreamTerminalTypeLine = 'line',
    kAudioStreamTerminalTypeDigitalAudioInterface = 'spdf',
    kAudioStreamTerminalTypeSpeaker = 'spkr',
    kAudioStreamTerminalTypeHeadphones = 'hdph',
    kAudioStreamTerminalTypeLFESpeaker = 'lfes',
    kAudioStreamTerminalTypeReceiverSpeaker = 'rspk',
    kAudioStreamTerminalTypeMicrophone = 'micr',
    kAudioStreamTerminalTypeHeadsetMicrophone = 'hmic',
    kAudioStreamTerminalTypeReceiverMicrophone = 'rmic',
    kAudioStreamTerminalTypeTTY = 'tty_'
};

/* ---- properties of any object ---- */

/* Told of changes: at least one of the addresses was asked for. The result is not used. Thread: one of the
 * platform's own; DeviceIsRunning and ProcessorOverload may come on the [audio] thread. */
typedef OSStatus (*AudioObjectPropertyListenerProc)(AudioObjectID inObjectID, UInt32 inNumberAddresses,
                                                    const AudioObjectPropertyAddress inAddresses[],
                                                    void* inClientData);

/* Write a description of the object to the standard output. */
KVX_PLATFORM_EXPORT void AudioObjectShow(AudioObjectID inObjectID);

KVX_PLATFORM_EXPORT Boolean AudioObjectHasProperty(AudioObjectID inObjectID,
                                                   const AudioObjectPropertyAddress* inAddress);

KVX_PLATFORM_EXPORT OSStatus AudioObjectIsPropertySettable(AudioObjectID inObjectID,
                                                           const AudioObjectPropertyAddress* inAddress,
                                                           Boolean* outIsSettable);

KVX_PLATFORM_EXPORT OSStatus AudioObjectGetPropertyDataSize(AudioObjectID inObjectID,
                                                            const AudioObjectPropertyAddress* inAddress,
                                                            UInt32 inQualifierDataSize,
                                                            const void* inQualifierData, UInt32* outDataSize);

KVX_PLATFORM_EXPORT OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID,
                                                        const AudioObjectPropertyAddress* inAddress,
                                                        UInt32 inQualifierDataSize,
                                                        const void* inQualifierData, UInt32* ioDataSize,
                                                        void* outData);

KVX_PLATFORM_EXPORT OSStatus AudioObjectSetPropertyData(AudioObjectID inObjectID,
                                                        const AudioObjectPropertyAddress* inAddress,
                                                        UInt32 inQualifierDataSize,
                                                        const void* inQualifierData, UInt32 inDataSize,
                                                        const void* inData);

/* The address may hold wildcards. */
KVX_PLATFORM_EXPORT OSStatus AudioObjectAddPropertyListener(AudioObjectID inObjectID,
                                                            const AudioObjectPropertyAddress* inAddress,
                                                            AudioObjectPropertyListenerProc inListener,
                                                            void* inClientData);

/* Ends the listener that was added with the same four arguments. */
KVX_PLATFORM_EXPORT OSStatus AudioObjectRemovePropertyListener(AudioObjectID inObjectID,
                                                               const AudioObjectPropertyAddress* inAddress,
                                                               AudioObjectPropertyListenerProc inListener,
                                                               void* inClientData);

/* ---- the same properties by the older calls ---- */

/* Channel 0 is the whole; isInput is 0 for the output side. In the info calls either out-pointer may be NULL;
 * in the setting ones a NULL time is now. */

KVX_PLATFORM_EXPORT OSStatus AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID,
                                                          UInt32* outSize, Boolean* outWritable);

KVX_PLATFORM_EXPORT OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID inPropertyID,
                                                      UInt32* ioPropertyDataSize, void* outPropertyData);

KVX_PLATFORM_EXPORT OSStatus AudioHardwareSetProperty(AudioHardwarePropertyID inPropertyID,
                                                      UInt32 inPropertyDataSize, const void* inPropertyData);

KVX_PLATFORM_EXPORT OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID inDevice, UInt32 inChannel,
                                                        Boolean isInput, AudioDevicePropertyID inPropertyID,
                                                        UInt32* outSize, Boolean* outWritable);

KVX_PLATFORM_EXPORT OSStatus AudioDeviceGetProperty(AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput,
                                                    AudioDevicePropertyID inPropertyID,
                                                    UInt32* ioPropertyDataSize, void* outPropertyData);

KVX_PLATFORM_EXPORT OSStatus AudioDeviceSetProperty(AudioDeviceID inDevice, const AudioTimeStamp* inWhen,
                                                    UInt32 inChannel, Boolean isInput,
                                                    AudioDevicePropertyID inPropertyID,
                                                    UInt32 inPropertyDataSize, const void* inPropertyData);

KVX_PLATFORM_EXPORT OSStatus AudioStreamGetPropertyInfo(AudioStreamID inStream, UInt32 inChannel,
                                                        AudioDevicePropertyID inPropertyID, UInt32* outSize,
                                                        Boolean* outWritable);

KVX_PLATFORM_EXPORT OSStatus AudioStreamGetProperty(AudioStreamID inStream, UInt32 inChannel,
                                                    AudioDevicePropertyID inPropertyID,
                                                    UInt32* ioPropertyDataSize, void* outPropertyData);

KVX_PLATFORM_EXPORT OSStatus AudioStreamSetProperty(AudioStreamID inStream, const AudioTimeStamp* inWhen,
                                                    UInt32 inChannel, AudioDevicePropertyID inPropertyID,
                                                    UInt32 inPropertyDataSize, const void* inPropertyData);

/* ---- procedures of a device's cycle ---- */

/*
 * Called for each slice. Thread [audio & running]: allocate nothing, wait for nothing. The result is not
 * used.
 *
 * Shape    output buffers come filled with zero, their byte sizes covering the whole slice. On a side without
 * streams the list has no data and the time is all zero; no argument is NULL. A stream switched off has mData
 * NULL. Every procedure has buffers of its own, which are mixed by addition.
 */
typedef OSStatus (*AudioDeviceIOProc)(AudioDeviceID inDevice, const AudioTimeStamp* inNow,
                                      const AudioBufferList* inInputData, const AudioTimeStamp* inInputTime,
                                      AudioBufferList* outOutputData, const AudioTimeStamp* inOutputTime,
                                      void* inClientData);

typedef AudioDeviceIOProc AudioDeviceIOProcID;

KVX_PLATFORM_EXPORT OSStatus AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                                  void* inClientData);

/* Stops it first where it runs. From inside its own call it is the last call. */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceRemoveIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc);

/* As adding, but one function can be had several times, each under an ID of its own. */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceCreateIOProcID(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                                       void* inClientData, AudioDeviceIOProcID* outIOProcID);
KVX_PLATFORM_EXPORT OSStatus AudioDeviceDestroyIOProcID(AudioDeviceID inDevice,
                                                        AudioDeviceIOProcID inIOProcID);

/* A NULL procedure starts the device itself, until a stop with NULL. */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceStart(AudioDeviceID inDevice, AudioDeviceIOProcID inProcID);

/* From inside the procedure it takes effect at once; from elsewhere a call may still be under way on return.
 */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProcID inProcID);

// clang-format off
KVX_PLATFORM_SIZE(AudioObjectPropertyAddress, 12);
KVX_PLATFORM_OFFSET(AudioObjectPropertyAddress, mElement, 8);
KVX_PLATFORM_SIZE(AudioHardwareIOProcStreamUsage, 12);
KVX_PLATFORM_OFFSET(AudioHardwareIOProcStreamUsage, mStreamIsOn, 8);
KVX_PLATFORM_SIZE(AudioStreamRangedDescription, 56);
KVX_PLATFORM_OFFSET(AudioStreamRangedDescription, mSampleRateRange, 40);
// clang-format on

KVX_PLATFORM_END

#endif
