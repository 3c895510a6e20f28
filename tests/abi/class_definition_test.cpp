// The position of each field in the structures of a class definition.
#include "abi/class_definition.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <iterator>
#include <vector>

namespace {

struct Field {
    const char* name;
    std::size_t offset, size;
};

/// Expect the fields to be contiguous and to fill `words` machine words.
void expectInOrder(const std::vector<Field>& fields, std::size_t words)
{
    std::size_t next = 0;
    for (const Field& field : fields) {
        EXPECT_EQ(field.offset, next * sizeof(Word)) << field.name;
        next += field.size / sizeof(Word);
    }
    EXPECT_EQ(next, words);
}

#define FIELD(Record, member)                                                                                \
    Field { #member, offsetof(Record, member), sizeof(Record::member) }

TEST(ClassDefinition, HasTwentyFiveCommonWordsInOrder)
{
    using Words = REALclassDefinition9;
    // clang-format off
    const std::vector<Field> fields = {
        FIELD(Words, version),          // word 1
        FIELD(Words, name),
        FIELD(Words, superName),
        FIELD(Words, dataSize),
        FIELD(Words, dataOffset),       // word 5
        FIELD(Words, constructor),
        FIELD(Words, destructor),
        FIELD(Words, properties),
        FIELD(Words, propertyCount),
        FIELD(Words, methods),          // word 10
        FIELD(Words, methodCount),
        FIELD(Words, events),
        FIELD(Words, eventCount),
        FIELD(Words, eventInstances),
        FIELD(Words, eventInstanceCount), // word 15
        FIELD(Words, interfaces),
        FIELD(Words, unused),           // words 17 and 18
        FIELD(Words, constants),
        FIELD(Words, constantCount),    // word 20
        FIELD(Words, flags),
        FIELD(Words, sharedProperties),
        FIELD(Words, sharedPropertyCount),
        FIELD(Words, sharedMethods),
        FIELD(Words, sharedMethodCount), // word 25
    };
    // clang-format on
    expectInOrder(fields, 25);
    EXPECT_EQ(sizeof(REALclassDefinition9), 25 * sizeof(Word));
}

TEST(ClassDefinition, HasTheNewerWordsAfterTheCommonWords)
{
    REALclassDefinition definition = {};
    EXPECT_EQ(reinterpret_cast<char*>(definition.newer) - reinterpret_cast<char*>(&definition),
              static_cast<std::ptrdiff_t>(25 * sizeof(Word)));
    EXPECT_GT(sizeof definition, 25 * sizeof(Word));
    EXPECT_EQ(sizeof definition % sizeof(Word), 0u);
}

TEST(PropertyRecord, HasTwelveWordsOrTenInLayout9)
{
    // clang-format off
    expectInOrder({FIELD(REALproperty, group), FIELD(REALproperty, name), FIELD(REALproperty, type),
                   FIELD(REALproperty, flags), FIELD(REALproperty, getter), FIELD(REALproperty, setter),
                   FIELD(REALproperty, parameter), FIELD(REALproperty, editor), FIELD(REALproperty, enumeration),
                   FIELD(REALproperty, tenth), FIELD(REALproperty, trailing)}, 12);
    expectInOrder({FIELD(REALproperty9, group), FIELD(REALproperty9, name), FIELD(REALproperty9, type),
                   FIELD(REALproperty9, flags), FIELD(REALproperty9, getter), FIELD(REALproperty9, setter),
                   FIELD(REALproperty9, parameter), FIELD(REALproperty9, editor), FIELD(REALproperty9, enumeration),
                   FIELD(REALproperty9, tenth)}, 10);
    // clang-format on
}

TEST(MethodRecord, HasSixWordsOrFourInLayout9)
{
    // clang-format off
    expectInOrder({FIELD(REALmethod, function), FIELD(REALmethod, setter), FIELD(REALmethod, declaration),
                   FIELD(REALmethod, flags), FIELD(REALmethod, trailing)}, 6);
    expectInOrder({FIELD(REALmethod9, function), FIELD(REALmethod9, setter), FIELD(REALmethod9, declaration),
                   FIELD(REALmethod9, flags)}, 4);
    // clang-format on
}

TEST(EventRecord, HasFourWordsOrTwoInLayout9)
{
    expectInOrder({FIELD(REALevent, declaration), FIELD(REALevent, systemUse), FIELD(REALevent, trailing)},
                  4);
    expectInOrder({FIELD(REALevent9, declaration), FIELD(REALevent9, systemUse)}, 2);
}

TEST(ConstantRecord, HasFiveWordsOrThreeInLayout9)
{
    expectInOrder({FIELD(REALconstant, declaration), FIELD(REALconstant, further)}, 5);
    expectInOrder({FIELD(REALconstant9, declaration), FIELD(REALconstant9, further)}, 3);
}

TEST(ClassDefinition, LayoutsAreNineToThirteen)
{
    EXPECT_EQ(oldestLayout, 9);
    EXPECT_EQ(newestLayout, 13);
}

TEST(ClassDefinition, IsAllZeroBytesWhenValueInitialised)
{
    const REALclassDefinition definition = {};
    std::vector<unsigned char> bytes(sizeof definition);
    std::memcpy(bytes.data(), &definition, sizeof definition);
    for (unsigned char byte : bytes) EXPECT_EQ(byte, 0);
}

} // namespace
