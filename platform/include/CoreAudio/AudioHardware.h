/*
 * Audio devices: a tree of objects (the system, its devices, their streams), the properties of each object,
 * and the I/O procedures that a device calls in each I/O cycle. C.
 *
 * Shape    the size of a property value is the capacity of the buffer on entry and the size of the value on
 *          return, in bytes. A capacity above a fixed size is allowed; an array is cut to the items that fit.
 * Owner    the caller releases a CFString from a property. Input data is copied.
 * Errors   of every function; a status of 0 is success.
 *          kAudioHardwareBadObjectError, BadDeviceError, BadStreamError: no object, device or stream has this
 *          ID.
 *          kAudioHardwareUnknownPropertyError: the object has no such property, or not in this scope or
 *          element.
 *          kAudioHardwareBadPropertySizeError: the buffer is smaller than a fixed-size value, a text or a
 *          buffer list; or a new value has another size than the property.
 *          kAudioHardwareUnsupportedOperationError: setting a read-only property.
 *          kAudioHardwareIllegalOperationError: a required pointer is NULL, or the value is out of range.
 *          kAudioDeviceUnsupportedFormatError: the device refuses the format or rate, and keeps its former
 *          one.
 *          kAudioHardwareUnspecifiedError: no memory or thread, or the hardware failed.
 * Property calls may wait for a lock.
 * All functions: [any], unless stated otherwise.
 */
#ifndef COREAUDIO_AUDIOHARDWARE_H
#define COREAUDIO_AUDIOHARDWARE_H

#include <CoreAudio/CoreAudioTypes.h>
#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

/* ---- identifiers ---- */

typedef UInt32 AudioObjectID;
typedef AudioObjectID AudioDeviceID;
typedef AudioObjectID AudioStreamID;
typedef UInt32 AudioClassID;
typedef UInt32 AudioObjectPropertySelector;
typedef UInt32 AudioObjectPropertyScope;
typedef UInt32 AudioObjectPropertyElement; /* 0: master; from 1: a channel */
typedef AudioObjectPropertySelector AudioHardwarePropertyID;
typedef AudioObjectPropertySelector AudioDevicePropertyID;

/* The address of an object's property. A listener can be added with wildcards in the address. */
typedef struct AudioObjectPropertyAddress {
    AudioObjectPropertySelector mSelector;
    AudioObjectPropertyScope mScope;
    AudioObjectPropertyElement mElement;
} AudioObjectPropertyAddress;

/*
 * The streams that an I/O procedure uses.
 * Shape    mNumberStreams flags. A stream whose flag is 0 has mData NULL in the procedure's buffer list.
 */
typedef struct AudioHardwareIOProcStreamUsage {
    void* mIOProc;
    UInt32 mNumberStreams;
    UInt32 mStreamIsOn[1];
} AudioHardwareIOProcStreamUsage;

/* A stream format and its range of sample rates. */
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

/* A macro, because the value is too large for a C enumerator. */
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
    kAudioObjectPropertyOwnedObjects = 'ownd' /* AudioObjectID[]; qualifier: AudioClassID[], a filter */
};

/* ---- selectors of the system object ---- */

