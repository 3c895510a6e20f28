// The class table of CoreAudioPlayerKVX.
#include "plugin/class_table.h"
#include "player/ingestion.h"
#include "player/play_queue.h"
#include "player/render.h"
#include "player/transport.h"
#include "plugin/class_data.h"
#include "plugin/classes.h"
#include "plugin/services.h"
#include "plugin/shared_word.h"

namespace player {

namespace {

void CoreAudioPlayAudioConstructor(REALobjectStruct* object)
{
    AudioPlayerData& player = dataOf(object);
    player = {};
    player.deviceSampleRate = player.sampleRate = 44100.0f;
    player.numberOfChannels = 1;
    player.ioProc = MyPlayIOProc;
}

// The method "Close" is this function, too. A closed player keeps its settings and positions and may start
// again.
void CoreAudioPlayAudioDestructor(REALobjectStruct* object) { stopPlaying(dataOf(object)); }

// ---- properties: each accessor converts a field to or from the host's type ----

template <class T, auto field>
T get(REALobjectStruct* object, HostInteger)
{
    return static_cast<T>(loadRelaxed(dataOf(object).*field));
}

template <class T, auto field>
void set(REALobjectStruct* object, HostInteger, T value)
{
    auto& target = dataOf(object).*field;
    storeRelaxed(target, static_cast<std::remove_reference_t<decltype(target)>>(value));
}

HostBoolean getIsRunning(REALobjectStruct* object, HostInteger)
{
    return loadAcquired(dataOf(object).isRunning);
}

// ---- methods ----

HostInteger rbGetFreeSpace(REALobjectStruct* object) { return freeSpace(dataOf(object)); }

HostBoolean rbHasFreeSpace(REALobjectStruct* object) { return freeSpace(dataOf(object)) > 0; }

/// Return `countBytes`, or the whole size of `block` for a count of 0; the offset is intentionally not
/// subtracted.
HostInteger countOrWhole(REALmemoryBlockStruct* block, HostInteger countBytes)
{
    return block && countBytes == 0 ? REALMemoryBlockGetSize(block) : countBytes;
}

HostBoolean rbAddSomeAudio(REALobjectStruct* object, REALmemoryBlockStruct* data, HostInteger offsetBytes,
                           HostInteger countBytes, HostInteger bitSize, HostBoolean clearBuffers)
{
    return AddSomeAudio(dataOf(object), data, offsetBytes, countOrWhole(data, countBytes), bitSize,
                        clearBuffers);
}

HostBoolean rbAddSomeFPAudio(REALobjectStruct* object, REALmemoryBlockStruct* data, HostInteger offsetBytes,
                             HostInteger countBytes, HostBoolean clearBuffers)
{
    return AddSomeFloatAudio(dataOf(object), data, offsetBytes, countOrWhole(data, countBytes), clearBuffers);
}

HostBoolean rbAddSomeAudiostereo(REALobjectStruct* object, REALmemoryBlockStruct* data1,
                                 REALmemoryBlockStruct* data2, HostInteger offsetBytes,
                                 HostInteger countBytes, HostInteger bitSize, HostBoolean clearBuffers)
{
    return AddSomeAudioStereo(dataOf(object), data1, data2, offsetBytes, countOrWhole(data1, countBytes),
                              bitSize, clearBuffers);
}

HostBoolean rbAddSomeFPAudiostereo(REALobjectStruct* object, REALmemoryBlockStruct* data1,
                                   REALmemoryBlockStruct* data2, HostInteger offsetBytes,
                                   HostInteger countBytes, HostBoolean clearBuffers)
{
    return AddSomeFloatAudioStereo(dataOf(object), data1, data2, offsetBytes, countOrWhole(data1, countBytes),
                                   clearBuffers);
}

/// The "Play…" method of an "Add…" method: queue the audio, then start the player.
template <auto add>
struct AndPlay;
template <class... Arguments, HostBoolean (*add)(REALobjectStruct*, Arguments...)>
struct AndPlay<add> {
    static HostBoolean method(REALobjectStruct* object, Arguments... arguments)
    {
        return add(object, arguments...) && PlaySomeAudio(dataOf(object));
    }
};

constexpr auto rbPlaySomeAudio = AndPlay<rbAddSomeAudio>::method;
constexpr auto rbPlaySomeFPAudio = AndPlay<rbAddSomeFPAudio>::method;
constexpr auto rbPlaySomeAudiostereo = AndPlay<rbAddSomeAudiostereo>::method;
constexpr auto rbPlaySomeFPAudiostereo = AndPlay<rbAddSomeFPAudiostereo>::method;

using namespace table;
using Data = AudioPlayerData;

// clang-format off
REALproperty properties[] = {
    //           name                      type       getter                                      setter
    KVX_PROPERTY("OutputPositionRelative", asDouble,  get<double, &Data::outputPositionRelative>, readOnly),
    KVX_PROPERTY("SampleRate",             asSingle,  get<float, &Data::sampleRate>,              set<float, &Data::sampleRate>),
    KVX_PROPERTY("NumberOfChannels",       asInteger, get<HostInteger, &Data::numberOfChannels>,  set<HostInteger, &Data::numberOfChannels>),
    KVX_PROPERTY("OutputDeviceID",         asInteger, get<HostInteger, &Data::outputDeviceID>,    set<HostInteger, &Data::outputDeviceID>),
    KVX_PROPERTY("IsRunning",              asBoolean, getIsRunning,                               readOnly),
    KVX_PROPERTY("OutputPosition",         asDouble,  get<double, &Data::outputPosition>,         readOnly),
    KVX_PROPERTY("NoUnderflow",            asBoolean, get<HostBoolean, &Data::noUnderflow>,       set<HostBoolean, &Data::noUnderflow>),
    KVX_PROPERTY("HadUnderflow",           asBoolean, get<HostBoolean, &Data::hadUnderflow>,      set<HostBoolean, &Data::hadUnderflow>),
};

REALmethod methods[] = {
    //         function                      declaration
    KVX_METHOD(rbAddSomeAudio,               "AddAudio(Data as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean"),
    KVX_METHOD(rbAddSomeFPAudio,             "AddFloatAudio(FloatData as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean"),
    KVX_METHOD(rbAddSomeAudiostereo,         "AddAudioStereo(Data1 as memoryblock, Data2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean"),
    KVX_METHOD(rbAddSomeFPAudiostereo,       "AddFloatAudioStereo(FloatData1 as memoryblock, FloatData2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean"),
    KVX_METHOD(rbPlaySomeAudio,              "PlayAudio(Data as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean"),
    KVX_METHOD(rbPlaySomeFPAudio,            "PlayFloatAudio(FloatData as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean"),
    KVX_METHOD(rbPlaySomeAudiostereo,        "PlayAudioStereo(Data1 as memoryblock, Data2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean"),
    KVX_METHOD(rbPlaySomeFPAudiostereo,      "PlayFloatAudioStereo(FloatData1 as memoryblock, FloatData2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean"),
    KVX_METHOD(rbGetFreeSpace,               "FreeSpace as integer"),
    KVX_METHOD(rbHasFreeSpace,               "HasFreeSpace as boolean"),
    KVX_METHOD(GetHardwareSampleRate,        "HardwareSampleRate as single"),
    KVX_METHOD(GetHardwareNumberOfChannels,  "HardwareNumberOfChannels as integer"),
    KVX_METHOD(CoreAudioPlayAudioDestructor, "Close"),
    KVX_METHOD(Stop,                         "Stop"),
    KVX_METHOD(Start,                        "Start as boolean"),
};
// clang-format on

static_assert(std::size(properties) == 8, "the class is published with 8 properties");
static_assert(std::size(methods) == 15, "the class is published with 15 methods");

} // namespace

AudioPlayerData& dataOf(REALobjectStruct* object)
{
    return classData<AudioPlayerData>(object, coreAudioPlayerClass);
}

} // namespace player

REALclassDefinition coreAudioPlayerClass =
    table::classDefinition<player::AudioPlayerData, player::CoreAudioPlayAudioConstructor,
                           player::CoreAudioPlayAudioDestructor>("CoreAudioPlayerKVX",
                                                                 {player::properties, player::methods});
