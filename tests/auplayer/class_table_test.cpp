// The class table of AUPlayerKVX, compared with the tables below.
#include "tests/auplayer/player_fixture.h"
#include "tests/support/class_table.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace {

using namespace auplayer_test;
using auplayer::AUPlayerData;
using support::Access;

#define OFFSET(member)                                                                                       \
    HostInteger { offsetof(AUPlayerData, member) }

// clang-format off
const std::vector<support::PropertyFact> properties = {
    {"ClientFormatString",            "String",     Access::field, OFFSET(clientFormatString)},
    {"CurrentDeviceID",               "UInt32",     Access::accessors},
    {"DefaultDeviceID",               "UInt32",     Access::getter},
    {"OuputDevices",                  "Dictionary", Access::getter},
    {"OutputFormatString",            "String",     Access::field, OFFSET(outputFormatString)},
    {"DataIsInterleaved",             "Boolean",    Access::field, OFFSET(dataIsInterleaved)},
    {"DataIsFloat",                   "Boolean",    Access::field, OFFSET(dataIsFloat)},
    {"DataIsNativeEndian",            "Boolean",    Access::field, OFFSET(dataIsNativeEndian)},
    {"DataIsSignedInteger",           "Boolean",    Access::field, OFFSET(dataIsSignedInteger)},
    {"DataIsPCM",                     "Boolean",    Access::field, OFFSET(dataIsPCM)},
    {"DataNumberInterleavedChannels", "Integer",    Access::field, OFFSET(dataNumberInterleavedChannels)},
    {"DataNumberChannelStreams",      "Integer",    Access::field, OFFSET(dataNumberChannelStreams)},
    {"DataNumberChannels",            "Integer",    Access::field, OFFSET(dataNumberChannels)},
    {"DataSampleWordSize",            "Integer",    Access::field, OFFSET(dataSampleWordSize)},
    {"ConverterHandle",               "Integer",    Access::writableField, OFFSET(converter)},
    {"GraphHandle",                   "Integer",    Access::writableField, OFFSET(graph)},
    {"TimePitchHandle",               "Integer",    Access::writableField, OFFSET(timePitch)},
    {"VariSpeedHandle",               "Integer",    Access::writableField, OFFSET(varispeed)},
    {"OutputHandle",                  "Integer",    Access::writableField, OFFSET(output)},
    {"MixerHandle",                   "Integer",    Access::writableField, OFFSET(mixer)},
    {"EqualizerHandle",               "Integer",    Access::writableField, OFFSET(equalizer)},
    {"Lasterror",                     "Integer",    Access::writableField, OFFSET(lasterror)},
    {"Tag",                           "Variant",    Access::writableField, OFFSET(tag)},
    {"File",                          "FolderItem", Access::field, OFFSET(file)},
    {"Pan",                           "Double",     Access::accessors},
    {"CurrentTime",                   "Double",     Access::accessors},
    {"TrackLength",                   "Double",     Access::getter},
    {"Looping",                       "Boolean",    Access::accessors},
    {"Playing",                       "Boolean",    Access::accessors},
    {"LoopIn",                        "Double",     Access::accessors},
    {"LoopOut",                       "Double",     Access::accessors},
    {"OutputVolume",                  "Double",     Access::accessors},
    {"TimeRate",                      "Double",     Access::accessors},
    {"PitchRate",                     "Double",     Access::accessors},
    {"MeterLevel",                    "Double",     Access::getter},
    {"SampleRate",                    "Double",     Access::getter},
    {"Overlap",                       "Double",     Access::accessors},
    {"EnablePeakLocking",             "Boolean",    Access::accessors},
    {"MaximumFramesPerSlice",         "Integer",    Access::writableField, OFFSET(maximumFramesPerSlice)},
    {"OutputUnit",                    "Integer",    Access::writableField, OFFSET(outputUnit)},
    {"TimePitchUnit",                 "Integer",    Access::fieldWithSetter, OFFSET(timePitchUnit)},
};
// clang-format on

const std::vector<support::MethodFact> methods = {
    {"Data as Memoryblock"},
    {"LoadFile(file as folderitem, InputChannels as Integer = 2, OutputChannels as Integer = 2) as boolean"},
    {"LoadFileMT(file as folderitem, InputChannels as Integer = 2, OutputChannels as Integer = 2) as "
     "boolean"},
    {"Pause"},
    {"Play"},
    {"Reset"},
    {"updateEQ(eqBands() as double)"},
    {"updateEQ(eqBands() as single)"},
    {"InputVolume(inputNum as UInt32) as double", 4, true},
    {"InputEnabled(inputNum as UInt32) as boolean", 4, true},
    {"ChannelMap as Integer()"},
    {"setChannelMap(values() as Integer)"},
};

const std::vector<const char*> constants = {
    "TimePitchUnitDefault = 0",    "TimePitchUnitTimePitch = 1",  "TimePitchUnitVarispeed = 2",
    "OutputUnitDefault = 0",       "OutputUnitGenericOutput = 1", "OutputUnitHALOutput = 2",
    "OutputUnitDefaultOutput = 3", "OutputUnitSystemOutput = 4",
};

