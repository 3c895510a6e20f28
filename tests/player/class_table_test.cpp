// The class table of CoreAudioPlayerKVX, compared with the tables below.
#include "tests/player/player_object.h"
#include "tests/support/class_table.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// clang-format off
const std::vector<support::MethodFact> methods = {
    {"AddAudio(Data as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean"},
    {"AddFloatAudio(FloatData as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean"},
    {"AddAudioStereo(Data1 as memoryblock, Data2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean"},
    {"AddFloatAudioStereo(FloatData1 as memoryblock, FloatData2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean"},
    {"PlayAudio(Data as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean"},
    {"PlayFloatAudio(FloatData as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean"},
    {"PlayAudioStereo(Data1 as memoryblock, Data2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean"},
    {"PlayFloatAudioStereo(FloatData1 as memoryblock, FloatData2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean"},
    {"FreeSpace as integer"},
    {"HasFreeSpace as boolean"},
    {"HardwareSampleRate as single"},
    {"HardwareNumberOfChannels as integer"},
    {"Close"},
    {"Stop"},
    {"Start as boolean"},
};
// clang-format on

static_assert(sizeof(void*) != 4 || sizeof(player::AudioPlayerData) == 1664);

TEST(PlayerClass, HasItsNameSizeAndCounts)
{
    support::expectClass(coreAudioPlayerClass,
                         {"CoreAudioPlayerKVX", sizeof(player::AudioPlayerData), 8, 15});
}

TEST(PlayerClass, HasEightPropertiesInOrder)
{
    using support::Access;
    support::expectProperties(coreAudioPlayerClass, {
                                                        {"OutputPositionRelative", "Double", Access::getter},
                                                        {"SampleRate", "Single", Access::accessors},
                                                        {"NumberOfChannels", "Integer", Access::accessors},
                                                        {"OutputDeviceID", "Integer", Access::accessors},
                                                        {"IsRunning", "Boolean", Access::getter},
                                                        {"OutputPosition", "Double", Access::getter},
                                                        {"NoUnderflow", "Boolean", Access::accessors},
                                                        {"HadUnderflow", "Boolean", Access::accessors},
                                                    });
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
        support::expectValue(test::members.property(fact.property), player, fact.value);
}

TEST(PlayerClass, HasFifteenMethodsInOrder)
{
    support::expectMethods(coreAudioPlayerClass.methods, coreAudioPlayerClass.methodCount, methods);
}

TEST(PlayerClass, HasTheDestructorAsItsCloseMethod)
{
    EXPECT_EQ(test::members.method("Close").function, coreAudioPlayerClass.destructor);
    EXPECT_NE(test::members.method("Stop").function, nullptr);
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
