// The rows of a class table: what each becomes for the host.
#include "plugin/class_data.h"
#include "plugin/class_table.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

using Integer = HostInteger;
template <class T>
using Array = ArrayOf<T>*;

// ---- a class made of every kind of row ----

struct Record {
    Word before;
    HostInteger level;
    float gain;
    HostBoolean isOn;
};

double getTime(REALobjectStruct*, HostInteger) { return 0.5; }
void setTime(REALobjectStruct*, HostInteger, double) {}
HostInteger getCode(REALobjectStruct*, HostInteger) { return 0x61626364; }
HostInteger add(REALobjectStruct*, HostInteger a, HostInteger b) { return a + b; }
void nothing(REALobjectStruct*) {}
HostInteger twice(HostInteger a) { return 2 * a; }
float throws(REALobjectStruct*) { throw std::runtime_error("past the border"); }
HostBoolean throwsNumber(HostInteger) { throw 42; }
void throwsAway(REALobjectStruct*) { throw "text"; }

void setLevel(REALobjectStruct* object, HostInteger parameter, HostInteger value)
{
    reinterpret_cast<HostInteger*>(object)[0] = parameter + value;
}
double getVolume(REALobjectStruct*, std::uint32_t index) { return index / 4.0; }
void setVolume(REALobjectStruct* object, std::uint32_t index, double value)
{
    reinterpret_cast<double*>(object)[index] = value;
}
void throwsVolume(REALobjectStruct*, std::uint32_t, double) { throw "past the border"; }
HostInteger lengthOf(REALobjectStruct*, Array<double> values) { return values ? 1 : 0; }
Array<Integer> noMap(REALobjectStruct*) { return nullptr; }

using table::classConstant;
using table::constant;
using table::fieldWithSetter;
using table::property;

REALproperty properties[] = {
    property("Time", table::asDouble, getTime, setTime),
    property("Length", table::asDouble, getTime, table::readOnly),
    constant("kCode", table::asInteger, getCode),
    KVX_FIELD("Level", table::asInteger, readWrite, Record, level),
    KVX_FIELD("Gain", table::asSingle, readOnly, Record, gain),
    KVX_FIELD("On", table::asBoolean, readWrite, Record, isOn),
    fieldWithSetter("Mode", table::asInteger, offsetof(Record, level), setLevel),
};

REALmethod methods[] = {
    KVX_METHOD(add, "Add(a as integer, b as integer) as integer"),
    KVX_METHOD(nothing, "Nothing"),
    KVX_FLAGLESS_METHOD(nothing, "Flagless"),
    KVX_METHOD(throws, "Throws as single"),
    KVX_METHOD(throwsAway, "ThrowsAway"),
    KVX_INDEXED_PROPERTY(getVolume, setVolume, "Volume(index as UInt32) as double"),
    KVX_INDEXED_PROPERTY(getVolume, throwsVolume, "Loudness(index as UInt32) as double"),
    KVX_METHOD(lengthOf, "LengthOf(values() as double) as integer"),
    KVX_METHOD(noMap, "Map as Integer()"),
};

REALconstant constants[] = {
    classConstant("Default = 0"),
    classConstant("Other = 1"),
    classConstant("Last = 2"),
};

REALmethod sharedMethods[] = {
    KVX_SHARED_METHOD(twice, "Twice(a as integer) as integer"),
    KVX_SHARED_METHOD(throwsNumber, "Throws(a as integer) as boolean"),
};

REALevent events[] = {{"Changed()", 0, {0, 0}}, {"Other()", 0, {0, 0}}};

