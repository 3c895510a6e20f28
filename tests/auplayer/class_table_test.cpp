// The class table of AUPlayerKVX, compared with the tables below.
#include "tests/auplayer/player_test.h"
#include "tests/support/property_value.h"

#include "abi/accessor_sentinels.h"
#include "plugin/process_state.h"
#include "plugin/register_class.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <set>

namespace {

using namespace auplayer_test;
using auplayer::AUPlayerData;

enum Access { field, writableField, getter, accessors, fieldWithSetter };

struct Property {
    const char* name;
    const char* type;
    Access access;
    HostInteger offset;         // offset of a field in the class data; 0 without a field
    HostInteger offsetOn32Bits; // offset of the field in the shipped 32-bit library
};

#define OFFSET(member) HostInteger(offsetof(AUPlayerData, member))

// clang-format off
const Property properties[] = {
    {"ClientFormatString",            "String",     field,           OFFSET(clientFormatString),            64},
    {"CurrentDeviceID",               "UInt32",     accessors,       0,                                    0},
    {"DefaultDeviceID",               "UInt32",     getter,          0,                                    0},
    {"OuputDevices",                  "Dictionary", getter,          0,                                    0},
    {"OutputFormatString",            "String",     field,           OFFSET(outputFormatString),            72},
    {"DataIsInterleaved",             "Boolean",    field,           OFFSET(dataIsInterleaved),             44},
    {"DataIsFloat",                   "Boolean",    field,           OFFSET(dataIsFloat),                   52},
    {"DataIsNativeEndian",            "Boolean",    field,           OFFSET(dataIsNativeEndian),            60},
    {"DataIsSignedInteger",           "Boolean",    field,           OFFSET(dataIsSignedInteger),           68},
    {"DataIsPCM",                     "Boolean",    field,           OFFSET(dataIsPCM),                     76},
    {"DataNumberInterleavedChannels", "Integer",    field,           OFFSET(dataNumberInterleavedChannels), 80},
    {"DataNumberChannelStreams",      "Integer",    field,           OFFSET(dataNumberChannelStreams),      84},
    {"DataNumberChannels",            "Integer",    field,           OFFSET(dataNumberChannels),            88},
    {"DataSampleWordSize",            "Integer",    field,           OFFSET(dataSampleWordSize),            92},
    {"ConverterHandle",               "Integer",    writableField,   OFFSET(converter),                     104},
    {"GraphHandle",                   "Integer",    writableField,   OFFSET(graph),                         100},
    {"TimePitchHandle",               "Integer",    writableField,   OFFSET(timePitch),                     112},
    {"VariSpeedHandle",               "Integer",    writableField,   OFFSET(varispeed),                     116},
    {"OutputHandle",                  "Integer",    writableField,   OFFSET(output),                        108},
    {"MixerHandle",                   "Integer",    writableField,   OFFSET(mixer),                         120},
    {"EqualizerHandle",               "Integer",    writableField,   OFFSET(equalizer),                     124},
    {"Lasterror",                     "Integer",    writableField,   OFFSET(lasterror),                     56},
    {"Tag",                           "Variant",    writableField,   OFFSET(tag),                           40},
    {"File",                          "FolderItem", field,           OFFSET(file),                          48},
    {"Pan",                           "Double",     accessors,       0,                                    0},
    {"CurrentTime",                   "Double",     accessors,       0,                                    0},
    {"TrackLength",                   "Double",     getter,          0,                                    0},
    {"Looping",                       "Boolean",    accessors,       0,                                    0},
    {"Playing",                       "Boolean",    accessors,       0,                                    0},
    {"LoopIn",                        "Double",     accessors,       0,                                    0},
    {"LoopOut",                       "Double",     accessors,       0,                                    0},
    {"OutputVolume",                  "Double",     accessors,       0,                                    0},
    {"TimeRate",                      "Double",     accessors,       0,                                    0},
    {"PitchRate",                     "Double",     accessors,       0,                                    0},
    {"MeterLevel",                    "Double",     getter,          0,                                    0},
    {"SampleRate",                    "Double",     getter,          0,                                    0},
    {"Overlap",                       "Double",     accessors,       0,                                    0},
    {"EnablePeakLocking",             "Boolean",    accessors,       0,                                    0},
    {"MaximumFramesPerSlice",         "Integer",    writableField,   OFFSET(maximumFramesPerSlice),         96},
    {"OutputUnit",                    "Integer",    writableField,   OFFSET(outputUnit),                    36},
    {"TimePitchUnit",                 "Integer",    fieldWithSetter, OFFSET(timePitchUnit),                 32},
};
// clang-format on

const char* const methods[] = {
    "Data as Memoryblock",
    "LoadFile(file as folderitem, InputChannels as Integer = 2, OutputChannels as Integer = 2) as boolean",
    "LoadFileMT(file as folderitem, InputChannels as Integer = 2, OutputChannels as Integer = 2) as boolean",
    "Pause",
    "Play",
    "Reset",
    "updateEQ(eqBands() as double)",
    "updateEQ(eqBands() as single)",
    "InputVolume(inputNum as UInt32) as double",
    "InputEnabled(inputNum as UInt32) as boolean",
    "ChannelMap as Integer()",
    "setChannelMap(values() as Integer)",
};
constexpr std::size_t firstIndexed = 8, afterIndexed = 10;

const char* const constants[] = {
    "TimePitchUnitDefault = 0",    "TimePitchUnitTimePitch = 1",  "TimePitchUnitVarispeed = 2",
    "OutputUnitDefault = 0",       "OutputUnitGenericOutput = 1", "OutputUnitHALOutput = 2",
    "OutputUnitDefaultOutput = 3", "OutputUnitSystemOutput = 4",
};

// The fields of the class data: offsets and sizes, in this program and in the shipped 32-bit library.
const struct {
    const char* field;
    std::size_t offset, size, offsetOn32Bits, sizeOn32Bits;
} record[] = {
#define FIELD(member) #member, offsetof(AUPlayerData, member), sizeof(AUPlayerData::member)
    // clang-format off
    {FIELD(sampleRate),                      0, 8},
    {FIELD(trackLength),                     8, 8},
    {FIELD(loopIn),                         16, 8},
    {FIELD(loopOut),                        24, 8},
    {FIELD(timePitchUnit),                  32, 4},
    {FIELD(outputUnit),                     36, 4},
    {FIELD(tag),                            40, 4},
    {FIELD(dataIsInterleaved),              44, 1},
    {FIELD(file),                           48, 4},
    {FIELD(dataIsFloat),                    52, 1},
    {FIELD(lasterror),                      56, 4},
    {FIELD(dataIsNativeEndian),             60, 1},
    {FIELD(clientFormatString),             64, 4},
    {FIELD(dataIsSignedInteger),            68, 1},
    {FIELD(outputFormatString),             72, 4},
    {FIELD(dataIsPCM),                      76, 1},
    {FIELD(dataNumberInterleavedChannels),  80, 4},
    {FIELD(dataNumberChannelStreams),       84, 4},
    {FIELD(dataNumberChannels),             88, 4},
    {FIELD(dataSampleWordSize),             92, 4},
    {FIELD(maximumFramesPerSlice),          96, 4},
    {FIELD(graph),                         100, 4},
    {FIELD(converter),                     104, 4},
    {FIELD(output),                        108, 4},
    {FIELD(timePitch),                     112, 4},
    {FIELD(varispeed),                     116, 4},
    {FIELD(mixer),                         120, 4},
    {FIELD(equalizer),                     124, 4},
    {FIELD(clientFormat),                  128, 4},
    {FIELD(outputFormat),                  132, 4},
    {FIELD(outputNode),                    136, 4},
    {FIELD(timePitchNode),                 140, 4},
    {FIELD(varispeedNode),                 144, 4},
    {FIELD(equalizerNode),                 148, 4},
    {FIELD(mixerNode),                     152, 4},
    {FIELD(converterNode),                 156, 4},
    {FIELD(position),                      160, 4},
    {FIELD(endFrame),                      164, 4},
    {FIELD(lastRenderOffset),              168, 4},
    {FIELD(loadedAudio),                   172, 4},
    {FIELD(isLooping),                     176, 1},
    {FIELD(isFileLoaded),                  180, 1},
    // clang-format on
};

TEST(AUPlayerClass, HasTheFieldsOfItsRecordInOrder)
{
    std::size_t end = 0;
    for (const auto& fact : record) {
        SCOPED_TRACE(fact.field);
        EXPECT_GE(fact.offset, end);
        end = fact.offset + fact.size;
        if (sizeof(void*) == 4) {
            EXPECT_EQ(fact.offset, fact.offsetOn32Bits);
            EXPECT_EQ(fact.size, fact.sizeOn32Bits);
        }
    }
    if (sizeof(void*) == 4) {
        EXPECT_EQ(sizeof(AUPlayerData), 184u);
    }
    for (const auto* wide : {&record[0], &record[1], &record[2], &record[3]}) EXPECT_EQ(wide->offset % 8, 0u);
}

TEST(AUPlayerClass, HasItsNameSizeAndCounts)
{
    const REALclassDefinition& definition = auPlayerClass;
    EXPECT_EQ(definition.version, 13u);
    EXPECT_STREQ(definition.name, "AUPlayerKVX");
    EXPECT_EQ(definition.superName, nullptr);
    EXPECT_EQ(definition.dataSize, sizeof(AUPlayerData));
    EXPECT_NE(definition.constructor, nullptr);
    EXPECT_NE(definition.destructor, nullptr);
    EXPECT_EQ(definition.flags, 4u);
    EXPECT_EQ(definition.propertyCount, 41u);
    EXPECT_EQ(definition.methodCount, 12u);
    EXPECT_EQ(definition.constantCount, 8u);

    EXPECT_EQ(definition.events, nullptr);
    EXPECT_EQ(definition.eventCount, 0u);
    EXPECT_EQ(definition.eventInstances, nullptr);
    EXPECT_EQ(definition.eventInstanceCount, 0u);
    EXPECT_EQ(definition.interfaces, nullptr);
    EXPECT_EQ(definition.sharedProperties, nullptr);
    EXPECT_EQ(definition.sharedPropertyCount, 0u);
    EXPECT_EQ(definition.sharedMethods, nullptr);
    EXPECT_EQ(definition.sharedMethodCount, 0u);
    for (const Word word : definition.unused) EXPECT_EQ(word, 0u);
    for (const Word word : definition.newer) EXPECT_EQ(word, 0u);
}

TEST(AUPlayerClass, HasFortyOnePropertiesInOrder)
{
    ASSERT_EQ(auPlayerClass.propertyCount, std::size(properties));
    const auto fieldGetter = reinterpret_cast<AnyFunction>(REALstandardGetter);
    const auto fieldSetter = reinterpret_cast<AnyFunction>(REALstandardSetter);
    const auto isFunction = [&](AnyFunction word) {
        return word && word != fieldGetter && word != fieldSetter;
    };
    const auto* row = static_cast<const REALproperty*>(auPlayerClass.properties);
    for (const Property& expected : properties) {
        SCOPED_TRACE(expected.name);
        const bool isField = expected.access == field || expected.access == writableField ||
                             expected.access == fieldWithSetter;
        EXPECT_STREQ(row->group, "");
        EXPECT_STREQ(row->name, expected.name);
        EXPECT_STREQ(row->type, expected.type);
        EXPECT_EQ(row->flags, 6u);
        EXPECT_EQ(row->getter == fieldGetter, isField);
        EXPECT_EQ(isFunction(row->getter), !isField);
        EXPECT_EQ(row->setter == fieldSetter, expected.access == writableField);
        EXPECT_EQ(isFunction(row->setter),
                  expected.access == accessors || expected.access == fieldWithSetter);
        EXPECT_EQ(row->setter == nullptr, expected.access == field || expected.access == getter);
        EXPECT_EQ(row->parameter, expected.offset);
        if (sizeof(void*) == 4) {
            EXPECT_EQ(row->parameter, expected.offsetOn32Bits);
        }
        EXPECT_EQ(row->editor, nullptr);
        EXPECT_EQ(row->enumeration, nullptr);
        EXPECT_EQ(row->tenth, 0u);
        EXPECT_EQ(row->trailing[0], 0u);
        EXPECT_EQ(row->trailing[1], 0u);
        ++row;
    }
}

TEST(AUPlayerClass, HasTwelveMethodsInOrder)
{
    ASSERT_EQ(auPlayerClass.methodCount, std::size(methods));
    const auto* row = static_cast<const REALmethod*>(auPlayerClass.methods);
    for (std::size_t i = 0; i < std::size(methods); ++i) {
        SCOPED_TRACE(methods[i]);
        EXPECT_STREQ(row[i].declaration, methods[i]);
        EXPECT_NE(row[i].function, nullptr);
        EXPECT_EQ(row[i].setter != nullptr, i >= firstIndexed && i < afterIndexed)
            << "an indexed property has a setter";
        EXPECT_EQ(row[i].flags, 4u);
        EXPECT_EQ(row[i].trailing[0], 0u);
        EXPECT_EQ(row[i].trailing[1], 0u);
    }
}

TEST(AUPlayerClass, HasEightConstantsInOrder)
{
    ASSERT_EQ(auPlayerClass.constantCount, std::size(constants));
    const auto* row = static_cast<const REALconstant*>(auPlayerClass.constants);
    for (const char* const declaration : constants) {
        SCOPED_TRACE(declaration);
        EXPECT_STREQ(row->declaration, declaration);
        for (const Word word : row->further) EXPECT_EQ(word, 0u);
        ++row;
    }
}

TEST(AUPlayerClass, HasADifferentFunctionForEachMember)
{
    std::set<AnyFunction> functions;
    std::size_t count = 0;
    const auto add = [&](AnyFunction function) {
        const auto word = reinterpret_cast<Word>(function);
        if (!function || word == REALstandardGetter || word == REALstandardSetter) return;
        functions.insert(function);
        ++count;
    };
    const auto* property = static_cast<const REALproperty*>(auPlayerClass.properties);
    for (Word i = 0; i < auPlayerClass.propertyCount; ++i) add(property[i].getter), add(property[i].setter);
    const auto* method = static_cast<const REALmethod*>(auPlayerClass.methods);
    for (Word i = 0; i < auPlayerClass.methodCount; ++i) add(method[i].function), add(method[i].setter);
    add(auPlayerClass.constructor);
    add(auPlayerClass.destructor);
    EXPECT_EQ(count, 46u);
    EXPECT_EQ(functions.size(), count);
}

class AUPlayerGetters : public PlayerTest {};

TEST_F(AUPlayerGetters, IgnoreTheirParameter)
{
    ASSERT_TRUE(load());
    graph_spy::platform().devices = {{40, "Built-in Output"}};
    int getters = 0;
    for (const Property& expected : properties) {
        if (expected.access != getter && expected.access != accessors) continue;
        SCOPED_TRACE(expected.name);
        ++getters;
        const REALproperty& row = propertyRow(expected.name);
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

/// Registers the class as in a host that uses one version (layout) of the class definition record.
class RegisteredAUPlayer : public PlayerTest {
protected:
    REALclassDefinition registered(int layout)
    {
        REALclassDefinition definition = auPlayerClass;
        CurrentREALControlVersion = layout;
        MyREALRegisterClass(&definition);
        CurrentREALControlVersion = newestLayout;
        EXPECT_EQ(host().registrations().size(), 1u);
        return definition;
    }
};

TEST_F(RegisteredAUPlayer, InLayout13IsTheTableItself)
{
    const REALclassDefinition definition = registered(13);
    EXPECT_EQ(definition.version, 13u);
    EXPECT_EQ(definition.dataSize, (sizeof(AUPlayerData) + 15) / 16 * 16);
    if (sizeof(void*) == 4) {
        EXPECT_EQ(definition.dataSize, 192u);
    }
    EXPECT_EQ(definition.properties, auPlayerClass.properties);
    EXPECT_EQ(definition.methods, auPlayerClass.methods);
    EXPECT_EQ(definition.constants, auPlayerClass.constants);
}

TEST_F(RegisteredAUPlayer, InLayout9HasTheFirstWordsOfEachRow)
{
    const REALclassDefinition definition = registered(9);
    EXPECT_EQ(definition.version, 9u);
    const auto expectRows = [](void* older, const void* current, Word count, std::size_t olderBytes,
                               std::size_t currentBytes) {
        ASSERT_NE(older, nullptr);
        EXPECT_NE(older, current);
        for (Word i = 0; i < count; ++i)
            EXPECT_EQ(std::memcmp(static_cast<char*>(older) + i * olderBytes,
                                  static_cast<const char*>(current) + i * currentBytes, olderBytes),
                      0)
                << "row " << i;
        std::free(older);
    };
    ASSERT_EQ(definition.propertyCount, 41u);
    ASSERT_EQ(definition.methodCount, 12u);
    ASSERT_EQ(definition.constantCount, 8u);
    expectRows(definition.properties, auPlayerClass.properties, 41, sizeof(REALproperty9),
               sizeof(REALproperty));
    expectRows(definition.methods, auPlayerClass.methods, 12, sizeof(REALmethod9), sizeof(REALmethod));
    expectRows(definition.constants, auPlayerClass.constants, 8, sizeof(REALconstant9), sizeof(REALconstant));
}

} // namespace