enum {
    kAudioHardwarePropertyDevices = 'dev#',                   /* AudioDeviceID[] */
    kAudioHardwarePropertyDefaultInputDevice = 'dIn ',        /* AudioDeviceID, r/w */
    kAudioHardwarePropertyDefaultOutputDevice = 'dOut',       /* AudioDeviceID, r/w */
    kAudioHardwarePropertyDefaultSystemOutputDevice = 'sOut', /* AudioDeviceID, r/w */
    kAudioHardwarePropertyDeviceForUID = 'duid',    /* AudioValueTranslation: CFString to AudioDeviceID */
    kAudioHardwarePropertyProcessIsMaster = 'mast', /* UInt32, also the next eight constants */
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

/* identity */
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

/* operation */
enum {
    kAudioDevicePropertyDeviceIsAlive = 'livn',                /* UInt32 */
    kAudioDevicePropertyDeviceHasChanged = 'diff',             /* UInt32 */
    kAudioDevicePropertyDeviceIsRunning = 'goin',              /* UInt32: started by this process */
    kAudioDevicePropertyDeviceIsRunningSomewhere = 'gone',     /* UInt32: started by any process */
    kAudioDeviceProcessorOverload = 'over',                    /* UInt32, always 0; never notified */
    kAudioDevicePropertyHogMode = 'oink',                      /* pid_t, -1 for none; a set toggles it */
    kAudioDevicePropertyLatency = 'ltnc',                      /* UInt32 frames; add the stream's latency */
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

/* selectors for the streams and the formats of a scope */
enum {
    kAudioDevicePropertyStreams = 'stm#',                    /* AudioStreamID[] */
    kAudioDevicePropertyStreamConfiguration = 'slay',        /* AudioBufferList, mData NULL */
    kAudioDevicePropertyStreamFormat = 'sfmt',               /* AudioStreamBasicDescription, r/w */
    kAudioDevicePropertyStreamFormats = 'sfm#',              /* AudioStreamBasicDescription[] */
    kAudioDevicePropertyStreamFormatSupported = 'sfm?',      /* AudioStreamBasicDescription in; 0 or '!dat' */
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
    kAudioDevicePropertyMute = 'mute', /* UInt32, also the next two constants */
    kAudioDevicePropertySolo = 'solo',
    kAudioDevicePropertyPlayThru = 'thru',
    kAudioDevicePropertyDataSource = 'ssrc',                  /* UInt32 */
    kAudioDevicePropertyDataSources = 'ssc#',                 /* UInt32[] */
    kAudioDevicePropertyDataSourceNameForID = 'sscn',         /* AudioValueTranslation: UInt32 to C text */
    kAudioDevicePropertyDataSourceNameForIDCFString = 'lscn', /* AudioValueTranslation: UInt32 to CFString */
    kAudioDevicePropertyClockSource = 'csrc', /* values as for the four data source selectors */
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
    kAudioDevicePropertySubVolumeScalar = 'svlm', /* low-frequency channel; values as for Volume and Mute */
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
 * A stream's linear PCM virtual format is packed 32-bit float in native byte order, in one interleaved
 * buffer. In a format that is passed to a Supported or Match selector, a field of 0 matches any value.
 */
enum {
    kAudioStreamPropertyDirection = 'sdir',                /* UInt32: 0 output, 1 input */
    kAudioStreamPropertyTerminalType = 'term',             /* UInt32, below */
    kAudioStreamPropertyStartingChannel = 'schn',          /* UInt32, of the device, from 1 */
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

/*
 * A listener of property changes.
 * Shape    one address per call: that of the changed property, without wildcards. The new value is already in
 *          force.
 * Owner    inAddresses is valid during the call only.
 * Returns  ignored.
 * Called on the notification thread, in the order of the changes.
 * [worker]
 */
typedef OSStatus (*AudioObjectPropertyListenerProc)(AudioObjectID inObjectID, UInt32 inNumberAddresses,
                                                    const AudioObjectPropertyAddress inAddresses[],
                                                    void* inClientData);

/* Print the ID and the name of an object to stdout. */
KVX_PLATFORM_EXPORT void AudioObjectShow(AudioObjectID inObjectID);

/*
 * Report whether an object has a property in a scope and element. Returns false also for an unknown object or
 * a NULL address.
 */
KVX_PLATFORM_EXPORT Boolean AudioObjectHasProperty(AudioObjectID inObjectID,
                                                   const AudioObjectPropertyAddress* inAddress);

/*
 * Get whether a property can be set.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AudioObjectIsPropertySettable(AudioObjectID inObjectID,
                                                           const AudioObjectPropertyAddress* inAddress,
                                                           Boolean* outIsSettable);

/*
 * Get the present size of a property's value, in bytes.
 * Shape    only kAudioObjectPropertyOwnedObjects reads the qualifier.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AudioObjectGetPropertyDataSize(AudioObjectID inObjectID,
                                                            const AudioObjectPropertyAddress* inAddress,
                                                            UInt32 inQualifierDataSize,
                                                            const void* inQualifierData, UInt32* outDataSize);

/*
 * Get a property's value.
 * Shape    outData is also an input for an AudioValueTranslation and for a value that is converted in place.
 *          outData may be NULL for an array of size 0.
 * Errors   only those listed in the head comment; after an error nothing is written.
 */
KVX_PLATFORM_EXPORT OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID,
                                                        const AudioObjectPropertyAddress* inAddress,
                                                        UInt32 inQualifierDataSize,
                                                        const void* inQualifierData, UInt32* ioDataSize,
                                                        void* outData);

/*
 * Set a property. The value is in force on return; listeners are called soon after. Setting the present value
 * notifies no listener.
 * Errors   only those listed in the head comment. After an error the former value stays, unless the device
 *          failed (UnspecifiedError).
 * A value set in an I/O cycle applies from a later cycle on.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus AudioObjectSetPropertyData(AudioObjectID inObjectID,
                                                        const AudioObjectPropertyAddress* inAddress,
                                                        UInt32 inQualifierDataSize,
                                                        const void* inQualifierData, UInt32 inDataSize,
                                                        const void* inData);

/*
 * Add a listener of one property, or of several through wildcards. A listener added twice is called twice.
 * Owner    the caller removes the listener; inClientData stays the caller's.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AudioObjectAddPropertyListener(AudioObjectID inObjectID,
                                                            const AudioObjectPropertyAddress* inAddress,
                                                            AudioObjectPropertyListenerProc inListener,
                                                            void* inClientData);

/*
 * Remove the listener that was added with these four arguments. The object may have ceased to exist. The
 * function waits for a call of the listener in progress, except inside a listener; afterwards the listener is
 * not called any more.
 * Errors   IllegalOperationError: no such listener.
 */
KVX_PLATFORM_EXPORT OSStatus AudioObjectRemovePropertyListener(AudioObjectID inObjectID,
                                                               const AudioObjectPropertyAddress* inAddress,
                                                               AudioObjectPropertyListenerProc inListener,
                                                               void* inClientData);

/* ---- older functions for the properties above ---- */

/*
 * In the functions below, inChannel is the element, and isInput selects the input or the output scope. inWhen
 * is ignored, so a set takes effect at once. Values, sizes and errors are those of the functions above.
 */

/*
 * Get the size of a property of the system object, in bytes, and whether the property can be set. Either
 * out-pointer may be NULL.
 */
KVX_PLATFORM_EXPORT OSStatus AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID,
                                                          UInt32* outSize, Boolean* outWritable);

/* Get a property of the system object, as AudioObjectGetPropertyData does. */
KVX_PLATFORM_EXPORT OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID inPropertyID,
                                                      UInt32* ioPropertyDataSize, void* outPropertyData);

/* Set a property of the system object, as AudioObjectSetPropertyData does. */
KVX_PLATFORM_EXPORT OSStatus AudioHardwareSetProperty(AudioHardwarePropertyID inPropertyID,
                                                      UInt32 inPropertyDataSize, const void* inPropertyData);

/*
 * Get the size of a property of a device, in bytes, and whether the property can be set. Either out-pointer
 * may be NULL.
 */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID inDevice, UInt32 inChannel,
                                                        Boolean isInput, AudioDevicePropertyID inPropertyID,
                                                        UInt32* outSize, Boolean* outWritable);

