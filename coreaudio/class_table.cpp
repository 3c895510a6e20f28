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

// Method rows see to it that nothing thrown gets past them; of the getters only this one asks anything of the
// host.
constexpr auto getText = Border<getSelector>::call;

// clang-format off
REALproperty properties[] = {
    //       name                                                     type       getter    parameter
    constant("kAudioHardwarePropertyDevices",                         asString,  getText,  'dev#'),
    constant("kAudioHardwarePropertyDefaultInputDevice",              asString,  getText,  'dIn '),
    constant("kAudioHardwarePropertyDefaultOutputDevice",             asString,  getText,  'dOut'),
    constant("kAudioHardwarePropertyDefaultSystemOutputDevice",       asString,  getText,  'sOut'),
    constant("kAudioHardwarePropertyDeviceForUID",                    asString,  getText,  'duid'),
    constant("kAudioHardwarePropertySleepingIsAllowed",               asString,  getText,  'slep'),
    constant("kAudioHardwarePropertyUnloadingIsAllowed",              asString,  getText,  'unld'),
    constant("kAudioHardwarePropertyRunLoop",                         asString,  getText,  'rnlp'),
    constant("kAudioHardwarePropertyBootChimeVolumeScalar",           asString,  getText,  'bbvs'),
    constant("kAudioHardwarePropertyBootChimeVolumeDecibels",         asString,  getText,  'bbvd'),
    constant("kAudioHardwarePropertyBootChimeVolumeRangeDecibels",    asString,  getText,  'bbd#'),
    constant("kAudioHardwarePropertyBootChimeVolumeScalarToDecibels", asString,  getText,  'bv2d'),
    constant("kAudioHardwarePropertyBootChimeVolumeDecibelsToScalar", asString,  getText,  'bd2v'),
    constant("kAudioDevicePropertyDeviceName",                        asString,  getText,  'name'),
    constant("kAudioDevicePropertyDeviceNameCFString",                asString,  getText,  'lnam'),
    constant("kAudioDevicePropertyDeviceManufacturer",                asString,  getText,  'makr'),
    constant("kAudioDevicePropertyDeviceManufacturerCFString",        asString,  getText,  'lmak'),
    constant("kAudioDevicePropertyPlugIn",                            asString,  getText,  'plug'),
    constant("kAudioDevicePropertyDeviceUID",                         asString,  getText,  'uid '),
    constant("kAudioDevicePropertyTransportType",                     asString,  getText,  'tran'),
    constant("kAudioDevicePropertyDeviceIsAlive",                     asString,  getText,  'livn'),
    constant("kAudioDevicePropertyDeviceIsRunning",                   asString,  getText,  'goin'),
    constant("kAudioDevicePropertyDeviceIsRunningSomewhere",          asString,  getText,  'gone'),
    constant("kAudioDevicePropertyDeviceCanBeDefaultDevice",          asString,  getText,  'dflt'),
    constant("kAudioDevicePropertyDeviceCanBeDefaultSystemDevice",    asString,  getText,  'sflt'),
    constant("kAudioDevicePropertyJackIsConnected",                   asString,  getText,  'jack'),
    constant("kAudioDeviceProcessorOverload",                         asString,  getText,  'over'),
    constant("kAudioDevicePropertyHogMode",                           asString,  getText,  'oink'),
    constant("kAudioDevicePropertyRegisterBufferList",                asString,  getText,  'rbuf'),
    constant("kAudioDevicePropertyLatency",                           asString,  getText,  'ltnc'),
    constant("kAudioDevicePropertyBufferSize",                        asString,  getText,  'bsiz'),
    constant("kAudioDevicePropertyBufferSizeRange",                   asString,  getText,  'bsz#'),
    constant("kAudioDevicePropertyBufferFrameSize",                   asString,  getText,  'fsiz'),
    constant("kAudioDevicePropertyBufferFrameSizeRange",              asString,  getText,  'fsz#'),
    constant("kAudioDevicePropertyUsesVariableBufferFrameSizes",      asString,  getText,  'vfsz'),
    constant("kAudioDevicePropertyStreams",                           asString,  getText,  'stm#'),
    constant("kAudioDevicePropertySafetyOffset",                      asString,  getText,  'saft'),
    constant("kAudioDevicePropertySupportsMixing",                    asString,  getText,  'mix?'),
    constant("kAudioDevicePropertyStreamConfiguration",               asString,  getText,  'slay'),
    constant("kAudioDevicePropertyIOProcStreamUsage",                 asString,  getText,  'suse'),
    constant("kAudioDevicePropertyPreferredChannelsForStereo",        asString,  getText,  'dch2'),
    constant("kAudioDevicePropertyNominalSampleRate",                 asString,  getText,  'nsrt'),
    constant("kAudioDevicePropertyAvailableNominalSampleRates",       asString,  getText,  'nsr#'),
    constant("kAudioDevicePropertyActualSampleRate",                  asString,  getText,  'asrt'),
    constant("kAudioDevicePropertyStreamFormat",                      asString,  getText,  'sfmt'),
    constant("kAudioDevicePropertyStreamFormats",                     asString,  getText,  'sfm#'),
    constant("kAudioDevicePropertyStreamFormatSupported",             asString,  getText,  'sfm?'),
    constant("kAudioDevicePropertyStreamFormatMatch",                 asString,  getText,  'sfmm'),
    constant("kAudioDevicePropertyVolumeScalar",                      asString,  getText,  'volm'),
    constant("kAudioDevicePropertyVolumeDecibels",                    asString,  getText,  'vold'),
    constant("kAudioDevicePropertyVolumeRangeDecibels",               asString,  getText,  'vdb#'),
    constant("kAudioDevicePropertyVolumeScalarToDecibels",            asString,  getText,  'v2db'),
    constant("kAudioDevicePropertyVolumeDecibelsToScalar",            asString,  getText,  'db2v'),
    constant("kAudioDevicePropertyMute",                              asString,  getText,  'mute'),
    constant("kAudioDevicePropertyPlayThru",                          asString,  getText,  'thru'),
    constant("kAudioDevicePropertyDataSource",                        asString,  getText,  'ssrc'),
    constant("kAudioDevicePropertyDataSources",                       asString,  getText,  'ssc#'),
    constant("kAudioDevicePropertyDataSourceNameForID",               asString,  getText,  'sscn'),
    constant("kAudioDevicePropertyDataSourceNameForIDCFString",       asString,  getText,  'lscn'),
    constant("kAudioDevicePropertyClockSource",                       asString,  getText,  'csrc'),
    constant("kAudioDevicePropertyClockSources",                      asString,  getText,  'csc#'),
    constant("kAudioDevicePropertyClockSourceNameForID",              asString,  getText,  'cscn'),
    constant("kAudioDevicePropertyClockSourceNameForIDCFString",      asString,  getText,  'lcsn'),
    constant("kAudioDevicePropertyDriverShouldOwniSub",               asString,  getText,  'isub'),
    constant("kAudioDevicePropertySubVolumeScalar",                   asString,  getText,  'svlm'),
    constant("kAudioDevicePropertySubVolumeDecibels",                 asString,  getText,  'svld'),
    constant("kAudioDevicePropertySubVolumeRangeDecibels",            asString,  getText,  'svd#'),
    constant("kAudioDevicePropertySubVolumeScalarToDecibels",         asString,  getText,  'sv2d'),
    constant("kAudioDevicePropertySubVolumeDecibelsToScalar",         asString,  getText,  'sd2v'),
    constant("kAudioDevicePropertySubMute",                           asString,  getText,  'smut'),
    constant("kAudioStreamPropertyOwningDevice",                      asString,  getText,  'stdv'),
    constant("kAudioStreamPropertyDirection",                         asString,  getText,  'sdir'),
    constant("kAudioStreamPropertyTerminalType",                      asString,  getText,  'term'),
    constant("kAudioStreamPropertyStartingChannel",                   asString,  getText,  'schn'),
    constant("kAudioStreamPropertyPhysicalFormat",                    asString,  getText,  'pft '),
    constant("kAudioStreamPropertyPhysicalFormats",                   asString,  getText,  'pft#'),
    constant("kAudioStreamPropertyPhysicalFormatSupported",           asString,  getText,  'pft?'),
    constant("kAudioStreamPropertyPhysicalFormatMatch",               asString,  getText,  'pftm'),
    constant("kAudioPropertyWildcardPropertyID",                      asString,  getText,  '****'),
    constant("kAudioPropertyWildcardSection",                         asInteger, getValue, 0xFF),
    constant("kAudioPropertyWildcardChannel",                         asInteger, getValue, -1),

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
