// The class table of CoreAudioPlayerKVX, compared with the tables below.
#include "tests/player/player_object.h"
#include "tests/support/property_value.h"

#include <gtest/gtest.h>

#include <iterator>

namespace {

const struct {
    const char* name;
    const char* type;
    bool isWritable;
} properties[] = {
    {"OutputPositionRelative", "Double", false},
    {"SampleRate", "Single", true},
    {"NumberOfChannels", "Integer", true},
    {"OutputDeviceID", "Integer", true},
    {"IsRunning", "Boolean", false},
    {"OutputPosition", "Double", false},
    {"NoUnderflow", "Boolean", true},
    {"HadUnderflow", "Boolean", true},
};

// clang-format off
const char* const declarations[] = {
    "AddAudio(Data as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean",
    "AddFloatAudio(FloatData as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean",
    "AddAudioStereo(Data1 as memoryblock, Data2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean",
    "AddFloatAudioStereo(FloatData1 as memoryblock, FloatData2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean",
    "PlayAudio(Data as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean",
    "PlayFloatAudio(FloatData as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean",
    "PlayAudioStereo(Data1 as memoryblock, Data2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean",
    "PlayFloatAudioStereo(FloatData1 as memoryblock, FloatData2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean",
    "FreeSpace as integer",
    "HasFreeSpace as boolean",
    "HardwareSampleRate as single",
    "HardwareNumberOfChannels as integer",
    "Close",
    "Stop",
    "Start as boolean",
};
// clang-format on

TEST(PlayerClass, HasItsNameSizeAndCounts)
{
    const REALclassDefinition& definition = coreAudioPlayerClass;
    EXPECT_EQ(definition.version, 13u);
    EXPECT_STREQ(definition.name, "CoreAudioPlayerKVX");
    EXPECT_EQ(definition.superName, nullptr);
    if (sizeof(void*) == 4) {
        EXPECT_EQ(definition.dataSize, 1664u);
    }
    EXPECT_EQ(definition.dataSize, sizeof(player::AudioPlayerData));
    EXPECT_NE(definition.constructor, nullptr);
    EXPECT_NE(definition.destructor, nullptr);
    EXPECT_EQ(definition.propertyCount, std::size(properties));
    EXPECT_EQ(definition.methodCount, std::size(declarations));
    EXPECT_EQ(definition.flags, 4u);

    EXPECT_EQ(definition.events, nullptr);
    EXPECT_EQ(definition.eventCount, 0u);
    EXPECT_EQ(definition.eventInstances, nullptr);
    EXPECT_EQ(definition.eventInstanceCount, 0u);
    EXPECT_EQ(definition.interfaces, nullptr);
    EXPECT_EQ(definition.constants, nullptr);
    EXPECT_EQ(definition.constantCount, 0u);
    EXPECT_EQ(definition.sharedProperties, nullptr);
    EXPECT_EQ(definition.sharedPropertyCount, 0u);
    EXPECT_EQ(definition.sharedMethods, nullptr);
    EXPECT_EQ(definition.sharedMethodCount, 0u);
    for (const Word word : definition.unused) EXPECT_EQ(word, 0u);
    for (const Word word : definition.newer) EXPECT_EQ(word, 0u);
}

TEST(PlayerClass, HasEightPropertiesInOrder)
{
    ASSERT_EQ(coreAudioPlayerClass.propertyCount, std::size(properties));
    const auto* row = static_cast<const REALproperty*>(coreAudioPlayerClass.properties);
    for (const auto& expected : properties) {
        SCOPED_TRACE(expected.name);
        EXPECT_STREQ(row->group, "");
        EXPECT_STREQ(row->name, expected.name);
        EXPECT_STREQ(row->type, expected.type);
        EXPECT_EQ(row->flags, 6u);
        EXPECT_NE(row->getter, nullptr);
        EXPECT_EQ(row->setter != nullptr, expected.isWritable);
        EXPECT_EQ(row->editor, nullptr);
        EXPECT_EQ(row->enumeration, nullptr);
        EXPECT_EQ(row->tenth, 0u);
        EXPECT_EQ(row->trailing[0], 0u);
        EXPECT_EQ(row->trailing[1], 0u);
        ++row;
    }
}

TEST(PlayerClass, GettersIgnoreTheirParameter)
{
    test::PlayerObject player;
    player->outputPositionRelative = 1.5;
    player->sampleRate = 22050;
    player->numberOfChannels = 2;
    player->outputDeviceID = 77;
    player->outputPosition = 2.5;
    player->noUnderflow = 1;
    player->hadUnderflow = 0;
    const struct {
        const char* property;
        const char* value;
    } facts[] = {
        {"OutputPositionRelative", "1.5"}, {"SampleRate", "22050"},   {"NumberOfChannels", "2"},
        {"OutputDeviceID", "77"},          {"IsRunning", "false"},    {"OutputPosition", "2.5"},
        {"NoUnderflow", "true"},           {"HadUnderflow", "false"},
    };
    for (const auto& fact : facts)
        for (const HostInteger parameter : support::anyParameter)
            EXPECT_EQ(support::valueOf(test::propertyRow(fact.property), player, parameter), fact.value)
                << fact.property;
}

TEST(PlayerClass, HasFifteenMethodsInOrder)
{
    ASSERT_EQ(coreAudioPlayerClass.methodCount, std::size(declarations));
    const auto* row = static_cast<const REALmethod*>(coreAudioPlayerClass.methods);
    for (const char* declaration : declarations) {
        SCOPED_TRACE(declaration);
        EXPECT_STREQ(row->declaration, declaration);
        EXPECT_NE(row->function, nullptr);
        EXPECT_EQ(row->setter, nullptr);
        EXPECT_EQ(row->flags, 4u);
        EXPECT_EQ(row->trailing[0], 0u);
        EXPECT_EQ(row->trailing[1], 0u);
        ++row;
    }
}

TEST(PlayerClass, HasTheDestructorAsItsCloseMethod)
{
    EXPECT_EQ(test::methodRow("Close").function, coreAudioPlayerClass.destructor);
    EXPECT_NE(test::methodRow("Stop").function, nullptr);
}

TEST(PlayerClass, HasADifferentFunctionForEachMethod)
{
    const auto* rows = static_cast<const REALmethod*>(coreAudioPlayerClass.methods);
    for (Word a = 0; a < coreAudioPlayerClass.methodCount; ++a)
        for (Word b = a + 1; b < coreAudioPlayerClass.methodCount; ++b) {
            const bool mayBeEqual =
                rows[a].declaration == std::string_view("Close") &&
                rows[b].declaration == std::string_view("Stop"); // the same effect as "Close"
            if (!mayBeEqual) {
                EXPECT_NE(rows[a].function, rows[b].function) << rows[a].declaration << '\n'
                                                              << rows[b].declaration;
            }
        }
}

} // namespace