TEST(ClassTable, PropertyRowsAreTwelveWords)
{
    const auto address = [](auto* function) { return reinterpret_cast<AnyFunction>(function); };
    const AnyFunction getterMark = reinterpret_cast<AnyFunction>(REALstandardGetter);
    const AnyFunction setterMark = reinterpret_cast<AnyFunction>(REALstandardSetter);
    // clang-format off
    const struct { const char* group; const char* name; const char* type; AnyFunction getter, setter; HostInteger parameter; } facts[] = {
        {"",          "Time",   "Double",  address(getTime), address(setTime), 0},
        {"",          "Length", "Double",  address(getTime), nullptr,          0},
        {"Constants", "kCode",  "Integer", address(getCode), nullptr,          0},
        {"",          "Level",  "Integer", getterMark,       setterMark,       offsetof(Record, level)},
        {"",          "Gain",   "Single",  getterMark,       nullptr,          offsetof(Record, gain)},
        {"",          "On",     "Boolean", getterMark,       setterMark,       offsetof(Record, isOn)},
        {"",          "Mode",   "Integer", getterMark,       address(setLevel), offsetof(Record, level)},
    };
    // clang-format on
    static_assert(std::size(facts) == std::size(properties));
    for (std::size_t i = 0; i < std::size(facts); ++i) {
        SCOPED_TRACE(facts[i].name);
        EXPECT_STREQ(properties[i].group, facts[i].group);
        EXPECT_STREQ(properties[i].name, facts[i].name);
        EXPECT_STREQ(properties[i].type, facts[i].type);
        EXPECT_EQ(properties[i].flags, 6u);
        EXPECT_EQ(properties[i].getter, facts[i].getter);
        EXPECT_EQ(properties[i].setter, facts[i].setter);
        EXPECT_EQ(properties[i].parameter, facts[i].parameter);
        EXPECT_EQ(properties[i].editor, nullptr);
        EXPECT_EQ(properties[i].enumeration, nullptr);
        EXPECT_EQ(properties[i].tenth, 0u);
        EXPECT_EQ(properties[i].trailing[0] | properties[i].trailing[1], 0u);
    }
}

TEST(ClassTable, MethodRowsCarryDeclarationAndFlags)
{
    // clang-format off
    const struct { const REALmethod& row; const char* declaration; Word flags; } facts[] = {
        {methods[0],       "Add(a as integer, b as integer) as integer", 4},
        {methods[1],       "Nothing",                                    4},
        {methods[2],       "Flagless",                                   0},
        {methods[7],       "LengthOf(values() as double) as integer",    4},
        {methods[8],       "Map as Integer()",                           4},
        {sharedMethods[0], "Twice(a as integer) as integer",             4},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.declaration);
        EXPECT_STREQ(fact.row.declaration, fact.declaration);
        EXPECT_EQ(fact.row.flags, fact.flags);
        EXPECT_NE(fact.row.function, nullptr);
        EXPECT_EQ(fact.row.setter, nullptr);
        EXPECT_EQ(fact.row.trailing[0] | fact.row.trailing[1], 0u);
    }
}

TEST(ClassTable, MethodsAreCalledThroughTheirRows)
{
    using Add = HostInteger(REALobjectStruct*, HostInteger, HostInteger);
    using Twice = HostInteger(HostInteger);
    EXPECT_EQ(reinterpret_cast<Add*>(methods[0].function)(nullptr, 40, 2), 42);
    EXPECT_EQ(reinterpret_cast<Twice*>(sharedMethods[0].function)(21), 42);
}

TEST(ClassTable, APropertyWithAnIndexIsAMethodWithASetter)
{
    const REALmethod& row = methods[5];
    EXPECT_STREQ(row.declaration, "Volume(index as UInt32) as double");
    EXPECT_EQ(row.flags, 4u);
    EXPECT_EQ(row.trailing[0] | row.trailing[1], 0u);
    EXPECT_EQ(reinterpret_cast<double (*)(REALobjectStruct*, std::uint32_t)>(row.function)(nullptr, 3), 0.75);

    using Setter = void (*)(REALobjectStruct*, std::uint32_t index, double value);
    double volumes[3] = {};
    auto* const object = reinterpret_cast<REALobjectStruct*>(volumes);
    reinterpret_cast<Setter>(row.setter)(object, 2, 0.5);
    EXPECT_EQ(volumes[2], 0.5) << "the index, then the value";
    EXPECT_NO_THROW(reinterpret_cast<Setter>(methods[6].setter)(object, 2, 0.25));
    EXPECT_EQ(volumes[2], 0.5);
}