// The class data of the 32-bit library.
#define FIELD(member, offset, size)                                                                          \
    static_assert(sizeof(void*) != 4 ||                                                                      \
                  (offsetof(AUPlayerData, member) == offset && sizeof(AUPlayerData::member) == size))
FIELD(sampleRate, 0, 8);
FIELD(trackLength, 8, 8);
FIELD(loopIn, 16, 8);
FIELD(loopOut, 24, 8);
FIELD(timePitchUnit, 32, 4);
FIELD(outputUnit, 36, 4);
FIELD(tag, 40, 4);
FIELD(dataIsInterleaved, 44, 1);
FIELD(file, 48, 4);
FIELD(dataIsFloat, 52, 1);
FIELD(lasterror, 56, 4);
FIELD(dataIsNativeEndian, 60, 1);
FIELD(clientFormatString, 64, 4);
FIELD(dataIsSignedInteger, 68, 1);
FIELD(outputFormatString, 72, 4);
FIELD(dataIsPCM, 76, 1);
FIELD(dataNumberInterleavedChannels, 80, 4);
FIELD(dataNumberChannelStreams, 84, 4);
FIELD(dataNumberChannels, 88, 4);
FIELD(dataSampleWordSize, 92, 4);
FIELD(maximumFramesPerSlice, 96, 4);
FIELD(graph, 100, 4);
FIELD(converter, 104, 4);
FIELD(output, 108, 4);
FIELD(timePitch, 112, 4);
FIELD(varispeed, 116, 4);
FIELD(mixer, 120, 4);
FIELD(equalizer, 124, 4);
FIELD(clientFormat, 128, 4);
FIELD(outputFormat, 132, 4);
FIELD(outputNode, 136, 4);
FIELD(timePitchNode, 140, 4);
FIELD(varispeedNode, 144, 4);
FIELD(equalizerNode, 148, 4);
FIELD(mixerNode, 152, 4);
FIELD(converterNode, 156, 4);
FIELD(position, 160, 4);
FIELD(endFrame, 164, 4);
FIELD(lastRenderOffset, 168, 4);
FIELD(loadedAudio, 172, 4);
FIELD(isLooping, 176, 1);
FIELD(isFileLoaded, 180, 1);
static_assert(sizeof(void*) != 4 || sizeof(AUPlayerData) == 184);
static_assert(offsetof(AUPlayerData, sampleRate) % 8 == 0 && offsetof(AUPlayerData, trackLength) % 8 == 0 &&
              offsetof(AUPlayerData, loopIn) % 8 == 0 && offsetof(AUPlayerData, loopOut) % 8 == 0);

TEST(AUPlayerClass, HasItsNameSizeAndCounts)
{
    support::expectClass(auPlayerClass, {"AUPlayerKVX", sizeof(AUPlayerData), 41, 12, 0, 8});
}

TEST(AUPlayerClass, HasFortyOnePropertiesInOrder) { support::expectProperties(auPlayerClass, properties); }

TEST(AUPlayerClass, HasTwelveMethodsInOrder)
{
    support::expectMethods(auPlayerClass.methods, auPlayerClass.methodCount, methods);
}

TEST(AUPlayerClass, HasEightConstantsInOrder) { support::expectConstants(auPlayerClass, constants); }

TEST(AUPlayerClass, HasADifferentFunctionForEachMember)
{
    support::expectDifferentFunctions(auPlayerClass, 46);
}

class AUPlayerGetters : public PlayerTest {};

TEST_F(AUPlayerGetters, IgnoreTheirParameter)
{
    ASSERT_TRUE(load());
    graph_spy::platform().devices = {{40, "Built-in Output"}};
    int getters = 0;
    for (const support::PropertyFact& expected : properties) {
        if (expected.access != Access::getter && expected.access != Access::accessors) continue;
        SCOPED_TRACE(expected.name);
        ++getters;
        const REALproperty& row = members.property(expected.name);
        spy::forgetCalls();
        const bool isNumber = expected.type != std::string_view("Dictionary");
        const auto read = [&](HostInteger parameter) -> std::string {
            if (isNumber) return support::valueOf(row, object(), parameter);
            const Object dictionary = support::callGetter<Object>(row, object(), parameter);
            if (!dictionary) return "nil";
            host().drop(dictionary);
            return "a dictionary";
        };
        const std::string value = read(row.parameter);
        EXPECT_NE(value, "nil");
        const Notes calls = spy::calls();
        for (const HostInteger parameter : support::anyParameter) {
            spy::forgetCalls();
            EXPECT_EQ(read(parameter), value) << parameter;
            EXPECT_EQ(spy::calls(), calls) << parameter;
        }
    }
    EXPECT_EQ(getters, 17);
    destruct();
}

using RegisteredAUPlayer = PlayerTest;

TEST_F(RegisteredAUPlayer, InLayout13IsTheTableItself) { support::expectRegisteredUnchanged(auPlayerClass); }

TEST_F(RegisteredAUPlayer, InLayout9HasTheFirstWordsOfEachRow)
{
    support::expectRegisteredInLayout9(auPlayerClass);
}

} // namespace
