// CoreAudioKVX as the host sees it.
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

// clang-format off
REALproperty properties[] = {
    //       name                                                     type       getter       parameter
    constant("kAudioHardwarePropertyDevices",                         asString,  getSelector, 'dev#'),
    constant("kAudioHardwarePropertyDefaultInputDevice",              asString,  getSelector, 'dIn '),
    constant("kAudioHardwarePropertyDefaultOutputDevice",             asString,  getSelector, 'dOut'),
    constant("kAudioHardwarePropertyDefaultSystemOutputDevice",       asString,  getSelector, 'sOut'),
    constant("kAudioHardwarePropertyDeviceForUID",                    asString,  getSelector, 'duid'),
    constant("kAudioHardwarePropertySleepingIsAllowed",               asString,  getSelector, 'slep'),
    constant("kAudioHardwarePropertyUnloadingIsAllowed",              asString,  getSelector, 'unld'),
    constant("kAudioHardwarePropertyRunLoop",                         asString,  getSelector, 'rnlp'),
    constant("kAudioHardwarePropertyBootChimeVolumeScalar",           asString,  getSelector, 'bbvs'),
    constant("kAudioHardwarePropertyBootChimeVolumeDecibels",         asString,  getSelector, 'bbvd'),
    constant("kAudioHardwarePropertyBootChimeVolumeRangeDecibels",    asString,  getSelector, 'bbd#'),
    constant("kAudioHardwarePropertyBootChimeVolumeScalarToDecibels", asString,  getSelector, 'bv2d'),
    constant("kAudioHardwarePropertyBootChimeVolumeDecibelsToScalar", asString,  getSelector, 'bd2v'),
    constant("kAudioDevicePropertyDeviceName",                        asString,  getSelector, 'name'),
    constant("kAudioDevicePropertyDeviceNameCFString",                asString,  getSelector, 'lnam'),
    constant("kAudioDevicePropertyDeviceManufacturer",                asString,  getSelector, 'makr'),
    constant("kAudioDevicePropertyDeviceManufacturerCFString",        asString,  getSelector, 'lmak'),
    constant("kAudioDevicePropertyPlugIn",                            asString,  getSelector, 'plug'),
    constant("kAudioDevicePropertyDeviceUID",                         asString,  getSelector, 'uid '),
    constant("kAudioDevicePropertyTransportType",                     asString,  getSelector, 'tran'),
    constant("kAudioDevicePropertyDeviceIsAlive",                     asString,  getSelector, 'livn'),
    constant("kAudioDevicePropertyDeviceIsRunning",                   asString,  getSelector, 'goin'),
    constant("kAudioDevicePropertyDeviceIsRunningSomewhere",          asString,  getSelector, 'gone'),
    constant("kAudioDevicePropertyDeviceCanBeDefaultDevice",          asString,  getSelector, 'dflt'),
    constant("kAudioDevicePropertyDeviceCanBeDefaultSystemDevice",    asString,  getSelector, 'sflt'),
    constant("kAudioDevicePropertyJackIsConnected",                   asString,  getSelector, 'jack'),
    constant("kAudioDeviceProcessorOverload",                         asString,  getSelector, 'over'),
    constant("kAudioDevicePropertyHogMode",                           asString,  getSelector, 'oink'),
    constant("kAudioDevicePropertyRegisterBufferList",                asString,  getSelector, 'rbuf'),
    constant("kAudioDevicePropertyLatency",                           asString,  getSelector, 'ltnc'),
    constant("kAudioDevicePropertyBufferSize",                        asString,  getSelector, 'bsiz'),
    constant("kAudioDevicePropertyBufferSizeRange",                   asString,  getSelector, 'bsz#'),
    constant("kAudioDevicePropertyBufferFrameSize",                   asString,  getSelector, 'fsiz'),
    constant("kAudioDevicePropertyBufferFrameSizeRange",              asString,  getSelector, 'fsz#'),
    constant("kAudioDevicePropertyUsesVariableBufferFrameSizes",      asString,  getSelector, 'vfsz'),
    constant("kAudioDevicePropertyStreams",                           asString,  getSelector, 'stm#'),
    constant("kAudioDevicePropertySafetyOffset",                      asString,  getSelector, 'saft'),
    constant("kAudioDevicePropertySupportsMixing",                    asString,  getSelector, 'mix?'),
    constant("kAudioDevicePropertyStreamConfiguration",               asString,  getSelector, 'slay'),
    constant("kAudioDevicePropertyIOProcStreamUsage",                 asString,  getSelector, 'suse'),
    constant("kAudioDevicePropertyPreferredChannelsForStereo",        asString,  getSelector, 'dch2'),
    constant("kAudioDevicePropertyNominalSampleRate",                 asString,  getSelector, 'nsrt'),
    constant("kAudioDevicePropertyAvailableNominalSampleRates",       asString,  getSelector, 'nsr#'),
    constant("kAudioDevicePropertyActualSampleRate",                  asString,  getSelector, 'asrt'),
    constant("kAudioDevicePropertyStreamFormat",                      asString,  getSelector, 'sfmt'),
    constant("kAudioDevicePropertyStreamFormats",                     asString,  getSelector, 'sfm#'),
    constant("kAudioDevicePropertyStreamFormatSupported",             asString,  getSelector, 'sfm?'),
    constant("kAudioDevicePropertyStreamFormatMatch",                 asString,  getSelector, 'sfmm'),
    constant("kAudioDevicePropertyVolumeScalar",                      asString,  getSelector, 'volm'),
    constant("kAudioDevicePropertyVolumeDecibels",                    asString,  getSelector, 'vold'),
    constant("kAudioDevicePropertyVolumeRangeDecibels",               asString,  getSelector, 'vdb#'),
    constant("kAudioDevicePropertyVolumeScalarToDecibels",            asString,  getSelector, 'v2db'),
    constant("kAudioDevicePropertyVolumeDecibelsToScalar",            asString,  getSelector, 'db2v'),
    constant("kAudioDevicePropertyMute",                              asString,  getSelector, 'mute'),
    constant("kAudioDevicePropertyPlayThru",                          asString,  getSelector, 'thru'),
    constant("kAudioDevicePropertyDataSource",                        asString,  getSelector, 'ssrc'),
    constant("kAudioDevicePropertyDataSources",                       asString,  getSelector, 'ssc#'),
    constant("kAudioDevicePropertyDataSourceNameForID",               asString,  getSelector, 'sscn'),
    constant("kAudioDevicePropertyDataSourceNameForIDCFString",       asString,  getSelector, 'lscn'),
    constant("kAudioDevicePropertyClockSource",                       asString,  getSelector, 'csrc'),
    constant("kAudioDevicePropertyClockSources",                      asString,  getSelector, 'csc#'),
    constant("kAudioDevicePropertyClockSourceNameForID",              asString,  getSelector, 'cscn'),
    constant("kAudioDevicePropertyClockSourceNameForIDCFString",      asString,  getSelector, 'lcsn'),
    constant("kAudioDevicePropertyDriverShouldOwniSub",               asString,  getSelector, 'isub'),
    constant("kAudioDevicePropertySubVolumeScalar",                   asString,  getSelector, 'svlm'),
    constant("kAudioDevicePropertySubVolumeDecibels",                 asString,  getSelector, 'svld'),
    constant("kAudioDevicePropertySubVolumeRangeDecibels",            asString,  getSelector, 'svd#'),
    constant("kAudioDevicePropertySubVolumeScalarToDecibels",         asString,  getSelector, 'sv2d'),
    constant("kAudioDevicePropertySubVolumeDecibelsToScalar",         asString,  getSelector, 'sd2v'),
    constant("kAudioDevicePropertySubMute",                           asString,  getSelector, 'smut'),
    constant("kAudioStreamPropertyOwningDevice",                      asString,  getSelector, 'stdv'),
    constant("kAudioStreamPropertyDirection",                         asString,  getSelector, 'sdir'),
    constant("kAudioStreamPropertyTerminalType",                      asString,  getSelector, 'term'),
    constant("kAudioStreamPropertyStartingChannel",                   asString,  getSelector, 'schn'),
    constant("kAudioStreamPropertyPhysicalFormat",                    asString,  getSelector, 'pft '),
    constant("kAudioStreamPropertyPhysicalFormats",                   asString,  getSelector, 'pft#'),
    constant("kAudioStreamPropertyPhysicalFormatSupported",           asString,  getSelector, 'pft?'),
    constant("kAudioStreamPropertyPhysicalFormatMatch",               asString,  getSelector, 'pftm'),
    constant("kAudioPropertyWildcardPropertyID",                      asString,  getSelector, '****'),
    constant("kAudioPropertyWildcardSection",                         asInteger, getValue,    0xFF),
    constant("kAudioPropertyWildcardChannel",                         asInteger, getValue,    -1),

    KVX_FIELD("Lasterror", asInteger, readWrite, CoreAudioData, lasterror),
};

REALmethod methods[] = {
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

REALmethod sharedMethods[] = {
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

// The host wants both; an object comes and goes without work.
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

REALclassDefinition coreAudioClass = table::classDefinition(
    "CoreAudioKVX", sizeof(coreaudio::CoreAudioData), {coreaudio::construct, coreaudio::destruct},
    {coreaudio::properties, coreaudio::methods, {}, coreaudio::sharedMethods});