/* Get a property of a device, as AudioObjectGetPropertyData does. */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceGetProperty(AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput,
                                                    AudioDevicePropertyID inPropertyID,
                                                    UInt32* ioPropertyDataSize, void* outPropertyData);

/* Set a property of a device, as AudioObjectSetPropertyData does. */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceSetProperty(AudioDeviceID inDevice, const AudioTimeStamp* inWhen,
                                                    UInt32 inChannel, Boolean isInput,
                                                    AudioDevicePropertyID inPropertyID,
                                                    UInt32 inPropertyDataSize, const void* inPropertyData);

/*
 * Get the size of a property of a stream, in bytes, and whether the property can be set. Either out-pointer
 * may be NULL.
 */
KVX_PLATFORM_EXPORT OSStatus AudioStreamGetPropertyInfo(AudioStreamID inStream, UInt32 inChannel,
                                                        AudioDevicePropertyID inPropertyID, UInt32* outSize,
                                                        Boolean* outWritable);

/* Get a property of a stream, as AudioObjectGetPropertyData does. */
KVX_PLATFORM_EXPORT OSStatus AudioStreamGetProperty(AudioStreamID inStream, UInt32 inChannel,
                                                    AudioDevicePropertyID inPropertyID,
                                                    UInt32* ioPropertyDataSize, void* outPropertyData);