TEST(ClassTable, AFieldsSetterIsGivenItsOffset)
{
    const REALproperty& row = properties[6];
    using Setter = void (*)(REALobjectStruct*, HostInteger parameter, HostInteger value);
    HostInteger written = 0;
    reinterpret_cast<Setter>(row.setter)(reinterpret_cast<REALobjectStruct*>(&written), row.parameter, 1000);
    EXPECT_EQ(written, 1000 + HostInteger(offsetof(Record, level)));
}

TEST(ClassTable, ConstantRowsAreTheirDeclarationsAndNothingElse)
{
    const char* const declarations[] = {"Default = 0", "Other = 1", "Last = 2"};
    static_assert(std::size(declarations) == std::size(constants));
    for (std::size_t i = 0; i < std::size(constants); ++i) {
        EXPECT_STREQ(constants[i].declaration, declarations[i]);
        for (const Word word : constants[i].further) EXPECT_EQ(word, 0u);
    }
}

TEST(ClassTable, NothingThrownCrossesTheBorder)
{
    EXPECT_EQ(reinterpret_cast<float (*)(REALobjectStruct*)>(methods[3].function)(nullptr), 0.0f);
    EXPECT_NO_THROW(reinterpret_cast<void (*)(REALobjectStruct*)>(methods[4].function)(nullptr));
    EXPECT_EQ(reinterpret_cast<HostBoolean (*)(HostInteger)>(sharedMethods[1].function)(1), 0);
}

TEST(ClassTable, ADefinitionCountsItsRows)
{
    const REALclassDefinition definition = table::classDefinition(
        "Made", 123, {nothing, throwsAway}, {properties, methods, events, sharedMethods, constants});
    std::vector<Word> words(sizeof definition / sizeof(Word));
    std::memcpy(words.data(), &definition, sizeof definition);

    const auto word = [](auto* address) { return reinterpret_cast<Word>(address); };
    std::vector<Word> expected(words.size());
    expected[0] = 13;
    expected[3] = 123;
    expected[5] = word(&nothing);
    expected[6] = word(&throwsAway);
    expected[7] = word(properties), expected[8] = 7;
    expected[9] = word(methods), expected[10] = 9;
    expected[11] = word(events), expected[12] = 2;
    expected[18] = word(constants), expected[19] = 3;
    expected[20] = 4;
    expected[23] = word(sharedMethods), expected[24] = 2;
    EXPECT_STREQ(definition.name, "Made");
    words[1] = 0;
    EXPECT_EQ(words, expected) << "no superclass, and zero wherever nothing is said";
}

TEST(ClassTable, ADefinitionWithoutRowsHasNoArrays)
{
    const REALclassDefinition definition = table::classDefinition("Bare", 0, {}, {});
    std::vector<Word> words(sizeof definition / sizeof(Word));
    std::memcpy(words.data(), &definition, sizeof definition);
    words[1] = 0;
    std::vector<Word> expected(words.size());
    expected[0] = 13;
    expected[20] = 4;
    EXPECT_EQ(words, expected);
}

TEST(ClassTable, ClassDataStandsAtTheOffsetThatTheHostChose)
{
    REALclassDefinition definition = {};
    alignas(Record) char object[64 + sizeof(Record)] = {};
    for (Word offset : {0, 4, 16, 64}) {
        definition.dataOffset = offset;
        Record& record = classData<Record>(reinterpret_cast<REALobjectStruct*>(object), definition);
        EXPECT_EQ(reinterpret_cast<char*>(&record), object + offset);
    }
}

} // namespace
