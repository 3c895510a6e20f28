// The class table of AUPlayerKVX.
#include "auplayer/au_player.h"

#include "auplayer/channel_map.h"
#include "auplayer/devices.h"
#include "auplayer/lifetime.h"
#include "auplayer/loading.h"
#include "auplayer/loop.h"
#include "auplayer/transport.h"
#include "auplayer/unit_parameters.h"
#include "plugin/class_data.h"
#include "plugin/class_table.h"
#include "plugin/classes.h"

namespace auplayer {

namespace {

using namespace table;
using Data = AUPlayerData;

// The properties publish the handles of units and graph as Integers.
static_assert(sizeof(AudioUnit) == sizeof(HostInteger) && sizeof(AUGraph) == sizeof(HostInteger));
constexpr HostType<AudioUnit> asUnit{asInteger.name};
constexpr HostType<AUGraph> asGraph{asInteger.name};

// clang-format off
REALproperty properties[] = {
    //           name                             type          getter or field                setter
    KVX_FIELD   ("ClientFormatString",            asString,     clientFormatString,            readOnly),
    KVX_PROPERTY("CurrentDeviceID",               asUInt32,     getCurrentDeviceID,            setCurrentDeviceID),
    KVX_PROPERTY("DefaultDeviceID",               asUInt32,     getDefaultDeviceID,            readOnly),
    KVX_PROPERTY("OuputDevices",                  asDictionary, getOuputDevices,               readOnly),
    KVX_FIELD   ("OutputFormatString",            asString,     outputFormatString,            readOnly),
    KVX_FIELD   ("DataIsInterleaved",             asBoolean,    dataIsInterleaved,             readOnly),
    KVX_FIELD   ("DataIsFloat",                   asBoolean,    dataIsFloat,                   readOnly),
    KVX_FIELD   ("DataIsNativeEndian",            asBoolean,    dataIsNativeEndian,            readOnly),
    KVX_FIELD   ("DataIsSignedInteger",           asBoolean,    dataIsSignedInteger,           readOnly),
    KVX_FIELD   ("DataIsPCM",                     asBoolean,    dataIsPCM,                     readOnly),
    KVX_FIELD   ("DataNumberInterleavedChannels", asInteger,    dataNumberInterleavedChannels, readOnly),
    KVX_FIELD   ("DataNumberChannelStreams",      asInteger,    dataNumberChannelStreams,      readOnly),
    KVX_FIELD   ("DataNumberChannels",            asInteger,    dataNumberChannels,            readOnly),
    KVX_FIELD   ("DataSampleWordSize",            asInteger,    dataSampleWordSize,            readOnly),
    KVX_FIELD   ("ConverterHandle",               asUnit,       converter,                     readWrite),
    KVX_FIELD   ("GraphHandle",                   asGraph,      graph,                         readWrite),
    KVX_FIELD   ("TimePitchHandle",               asUnit,       timePitch,                     readWrite),
    KVX_FIELD   ("VariSpeedHandle",               asUnit,       varispeed,                     readWrite),
    KVX_FIELD   ("OutputHandle",                  asUnit,       output,                        readWrite),
    KVX_FIELD   ("MixerHandle",                   asUnit,       mixer,                         readWrite),
    KVX_FIELD   ("EqualizerHandle",               asUnit,       equalizer,                     readWrite),
    KVX_FIELD   ("Lasterror",                     asInteger,    lasterror,                     readWrite),
    KVX_FIELD   ("Tag",                           asVariant,    tag,                           readWrite),
    KVX_FIELD   ("File",                          asFolderItem, file,                          readOnly),
    KVX_PROPERTY("Pan",                           asDouble,     getPan,                        setPan),
    KVX_PROPERTY("CurrentTime",                   asDouble,     getCurrentTime,                setCurrentTime),
    KVX_PROPERTY("TrackLength",                   asDouble,     getTrackLength,                readOnly),
    KVX_PROPERTY("Looping",                       asBoolean,    getLooping,                    setLooping),
    KVX_PROPERTY("Playing",                       asBoolean,    getPlaying,                    setPlaying),
    KVX_PROPERTY("LoopIn",                        asDouble,     getLoopIn,                     setLoopIn),
    KVX_PROPERTY("LoopOut",                       asDouble,     getLoopOut,                    setLoopOut),
    KVX_PROPERTY("OutputVolume",                  asDouble,     getOutputVolume,               setOutputVolume),
    KVX_PROPERTY("TimeRate",                      asDouble,     getTimeRate,                   setTimeRate),
    KVX_PROPERTY("PitchRate",                     asDouble,     getPitchRate,                  setPitchRate),
    KVX_PROPERTY("MeterLevel",                    asDouble,     getMeterLevel,                 readOnly),
    KVX_PROPERTY("SampleRate",                    asDouble,     getSampleRate,                 readOnly),
    KVX_PROPERTY("Overlap",                       asDouble,     getOverlap,                    setOverlap),
    KVX_PROPERTY("EnablePeakLocking",             asBoolean,    getEnablePeakLocking,          setEnablePeakLocking),
    KVX_FIELD   ("MaximumFramesPerSlice",         asInteger,    maximumFramesPerSlice,         readWrite),
    KVX_FIELD   ("OutputUnit",                    asInteger,    outputUnit,                    readWrite),
    KVX_FIELD   ("TimePitchUnit",                 asInteger,    timePitchUnit,                 setTimePitchUnit),
};

REALmethod methods[] = {
    //         function        declaration
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

REALclassDefinition auPlayerClass =
    table::classDefinition<auplayer::AUPlayerData, auplayer::AUPlayerConstructor,
                           auplayer::AUPlayerDestructor>(
        "AUPlayerKVX", {auplayer::properties, auplayer::methods, {}, {}, auplayer::constants});
