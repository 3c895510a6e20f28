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

template <std::uint32_t selector>
constexpr auto text = catchingAll<getSelector<selector>>;

// clang-format off
REALproperty properties[] = {
    //       name                                                     type       getter
    constant("kAudioHardwarePropertyDevices",                         asString,  text<'dev#'>),
    constant("kAudioHardwarePropertyDefaultInputDevice",              asString,  text<'dIn '>),
    constant("kAudioHardwarePropertyDefaultOutputDevice",             asString,  text<'dOut'>),
    constant("kAudioHardwarePropertyDefaultSystemOutputDevice",       asString,  text<'sOut'>),
    constant("kAudioHardwarePropertyDeviceForUID",                    asString,  text<'duid'>),
    constant("kAudioHardwarePropertySleepingIsAllowed",               asString,  text<'slep'>),
    constant("kAudioHardwarePropertyUnloadingIsAllowed",              asString,  text<'unld'>),
    constant("kAudioHardwarePropertyRunLoop",                         asString,  text<'rnlp'>),
    constant("kAudioHardwarePropertyBootChimeVolumeScalar",           asString,  text<'bbvs'>),
    constant("kAudioHardwarePropertyBootChimeVolumeDecibels",         asString,  text<'bbvd'>),
    constant("kAudioHardwarePropertyBootChimeVolumeRangeDecibels",    asString,  text<'bbd#'>),
    constant("kAudioHardwarePropertyBootChimeVolumeScalarToDecibels", asString,  text<'bv2d'>),
    constant("kAudioHardwarePropertyBootChimeVolumeDecibelsToScalar", asString,  text<'bd2v'>),
    constant("kAudioDevicePropertyDeviceName",                        asString,  text<'name'>),
    constant("kAudioDevicePropertyDeviceNameCFString",                asString,  text<'lnam'>),
    constant("kAudioDevicePropertyDeviceManufacturer",                asString,  text<'makr'>),
    constant("kAudioDevicePropertyDeviceManufacturerCFString",        asString,  text<'lmak'>),
    constant("kAudioDevicePropertyPlugIn",                            asString,  text<'plug'>),
    constant("kAudioDevicePropertyDeviceUID",                         asString,  text<'uid '>),
    constant("kAudioDevicePropertyTransportType",                     asString,  text<'tran'>),
    constant("kAudioDevicePropertyDeviceIsAlive",                     asString,  text<'livn'>),
    constant("kAudioDevicePropertyDeviceIsRunning",                   asString,  text<'goin'>),
    constant("kAudioDevicePropertyDeviceIsRunningSomewhere",          asString,  text<'gone'>),
    constant("kAudioDevicePropertyDeviceCanBeDefaultDevice",          asString,  text<'dflt'>),
    constant("kAudioDevicePropertyDeviceCanBeDefaultSystemDevice",    asString,  text<'sflt'>),
    constant("kAudioDevicePropertyJackIsConnected",                   asString,  text<'jack'>),
    constant("kAudioDeviceProcessorOverload",                         asString,  text<'over'>),
    constant("kAudioDevicePropertyHogMode",                           asString,  text<'oink'>),
    constant("kAudioDevicePropertyRegisterBufferList",                asString,  text<'rbuf'>),
    constant("kAudioDevicePropertyLatency",                           asString,  text<'ltnc'>),
    constant("kAudioDevicePropertyBufferSize",                        asString,  text<'bsiz'>),
    constant("kAudioDevicePropertyBufferSizeRange",                   asString,  text<'bsz#'>),
    constant("kAudioDevicePropertyBufferFrameSize",                   asString,  text<'fsiz'>),
    constant("kAudioDevicePropertyBufferFrameSizeRange",              asString,  text<'fsz#'>),
    constant("kAudioDevicePropertyUsesVariableBufferFrameSizes",      asString,  text<'vfsz'>),
    constant("kAudioDevicePropertyStreams",                           asString,  text<'stm#'>),
    constant("kAudioDevicePropertySafetyOffset",                      asString,  text<'saft'>),
    constant("kAudioDevicePropertySupportsMixing",                    asString,  text<'mix?'>),
    constant("kAudioDevicePropertyStreamConfiguration",               asString,  text<'slay'>),
    constant("kAudioDevicePropertyIOProcStreamUsage",                 asString,  text<'suse'>),
    constant("kAudioDevicePropertyPreferredChannelsForStereo",        asString,  text<'dch2'>),
    constant("kAudioDevicePropertyNominalSampleRate",                 asString,  text<'nsrt'>),
    constant("kAudioDevicePropertyAvailableNominalSampleRates",       asString,  text<'nsr#'>),
    constant("kAudioDevicePropertyActualSampleRate",                  asString,  text<'asrt'>),
    constant("kAudioDevicePropertyStreamFormat",                      asString,  text<'sfmt'>),
    constant("kAudioDevicePropertyStreamFormats",                     asString,  text<'sfm#'>),
    constant("kAudioDevicePropertyStreamFormatSupported",             asString,  text<'sfm?'>),
    constant("kAudioDevicePropertyStreamFormatMatch",                 asString,  text<'sfmm'>),
    constant("kAudioDevicePropertyVolumeScalar",                      asString,  text<'volm'>),
    constant("kAudioDevicePropertyVolumeDecibels",                    asString,  text<'vold'>),
    constant("kAudioDevicePropertyVolumeRangeDecibels",               asString,  text<'vdb#'>),
    constant("kAudioDevicePropertyVolumeScalarToDecibels",            asString,  text<'v2db'>),
    constant("kAudioDevicePropertyVolumeDecibelsToScalar",            asString,  text<'db2v'>),
    constant("kAudioDevicePropertyMute",                              asString,  text<'mute'>),
    constant("kAudioDevicePropertyPlayThru",                          asString,  text<'thru'>),
    constant("kAudioDevicePropertyDataSource",                        asString,  text<'ssrc'>),
    constant("kAudioDevicePropertyDataSources",                       asString,  text<'ssc#'>),
    constant("kAudioDevicePropertyDataSourceNameForID",               asString,  text<'sscn'>),
    constant("kAudioDevicePropertyDataSourceNameForIDCFString",       asString,  text<'lscn'>),
    constant("kAudioDevicePropertyClockSource",                       asString,  text<'csrc'>),
    constant("kAudioDevicePropertyClockSources",                      asString,  text<'csc#'>),
    constant("kAudioDevicePropertyClockSourceNameForID",              asString,  text<'cscn'>),
    constant("kAudioDevicePropertyClockSourceNameForIDCFString",      asString,  text<'lcsn'>),
    constant("kAudioDevicePropertyDriverShouldOwniSub",               asString,  text<'isub'>),
    constant("kAudioDevicePropertySubVolumeScalar",                   asString,  text<'svlm'>),
    constant("kAudioDevicePropertySubVolumeDecibels",                 asString,  text<'svld'>),
    constant("kAudioDevicePropertySubVolumeRangeDecibels",            asString,  text<'svd#'>),
    constant("kAudioDevicePropertySubVolumeScalarToDecibels",         asString,  text<'sv2d'>),
    constant("kAudioDevicePropertySubVolumeDecibelsToScalar",         asString,  text<'sd2v'>),
    constant("kAudioDevicePropertySubMute",                           asString,  text<'smut'>),
    constant("kAudioStreamPropertyOwningDevice",                      asString,  text<'stdv'>),
    constant("kAudioStreamPropertyDirection",                         asString,  text<'sdir'>),
    constant("kAudioStreamPropertyTerminalType",                      asString,  text<'term'>),
    constant("kAudioStreamPropertyStartingChannel",                   asString,  text<'schn'>),
    constant("kAudioStreamPropertyPhysicalFormat",                    asString,  text<'pft '>),
    constant("kAudioStreamPropertyPhysicalFormats",                   asString,  text<'pft#'>),
    constant("kAudioStreamPropertyPhysicalFormatSupported",           asString,  text<'pft?'>),
    constant("kAudioStreamPropertyPhysicalFormatMatch",               asString,  text<'pftm'>),
    constant("kAudioPropertyWildcardPropertyID",                      asString,  text<'****'>),
    constant("kAudioPropertyWildcardSection",                         asInteger, getValue<0xFF>),
    constant("kAudioPropertyWildcardChannel",                         asInteger, getValue<-1>),

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
