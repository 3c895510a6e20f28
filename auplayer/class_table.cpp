// AUPlayerKVX as the host sees it.
#include "auplayer/au_player.h"

#include "auplayer/devices.h"
#include "auplayer/host_arrays.h"
#include "auplayer/lifetime.h"
#include "auplayer/loading.h"
#include "auplayer/transport.h"
#include "auplayer/unit_parameters.h"
#include "plugin/class_data.h"
#include "plugin/class_table.h"
#include "plugin/classes.h"

namespace auplayer {

namespace {

using namespace table;

// To the host a handle is a number of the width of its Integer.
static_assert(sizeof(AudioUnit) == sizeof(HostInteger) && sizeof(AUGraph) == sizeof(HostInteger));
constexpr HostType<AudioUnit> asUnit{"Integer"};
constexpr HostType<AUGraph> asGraph{"Integer"};

// clang-format off
REALproperty properties[] = {
    KVX_FIELD("ClientFormatString",            asString,     readOnly,  AUPlayerData, clientFormatString),
    property("CurrentDeviceID",                asUInt32,     catchingAll<getCurrentDeviceID>, catchingAll<setCurrentDeviceID>),
    property("DefaultDeviceID",                asUInt32,     catchingAll<getDefaultDeviceID>, readOnly),
    property("OuputDevices",                   asDictionary, catchingAll<getOuputDevices>,    readOnly),
    KVX_FIELD("OutputFormatString",            asString,     readOnly,  AUPlayerData, outputFormatString),
    KVX_FIELD("DataIsInterleaved",             asBoolean,    readOnly,  AUPlayerData, dataIsInterleaved),
    KVX_FIELD("DataIsFloat",                   asBoolean,    readOnly,  AUPlayerData, dataIsFloat),
    KVX_FIELD("DataIsNativeEndian",            asBoolean,    readOnly,  AUPlayerData, dataIsNativeEndian),
    KVX_FIELD("DataIsSignedInteger",           asBoolean,    readOnly,  AUPlayerData, dataIsSignedInteger),
    KVX_FIELD("DataIsPCM",                     asBoolean,    readOnly,  AUPlayerData, dataIsPCM),
    KVX_FIELD("DataNumberInterleavedChannels", asInteger,    readOnly,  AUPlayerData, dataNumberInterleavedChannels),
    KVX_FIELD("DataNumberChannelStreams",      asInteger,    readOnly,  AUPlayerData, dataNumberChannelStreams),
    KVX_FIELD("DataNumberChannels",            asInteger,    readOnly,  AUPlayerData, dataNumberChannels),
    KVX_FIELD("DataSampleWordSize",            asInteger,    readOnly,  AUPlayerData, dataSampleWordSize),
    KVX_FIELD("ConverterHandle",               asUnit,       readWrite, AUPlayerData, converter),
    KVX_FIELD("GraphHandle",                   asGraph,      readWrite, AUPlayerData, graph),
    KVX_FIELD("TimePitchHandle",               asUnit,       readWrite, AUPlayerData, timePitch),
    KVX_FIELD("VariSpeedHandle",               asUnit,       readWrite, AUPlayerData, varispeed),
    KVX_FIELD("OutputHandle",                  asUnit,       readWrite, AUPlayerData, output),
    KVX_FIELD("MixerHandle",                   asUnit,       readWrite, AUPlayerData, mixer),
    KVX_FIELD("EqualizerHandle",               asUnit,       readWrite, AUPlayerData, equalizer),
    KVX_FIELD("Lasterror",                     asInteger,    readWrite, AUPlayerData, lasterror),
    KVX_FIELD("Tag",                           asVariant,    readWrite, AUPlayerData, tag),
    KVX_FIELD("File",                          asFolderItem, readOnly,  AUPlayerData, file),
    property("Pan",                            asDouble,     catchingAll<getPan>,               catchingAll<setPan>),
    property("CurrentTime",                    asDouble,     catchingAll<getCurrentTime>,       catchingAll<setCurrentTime>),
    property("TrackLength",                    asDouble,     catchingAll<getTrackLength>,       readOnly),
    property("Looping",                        asBoolean,    catchingAll<getLooping>,           catchingAll<setLooping>),
    property("Playing",                        asBoolean,    catchingAll<getPlaying>,           catchingAll<setPlaying>),
    property("LoopIn",                         asDouble,     catchingAll<getLoopIn>,            catchingAll<setLoopIn>),
    property("LoopOut",                        asDouble,     catchingAll<getLoopOut>,           catchingAll<setLoopOut>),
    property("OutputVolume",                   asDouble,     catchingAll<getOutputVolume>,      catchingAll<setOutputVolume>),
    property("TimeRate",                       asDouble,     catchingAll<getTimeRate>,          catchingAll<setTimeRate>),
    property("PitchRate",                      asDouble,     catchingAll<getPitchRate>,         catchingAll<setPitchRate>),
    property("MeterLevel",                     asDouble,     catchingAll<getMeterLevel>,        readOnly),
    property("SampleRate",                     asDouble,     catchingAll<getSampleRate>,        readOnly),
    property("Overlap",                        asDouble,     catchingAll<getOverlap>,           catchingAll<setOverlap>),
    property("EnablePeakLocking",              asBoolean,    catchingAll<getEnablePeakLocking>, catchingAll<setEnablePeakLocking>),
    KVX_FIELD("MaximumFramesPerSlice",         asInteger,    readWrite, AUPlayerData, maximumFramesPerSlice),
    KVX_FIELD("OutputUnit",                    asInteger,    readWrite, AUPlayerData, outputUnit),
    fieldWithSetter("TimePitchUnit",           asInteger,    offsetof(AUPlayerData, timePitchUnit), catchingAll<setTimePitchUnit>),
};

REALmethod methods[] = {
    KVX_METHOD(CopyData,       "Data as Memoryblock"),
    KVX_METHOD(LoadFile,       "LoadFile(file as folderitem, InputChannels as Integer = 2, OutputChannels as Integer = 2) as boolean"),
    KVX_METHOD(LoadFileMT,     "LoadFileMT(file as folderitem, InputChannels as Integer = 2, OutputChannels as Integer = 2) as boolean"),
    KVX_METHOD(Pause,          "Pause"),
    KVX_METHOD(Play,           "Play"),
    KVX_METHOD(Reset,          "Reset"),
    KVX_METHOD(updateEQDouble, "updateEQ(eqBands() as double)"),
    KVX_METHOD(updateEQSingle, "updateEQ(eqBands() as single)"),
    KVX_INDEXED_PROPERTY(getInputVolume,  setInputVolume,  "InputVolume(inputNum as UInt32) as double"),
    KVX_INDEXED_PROPERTY(getInputEnabled, setInputEnabled, "InputEnabled(inputNum as UInt32) as boolean"),
    KVX_METHOD(ChannelMap,     "ChannelMap as Integer()"),
    KVX_METHOD(setChannelMap,  "setChannelMap(values() as Integer)"),
};

REALconstant constants[] = {
    classConstant("TimePitchUnitDefault = 0"),
    classConstant("TimePitchUnitTimePitch = 1"),
    classConstant("TimePitchUnitVarispeed = 2"),
    classConstant("OutputUnitDefault = 0"),
    classConstant("OutputUnitGenericOutput = 1"),
    classConstant("OutputUnitHALOutput = 2"),
    classConstant("OutputUnitDefaultOutput = 3"),
    classConstant("OutputUnitSystemOutput = 4"),
};
// clang-format on

static_assert(std::size(properties) == 41, "the class is published with 41 properties");
static_assert(std::size(methods) == 12, "the class is published with 12 methods");
static_assert(std::size(constants) == 8, "the class is published with 8 constants");

} // namespace

AUPlayerData& dataOf(REALobjectStruct* object) { return classData<AUPlayerData>(object, auPlayerClass); }

AUPlayerData& beginCall(REALobjectStruct* object)
{
    AUPlayerData& player = dataOf(object);
    keepStatus(player, -1);
    return player;
}

} // namespace auplayer

REALclassDefinition auPlayerClass = table::classDefinition(
    "AUPlayerKVX", sizeof(auplayer::AUPlayerData),
    {catchingAll<auplayer::AUPlayerConstructor>, catchingAll<auplayer::AUPlayerDestructor>},
    {auplayer::properties, auplayer::methods, {}, {}, auplayer::constants});
