// The position of each field in a class definition and in the rows of its tables. The compiler checks the
// fixed layouts.
#include "abi/class_definition.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

struct Field {
    std::size_t offset, size;
};

/// Return whether the fields are contiguous and fill `words` machine words.
template <std::size_t count>
constexpr bool areInOrder(const Field (&fields)[count], std::size_t words)
{
    std::size_t next = 0;
    for (const Field& field : fields) {
        if (field.offset != next * sizeof(Word)) return false;
        next += field.size / sizeof(Word);
    }
    return next == words;
}

#define FIELD(Record, member)                                                                                \
    Field { offsetof(Record, member), sizeof(Record::member) }

// The 25 words that all layouts have.
// clang-format off
constexpr Field commonWords[] = {
    FIELD(REALclassDefinition9, version),          // word 1
    FIELD(REALclassDefinition9, name),
    FIELD(REALclassDefinition9, superName),
    FIELD(REALclassDefinition9, dataSize),
    FIELD(REALclassDefinition9, dataOffset),       // word 5
    FIELD(REALclassDefinition9, constructor),
    FIELD(REALclassDefinition9, destructor),
    FIELD(REALclassDefinition9, properties),
    FIELD(REALclassDefinition9, propertyCount),
    FIELD(REALclassDefinition9, methods),          // word 10
    FIELD(REALclassDefinition9, methodCount),
    FIELD(REALclassDefinition9, events),
    FIELD(REALclassDefinition9, eventCount),
    FIELD(REALclassDefinition9, eventInstances),
    FIELD(REALclassDefinition9, eventInstanceCount), // word 15
    FIELD(REALclassDefinition9, interfaces),
    FIELD(REALclassDefinition9, unused),           // words 17 and 18
    FIELD(REALclassDefinition9, constants),
    FIELD(REALclassDefinition9, constantCount),    // word 20
    FIELD(REALclassDefinition9, flags),
    FIELD(REALclassDefinition9, sharedProperties),
    FIELD(REALclassDefinition9, sharedPropertyCount),
    FIELD(REALclassDefinition9, sharedMethods),
    FIELD(REALclassDefinition9, sharedMethodCount), // word 25
};
// clang-format on
static_assert(areInOrder(commonWords, 25) && sizeof(REALclassDefinition9) == 25 * sizeof(Word));
static_assert(oldestLayout == 9 && newestLayout == 13);

// The rows of the class tables, in the newest layout and in layout 9.
constexpr Field propertyWords[] = {
    FIELD(REALproperty, group),     FIELD(REALproperty, name),    FIELD(REALproperty, type),
    FIELD(REALproperty, flags),     FIELD(REALproperty, getter),  FIELD(REALproperty, setter),
    FIELD(REALproperty, parameter), FIELD(REALproperty, editor),  FIELD(REALproperty, enumeration),
    FIELD(REALproperty, tenth),     FIELD(REALproperty, trailing)};
constexpr Field propertyWords9[] = {FIELD(REALproperty9, group),       FIELD(REALproperty9, name),
                                    FIELD(REALproperty9, type),        FIELD(REALproperty9, flags),
                                    FIELD(REALproperty9, getter),      FIELD(REALproperty9, setter),
                                    FIELD(REALproperty9, parameter),   FIELD(REALproperty9, editor),
                                    FIELD(REALproperty9, enumeration), FIELD(REALproperty9, tenth)};
constexpr Field methodWords[] = {FIELD(REALmethod, function), FIELD(REALmethod, setter),
                                 FIELD(REALmethod, declaration), FIELD(REALmethod, flags),
                                 FIELD(REALmethod, trailing)};
constexpr Field methodWords9[] = {FIELD(REALmethod9, function), FIELD(REALmethod9, setter),
                                  FIELD(REALmethod9, declaration), FIELD(REALmethod9, flags)};
constexpr Field eventWords[] = {FIELD(REALevent, declaration), FIELD(REALevent, systemUse),
                                FIELD(REALevent, trailing)};
constexpr Field eventWords9[] = {FIELD(REALevent9, declaration), FIELD(REALevent9, systemUse)};
constexpr Field constantWords[] = {FIELD(REALconstant, declaration), FIELD(REALconstant, further)};
constexpr Field constantWords9[] = {FIELD(REALconstant9, declaration), FIELD(REALconstant9, further)};
static_assert(areInOrder(propertyWords, 12));
static_assert(areInOrder(propertyWords9, 10));
static_assert(areInOrder(methodWords, 6));
static_assert(areInOrder(methodWords9, 4));
static_assert(areInOrder(eventWords, 4));
static_assert(areInOrder(eventWords9, 2));
static_assert(areInOrder(constantWords, 5));
static_assert(areInOrder(constantWords9, 3));

TEST(ClassDefinition, HasTheNewerWordsAfterTheCommonWords)
{
    REALclassDefinition definition = {};
    EXPECT_EQ(reinterpret_cast<char*>(definition.newer) - reinterpret_cast<char*>(&definition),
              static_cast<std::ptrdiff_t>(25 * sizeof(Word)));
    EXPECT_GT(sizeof definition, 25 * sizeof(Word));
    EXPECT_EQ(sizeof definition % sizeof(Word), 0u);
}

TEST(ClassDefinition, IsAllZeroBytesWhenValueInitialised)
{
    const REALclassDefinition definition = {};
    std::vector<unsigned char> bytes(sizeof definition);
    std::memcpy(bytes.data(), &definition, sizeof definition);
    for (unsigned char byte : bytes) EXPECT_EQ(byte, 0);
}

} // namespace