/* Set a property of a stream, as AudioObjectSetPropertyData does. */
KVX_PLATFORM_EXPORT OSStatus AudioStreamSetProperty(AudioStreamID inStream, const AudioTimeStamp* inWhen,
                                                    UInt32 inChannel, AudioDevicePropertyID inPropertyID,
                                                    UInt32 inPropertyDataSize, const void* inPropertyData);

/* ---- I/O procedures ---- */

/* The functions below may be called in an I/O cycle. */

/*
 * An I/O procedure: receive the input and fill the output of one I/O cycle. The procedure must neither
 * allocate nor block.
 * Shape    no argument is NULL. Output buffers are zeroed, and mDataByteSize covers the whole cycle. A scope
 *          without streams has an empty buffer list and a zeroed time stamp. A stream that the procedure does
 *          not use has mData NULL. Each procedure has its own output buffers; the device adds up the buffers
 *          of all procedures.
 * Units    inNow and inOutputTime have a sample time in frames of the device, and a host time; inOutputTime
 *          is one cycle after inNow.
 * Owner    all arguments are valid during the call only. Input is read-only.
 * Returns  ignored.
 * [audio & running]
 */
typedef OSStatus (*AudioDeviceIOProc)(AudioDeviceID inDevice, const AudioTimeStamp* inNow,
                                      const AudioBufferList* inInputData, const AudioTimeStamp* inInputTime,
                                      AudioBufferList* outOutputData, const AudioTimeStamp* inOutputTime,
                                      void* inClientData);

/*
 * The identifier of a registered I/O procedure: the function itself after AudioDeviceAddIOProc, a unique
 * value after AudioDeviceCreateIOProcID.
 */
typedef AudioDeviceIOProc AudioDeviceIOProcID;

/*
 * Register an I/O procedure with a device. The procedure is stopped at first.
 * Owner    the caller removes the procedure, and owns inClientData, which must stay valid until then.
 * Errors   IllegalOperationError: inProc is NULL, or is registered with the same inClientData.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                                  void* inClientData);

/*
 * Stop and unregister an I/O procedure. The function waits for a call of the procedure in progress; inside an
 * I/O cycle it does not wait, but no further call begins.
 * Errors   IllegalOperationError: the procedure is not registered.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceRemoveIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc);

/*
 * Register an I/O procedure under a new ID. One function may have several IDs.
 * Owner    the caller destroys the ID, and owns inClientData, which must stay valid until then.
 * Errors   IllegalOperationError: inProc or outIOProcID is NULL.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceCreateIOProcID(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                                       void* inClientData, AudioDeviceIOProcID* outIOProcID);

/*
 * Stop and unregister the I/O procedure of an ID, as AudioDeviceRemoveIOProc does.
 * Errors   IllegalOperationError: the ID is not registered.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceDestroyIOProcID(AudioDeviceID inDevice,
                                                        AudioDeviceIOProcID inIOProcID);

/*
 * Start calling an I/O procedure. Starting a started procedure has no effect. With an inProcID of NULL, the
 * device runs without a procedure until AudioDeviceStop is called with NULL; starts with NULL are counted. On
 * a dead device the procedure is called with buffers that are discarded.
 * Errors   IllegalOperationError: the ID is not registered. UnspecifiedError: the hardware cannot be opened.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceStart(AudioDeviceID inDevice, AudioDeviceIOProcID inProcID);

/*
 * Stop calling an I/O procedure. The function waits for a call of the procedure in progress; inside an I/O
 * cycle it does not wait, but no further call begins. Stopping a stopped procedure has no effect.
 * Errors   IllegalOperationError: the ID is not registered, or stops with NULL outnumber starts with NULL.
 * [any]
 */
KVX_PLATFORM_EXPORT OSStatus AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProcID inProcID);

/* clang-format off */
KVX_PLATFORM_SIZE(AudioObjectPropertyAddress, 12);
KVX_PLATFORM_OFFSET(AudioObjectPropertyAddress, mElement, 8);
KVX_PLATFORM_SIZE(AudioHardwareIOProcStreamUsage, 12);
KVX_PLATFORM_OFFSET(AudioHardwareIOProcStreamUsage, mStreamIsOn, 8);
KVX_PLATFORM_SIZE(AudioStreamRangedDescription, 56);
KVX_PLATFORM_OFFSET(AudioStreamRangedDescription, mSampleRateRange, 40);
/* clang-format on */

KVX_PLATFORM_END

#endif
