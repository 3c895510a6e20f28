// The class table of CoreAudioKVX.
#include "plugin/class_table.h"
#include "coreaudio/audio_object.h"
#include "coreaudio/constants.h"
#include "coreaudio/core_audio.h"
#include "coreaudio/host_clock.h"
#include "coreaudio/property_family.h"
#include "coreaudio/unit_calls.h"
#include "plugin/class_data.h"
#include "plugin/classes.h"

namespace coreaudio {

namespace {

using namespace table;

using Data = CoreAudioData;

// clang-format off
REALproperty properties[] = {
    //           name                                                     type       getter
    KVX_CONSTANT("kAudioHardwarePropertyDevices",                         asString,  getSelector<'dev#'>),
    KVX_CONSTANT("kAudioHardwarePropertyDefaultInputDevice",              asString,  getSelector<'dIn '>),
    KVX_CONSTANT("kAudioHardwarePropertyDefaultOutputDevice",             asString,  getSelector<'dOut'>),
    KVX_CONSTANT("kAudioHardwarePropertyDefaultSystemOutputDevice",       asString,  getSelector<'sOut'>),
    KVX_CONSTANT("kAudioHardwarePropertyDeviceForUID",                    asString,  getSelector<'duid'>),
    KVX_CONSTANT("kAudioHardwarePropertySleepingIsAllowed",               asString,  getSelector<'slep'>),
    KVX_CONSTANT("kAudioHardwarePropertyUnloadingIsAllowed",              asString,  getSelector<'unld'>),
    KVX_CONSTANT("kAudioHardwarePropertyRunLoop",                         asString,  getSelector<'rnlp'>),
    KVX_CONSTANT("kAudioHardwarePropertyBootChimeVolumeScalar",           asString,  getSelector<'bbvs'>),
    KVX_CONSTANT("kAudioHardwarePropertyBootChimeVolumeDecibels",         asString,  getSelector<'bbvd'>),
    KVX_CONSTANT("kAudioHardwarePropertyBootChimeVolumeRangeDecibels",    asString,  getSelector<'bbd#'>),
    KVX_CONSTANT("kAudioHardwarePropertyBootChimeVolumeScalarToDecibels", asString,  getSelector<'bv2d'>),
    KVX_CONSTANT("kAudioHardwarePropertyBootChimeVolumeDecibelsToScalar", asString,  getSelector<'bd2v'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceName",                        asString,  getSelector<'name'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceNameCFString",                asString,  getSelector<'lnam'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceManufacturer",                asString,  getSelector<'makr'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceManufacturerCFString",        asString,  getSelector<'lmak'>),
    KVX_CONSTANT("kAudioDevicePropertyPlugIn",                            asString,  getSelector<'plug'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceUID",                         asString,  getSelector<'uid '>),
    KVX_CONSTANT("kAudioDevicePropertyTransportType",                     asString,  getSelector<'tran'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceIsAlive",                     asString,  getSelector<'livn'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceIsRunning",                   asString,  getSelector<'goin'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceIsRunningSomewhere",          asString,  getSelector<'gone'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceCanBeDefaultDevice",          asString,  getSelector<'dflt'>),
    KVX_CONSTANT("kAudioDevicePropertyDeviceCanBeDefaultSystemDevice",    asString,  getSelector<'sflt'>),
    KVX_CONSTANT("kAudioDevicePropertyJackIsConnected",                   asString,  getSelector<'jack'>),
    KVX_CONSTANT("kAudioDeviceProcessorOverload",                         asString,  getSelector<'over'>),
    KVX_CONSTANT("kAudioDevicePropertyHogMode",                           asString,  getSelector<'oink'>),
    KVX_CONSTANT("kAudioDevicePropertyRegisterBufferList",                asString,  getSelector<'rbuf'>),
    KVX_CONSTANT("kAudioDevicePropertyLatency",                           asString,  getSelector<'ltnc'>),
    KVX_CONSTANT("kAudioDevicePropertyBufferSize",                        asString,  getSelector<'bsiz'>),
    KVX_CONSTANT("kAudioDevicePropertyBufferSizeRange",                   asString,  getSelector<'bsz#'>),
    KVX_CONSTANT("kAudioDevicePropertyBufferFrameSize",                   asString,  getSelector<'fsiz'>),
    KVX_CONSTANT("kAudioDevicePropertyBufferFrameSizeRange",              asString,  getSelector<'fsz#'>),
    KVX_CONSTANT("kAudioDevicePropertyUsesVariableBufferFrameSizes",      asString,  getSelector<'vfsz'>),
    KVX_CONSTANT("kAudioDevicePropertyStreams",                           asString,  getSelector<'stm#'>),
    KVX_CONSTANT("kAudioDevicePropertySafetyOffset",                      asString,  getSelector<'saft'>),
    KVX_CONSTANT("kAudioDevicePropertySupportsMixing",                    asString,  getSelector<'mix?'>),
    KVX_CONSTANT("kAudioDevicePropertyStreamConfiguration",               asString,  getSelector<'slay'>),
    KVX_CONSTANT("kAudioDevicePropertyIOProcStreamUsage",                 asString,  getSelector<'suse'>),
    KVX_CONSTANT("kAudioDevicePropertyPreferredChannelsForStereo",        asString,  getSelector<'dch2'>),
    KVX_CONSTANT("kAudioDevicePropertyNominalSampleRate",                 asString,  getSelector<'nsrt'>),
    KVX_CONSTANT("kAudioDevicePropertyAvailableNominalSampleRates",       asString,  getSelector<'nsr#'>),
    KVX_CONSTANT("kAudioDevicePropertyActualSampleRate",                  asString,  getSelector<'asrt'>),
    KVX_CONSTANT("kAudioDevicePropertyStreamFormat",                      asString,  getSelector<'sfmt'>),
    KVX_CONSTANT("kAudioDevicePropertyStreamFormats",                     asString,  getSelector<'sfm#'>),
    KVX_CONSTANT("kAudioDevicePropertyStreamFormatSupported",             asString,  getSelector<'sfm?'>),
    KVX_CONSTANT("kAudioDevicePropertyStreamFormatMatch",                 asString,  getSelector<'sfmm'>),
    KVX_CONSTANT("kAudioDevicePropertyVolumeScalar",                      asString,  getSelector<'volm'>),
    KVX_CONSTANT("kAudioDevicePropertyVolumeDecibels",                    asString,  getSelector<'vold'>),
    KVX_CONSTANT("kAudioDevicePropertyVolumeRangeDecibels",               asString,  getSelector<'vdb#'>),
    KVX_CONSTANT("kAudioDevicePropertyVolumeScalarToDecibels",            asString,  getSelector<'v2db'>),
    KVX_CONSTANT("kAudioDevicePropertyVolumeDecibelsToScalar",            asString,  getSelector<'db2v'>),
    KVX_CONSTANT("kAudioDevicePropertyMute",                              asString,  getSelector<'mute'>),
    KVX_CONSTANT("kAudioDevicePropertyPlayThru",                          asString,  getSelector<'thru'>),
    KVX_CONSTANT("kAudioDevicePropertyDataSource",                        asString,  getSelector<'ssrc'>),
    KVX_CONSTANT("kAudioDevicePropertyDataSources",                       asString,  getSelector<'ssc#'>),
    KVX_CONSTANT("kAudioDevicePropertyDataSourceNameForID",               asString,  getSelector<'sscn'>),
    KVX_CONSTANT("kAudioDevicePropertyDataSourceNameForIDCFString",       asString,  getSelector<'lscn'>),
    KVX_CONSTANT("kAudioDevicePropertyClockSource",                       asString,  getSelector<'csrc'>),
    KVX_CONSTANT("kAudioDevicePropertyClockSources",                      asString,  getSelector<'csc#'>),
    KVX_CONSTANT("kAudioDevicePropertyClockSourceNameForID",              asString,  getSelector<'cscn'>),
    KVX_CONSTANT("kAudioDevicePropertyClockSourceNameForIDCFString",      asString,  getSelector<'lcsn'>),
    KVX_CONSTANT("kAudioDevicePropertyDriverShouldOwniSub",               asString,  getSelector<'isub'>),
    KVX_CONSTANT("kAudioDevicePropertySubVolumeScalar",                   asString,  getSelector<'svlm'>),
    KVX_CONSTANT("kAudioDevicePropertySubVolumeDecibels",                 asString,  getSelector<'svld'>),
    KVX_CONSTANT("kAudioDevicePropertySubVolumeRangeDecibels",            asString,  getSelector<'svd#'>),
    KVX_CONSTANT("kAudioDevicePropertySubVolumeScalarToDecibels",         asString,  getSelector<'sv2d'>),
    KVX_CONSTANT("kAudioDevicePropertySubVolumeDecibelsToScalar",         asString,  getSelector<'sd2v'>),
    KVX_CONSTANT("kAudioDevicePropertySubMute",                           asString,  getSelector<'smut'>),
    KVX_CONSTANT("kAudioStreamPropertyOwningDevice",                      asString,  getSelector<'stdv'>),
    KVX_CONSTANT("kAudioStreamPropertyDirection",                         asString,  getSelector<'sdir'>),
    KVX_CONSTANT("kAudioStreamPropertyTerminalType",                      asString,  getSelector<'term'>),
    KVX_CONSTANT("kAudioStreamPropertyStartingChannel",                   asString,  getSelector<'schn'>),
    KVX_CONSTANT("kAudioStreamPropertyPhysicalFormat",                    asString,  getSelector<'pft '>),
    KVX_CONSTANT("kAudioStreamPropertyPhysicalFormats",                   asString,  getSelector<'pft#'>),
    KVX_CONSTANT("kAudioStreamPropertyPhysicalFormatSupported",           asString,  getSelector<'pft?'>),
    KVX_CONSTANT("kAudioStreamPropertyPhysicalFormatMatch",               asString,  getSelector<'pftm'>),
    KVX_CONSTANT("kAudioPropertyWildcardPropertyID",                      asString,  getSelector<'****'>),
    KVX_CONSTANT("kAudioPropertyWildcardSection",                         asInteger, getValue<0xFF>),
    KVX_CONSTANT("kAudioPropertyWildcardChannel",                         asInteger, getValue<-1>),

    KVX_FIELD("Lasterror", asInteger, lasterror, readWrite),
};

REALmethod methods[] = {
    //         function                                 declaration
    KVX_METHOD(Family<Device>::SetPropertyString,       "AudioDeviceSetPropertyString(AudioDeviceID as integer, when as memoryblock, channel as integer, isinput as boolean, propertyID as string, data as string)"),
    KVX_METHOD(Family<Device>::SetPropertyMemory,       "AudioDeviceSetPropertyMemory(AudioDeviceID as integer, when as memoryblock, channel as integer, isinput as boolean, propertyID as string, data as memoryblock, offset as integer, length as integer)"),
    KVX_METHOD(Family<Device>::GetPropertyInfo,         "AudioDeviceGetPropertyInfo(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string, byref size as integer, byref writeable as boolean)"),
    KVX_METHOD(Family<Device>::GetPropertyString,       "AudioDeviceGetPropertyString(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string) as string"),
    KVX_METHOD(Family<Device>::GetPropertyMemory,       "AudioDeviceGetPropertyMemory(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string) as memoryblock"),
    KVX_METHOD(Family<Device>::GetPropertyCFString,     "AudioDeviceGetPropertyCFString(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string) as string"),
    KVX_METHOD(Family<Stream>::SetPropertyString,       "AudioStreamSetPropertyString(AudioStreamID as integer, when as memoryblock, channel as integer, propertyID as string, data as string)"),
    KVX_METHOD(Family<Stream>::SetPropertyMemory,       "AudioStreamSetPropertyMemory(AudioStreamID as integer, when as memoryblock, channel as integer, propertyID as string, data as memoryblock, offset as integer, length as integer)"),
    KVX_METHOD(Family<Stream>::GetPropertyInfo,         "AudioStreamGetPropertyInfo(AudioStreamID as integer, channel as integer, propertyID as string, byref size as integer, byref writeable as boolean)"),
    KVX_METHOD(Family<Stream>::GetPropertyString,       "AudioStreamGetPropertyString(AudioStreamID as integer, channel as integer, propertyID as string) as string"),
    KVX_METHOD(Family<Stream>::GetPropertyMemory,       "AudioStreamGetPropertyMemory(AudioStreamID as integer, channel as integer, propertyID as string) as memoryblock"),
    KVX_METHOD(Family<Stream>::GetPropertyCFString,     "AudioStreamGetPropertyCFString(AudioStreamID as integer, channel as integer, propertyID as string) as string"),
    KVX_METHOD(Family<Hardware>::SetPropertyString,     "AudioHardwareSetPropertyString(propertyID as string, data as string)"),
    KVX_METHOD(Family<Hardware>::SetPropertyMemory,     "AudioHardwareSetPropertyMemory(propertyID as string, data as memoryblock, offset as integer, length as integer)"),
    KVX_METHOD(Family<Hardware>::GetPropertyInfo,       "AudioHardwareGetPropertyInfo(propertyID as string, byref size as integer, byref writeable as boolean)"),
    KVX_METHOD(Family<Hardware>::GetPropertyString,     "AudioHardwareGetPropertyString(propertyID as string) as string"),
    KVX_METHOD(Family<Hardware>::GetPropertyMemory,     "AudioHardwareGetPropertyMemory(propertyID as string) as memoryblock"),
    KVX_METHOD(Family<Hardware>::GetPropertyCFString,   "AudioHardwareGetPropertyCFString(propertyID as string) as string"),
    KVX_METHOD(Family<Unit>::SetPropertyString,         "AudioUnitSetPropertyString(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer, data as string)"),
    KVX_METHOD(Family<Unit>::SetPropertyMemory,         "AudioUnitSetPropertyMemory(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer, data as memoryblock, offset as integer, length as integer)"),
    KVX_METHOD(Family<Unit>::GetPropertyInfo,           "AudioUnitGetPropertyInfo(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer, byref size as integer, byref writeable as boolean)"),
    KVX_METHOD(Family<Unit>::GetPropertyString,         "AudioUnitGetPropertyString(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as string"),
    KVX_METHOD(Family<Unit>::GetPropertyMemory,         "AudioUnitGetPropertyMemory(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as memoryblock"),
    KVX_METHOD(Family<Unit>::GetPropertyCFString,       "AudioUnitGetPropertyCFString(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as string"),

    KVX_FLAGLESS_METHOD(AudioObjectGetPropertyDataSize, "AudioObjectGetPropertyDataSize(inObjectID as integer, AddressSelector as UInt32, AddressScope as UInt32, AddressElement as UInt32, QualifierData as memoryblock = nil) as UInt32"),
    KVX_FLAGLESS_METHOD(AudioObjectGetPropertyData,     "AudioObjectGetPropertyData(inObjectID as integer, AddressSelector as UInt32, AddressScope as UInt32, AddressElement as UInt32, QualifierData as memoryblock = nil, InputData as Memoryblock = nil) as memoryblock"),
    KVX_FLAGLESS_METHOD(AudioObjectSetPropertyData,     "AudioObjectSetPropertyData(inObjectID as integer, AddressSelector as UInt32, AddressScope as UInt32, AddressElement as UInt32, Data as Memoryblock, QualifierData as memoryblock = nil)"),

    KVX_FLAGLESS_METHOD(unitCall<::AudioUnitInitialize>,   "AudioUnitInitialize(componenthandle as integer) as integer"),
    KVX_FLAGLESS_METHOD(unitCall<::AudioUnitUninitialize>, "AudioUnitUninitialize(componenthandle as integer) as integer"),
    KVX_FLAGLESS_METHOD(unitCall<::AudioOutputUnitStart>,  "AudioOutputUnitStart(componenthandle as integer) as integer"),
    KVX_FLAGLESS_METHOD(unitCall<::AudioOutputUnitStop>,   "AudioOutputUnitStop(componenthandle as integer) as integer"),
    KVX_FLAGLESS_METHOD(AudioUnitReset,                    "AudioUnitReset(componenthandle as integer, scope as integer, element as integer) as integer"),

    KVX_METHOD(OpenDefaultComponent,  "OpenDefaultComponent(type as string, subtype as string) as integer"),
    KVX_METHOD(CloseComponent,        "CloseComponent(componenthandle as integer)"),
    KVX_METHOD(AudioUnitSetParameter, "AudioUnitSetParameter(AudioUnit as integer, ParameterID as integer, AudioUnitScope as integer, AudioUnitElement as integer, value as single, BufferOffsetInFrames as integer)"),
    KVX_METHOD(AudioUnitGetParameter, "AudioUnitGetParameter(AudioUnit as integer, ParameterID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as single"),
};

SharedMethod sharedMethods[] = {
    //                function                            declaration
    KVX_SHARED_METHOD(CoreAudioGetHostClockFrequencyKVX,  "CoreAudioGetHostClockFrequencyKVX as double"),
    KVX_SHARED_METHOD(GetHostClockMinimumTimeDeltaKVX,    "GetHostClockMinimumTimeDeltaKVX as integer"),
    KVX_SHARED_METHOD(CoreAudioGetCurrentHostTimeKVX,     "CoreAudioGetCurrentHostTimeKVX as UInt64"),
    KVX_SHARED_METHOD(CoreAudioConvertHostTimeToNanosKVX, "CoreAudioConvertHostTimeToNanosKVX(inHostTime as UInt64) as UInt64"),
    KVX_SHARED_METHOD(CoreAudioConvertNanosToHostTimeKVX, "CoreAudioConvertNanosToHostTimeKVX(inNanos as UInt64) as UInt64"),
};
// clang-format on

static_assert(std::size(properties) == 82, "the class is published with 81 constants and Lasterror");
static_assert(std::size(methods) == 36, "the class is published with 36 methods");
static_assert(std::size(sharedMethods) == 5, "the class is published with 5 shared methods");

// The published class has a constructor and a destructor, although an object needs no setup and no cleanup.
void construct(REALobjectStruct*) {}
void destruct(REALobjectStruct*) {}

} // namespace

HostInteger& beginCall(REALobjectStruct* object)
{
    HostInteger& lasterror = classData<CoreAudioData>(object, coreAudioClass).lasterror;
    lasterror = -1;
    return lasterror;
}

} // namespace coreaudio

REALclassDefinition coreAudioClass =
    table::classDefinition<coreaudio::CoreAudioData, coreaudio::construct, coreaudio::destruct>(
        "CoreAudioKVX", {coreaudio::properties, coreaudio::methods, {}, coreaudio::sharedMethods});
