// The rows of a class table: the contents of each row, the rows that compile, and the result when a function
// throws.
#include "plugin/class_data.h"
#include "plugin/class_table.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

// ---- a class with every kind of row ----

struct Data {
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

template <class T>
T throwingGetter(REALobjectStruct*, HostInteger)
{
    throw std::runtime_error("from a getter");
}
template <class T>
void throwingSetter(REALobjectStruct*, HostInteger, T)
{
    throw std::runtime_error("from a setter");
}
float throws(REALobjectStruct*) { throw std::runtime_error("from a method"); }
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
void throwsVolume(REALobjectStruct*, std::uint32_t, double) { throw "from an indexed setter"; }
HostInteger lengthOf(REALobjectStruct*, ArrayOf<double>* values) { return values ? 1 : 0; }
ArrayOf<HostInteger>* noMap(REALobjectStruct*) { return nullptr; }

using namespace table;

// clang-format off
REALproperty properties[] = {
    KVX_PROPERTY("Time",   asDouble,  getTime, setTime),
    KVX_PROPERTY("Length", asDouble,  getTime, readOnly),
    KVX_CONSTANT("kCode",  asInteger, getCode),
    KVX_FIELD   ("Level",  asInteger, level,   readWrite),
    KVX_FIELD   ("Gain",   asSingle,  gain,    readOnly),
    KVX_FIELD   ("On",     asBoolean, isOn,    readWrite),
    KVX_FIELD   ("Mode",   asInteger, level,   setLevel),
};

REALproperty throwingProperties[] = {
    KVX_PROPERTY("Time",   asDouble,  throwingGetter<double>,            throwingSetter<double>),
    KVX_PROPERTY("Count",  asInteger, throwingGetter<HostInteger>,       throwingSetter<HostInteger>),
    KVX_PROPERTY("On",     asBoolean, throwingGetter<HostBoolean>,       throwingSetter<HostBoolean>),
    KVX_PROPERTY("Name",   asString,  throwingGetter<REALstringStruct*>, throwingSetter<REALstringStruct*>),
    KVX_CONSTANT("kCode",  asInteger, throwingGetter<HostInteger>),
    KVX_FIELD   ("Mode",   asInteger, level,                             throwingSetter<HostInteger>),
};
// clang-format on

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

SharedMethod sharedMethods[] = {
    KVX_SHARED_METHOD(twice, "Twice(a as integer) as integer"),
    KVX_SHARED_METHOD(throwsNumber, "Throws(a as integer) as boolean"),
};

REALevent events[] = {{"Changed()", 0, {0, 0}}, {"Other()", 0, {0, 0}}};

// ---- compile-time checks (class_table_compile.cpp contains whole tables with mistakes) ----

static_assert(isGetterOf<getTime, double>);
static_assert(!isGetterOf<getTime, float>, "a getter of another type");
static_assert(!isGetterOf<add, HostInteger>, "a method is not a getter");
static_assert(isSetterOf<setTime, double> && isSetterOf<readOnly, double>);
static_assert(!isSetterOf<setTime, HostInteger>, "a setter of another type");
static_assert(!isSetterOf<getTime, double>, "getter and setter swapped");
static_assert(!isSetterOf<readWrite, double>, "only a field is written directly");

static_assert(isMethod(add, "Add(a as integer, b as integer) as integer"));
static_assert(!isMethod(add, "Add(a as integer) as integer"), "a parameter is missing");
static_assert(isSharedMethod(twice, "Twice(a as integer) as integer"));
static_assert(!isSharedMethod(twice, "Twice(a as integer)"), "the result is missing");

TEST(ClassTable, PropertyRowsHaveTwelveWords)
{
    const auto fieldGetter = reinterpret_cast<AnyFunction>(REALstandardGetter);
    const auto fieldSetter = reinterpret_cast<AnyFunction>(REALstandardSetter);
    // clang-format off
    const struct { const char* group; const char* name; const char* type; AnyFunction getter, setter; HostInteger parameter; } facts[] = {
        {"",          "Time",   "Double",  address<getTime>(), address<setTime>(),  0},
        {"",          "Length", "Double",  address<getTime>(), nullptr,             0},
        {"Constants", "kCode",  "Integer", address<getCode>(), nullptr,             0},
        {"",          "Level",  "Integer", fieldGetter,        fieldSetter,         offsetof(Data, level)},
        {"",          "Gain",   "Single",  fieldGetter,        nullptr,             offsetof(Data, gain)},
        {"",          "On",     "Boolean", fieldGetter,        fieldSetter,         offsetof(Data, isOn)},
        {"",          "Mode",   "Integer", fieldGetter,        address<setLevel>(), offsetof(Data, level)},
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

TEST(ClassTable, MethodRowsHaveDeclarationAndFlags)
{
    // clang-format off
    const struct { const REALmethod& row; const char* declaration; Word flags; } facts[] = {
        {methods[0],       "Add(a as integer, b as integer) as integer", 4},
        {methods[1],       "Nothing",                                    4},
        {methods[2],       "Flagless",                                   0},
        {methods[7],       "LengthOf(values() as double) as integer",    4},
        {methods[8],       "Map as Integer()",                           4},
        {sharedMethods[0].row, "Twice(a as integer) as integer",             4},
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
    EXPECT_EQ(reinterpret_cast<Twice*>(sharedMethods[0].row.function)(21), 42);
}

TEST(ClassTable, AnIndexedPropertyIsAMethodWithASetter)
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

TEST(ClassTable, TheSetterOfAFieldReceivesTheFieldsOffset)
{
    const REALproperty& row = properties[6];
    using Setter = void (*)(REALobjectStruct*, HostInteger parameter, HostInteger value);
    HostInteger written = 0;
    reinterpret_cast<Setter>(row.setter)(reinterpret_cast<REALobjectStruct*>(&written), row.parameter, 1000);
    EXPECT_EQ(written, 1000 + HostInteger(offsetof(Data, level)));
}

TEST(ClassTable, ConstantRowsHaveADeclarationOnly)
{
    const char* const declarations[] = {"Default = 0", "Other = 1", "Last = 2"};
    static_assert(std::size(declarations) == std::size(constants));
    for (std::size_t i = 0; i < std::size(constants); ++i) {
        EXPECT_STREQ(constants[i].declaration, declarations[i]);
        for (const Word word : constants[i].further) EXPECT_EQ(word, 0u);
    }
}

TEST(ClassTable, AMethodThatThrowsReturnsTheNeutralValue)
{
    EXPECT_EQ(reinterpret_cast<float (*)(REALobjectStruct*)>(methods[3].function)(nullptr), 0.0f);
    EXPECT_NO_THROW(reinterpret_cast<void (*)(REALobjectStruct*)>(methods[4].function)(nullptr));
    EXPECT_EQ(reinterpret_cast<HostBoolean (*)(HostInteger)>(sharedMethods[1].row.function)(1), 0);
}

template <class T>
void expectNeutral(const REALproperty& row)
{
    SCOPED_TRACE(row.name);
    EXPECT_EQ(reinterpret_cast<Getter<T>>(row.getter)(nullptr, 0), T());
    if (row.setter) EXPECT_NO_THROW(reinterpret_cast<Setter<T>>(row.setter)(nullptr, 0, T()));
}

TEST(ClassTable, AGetterThatThrowsReturnsTheNeutralValueAndASetterReturns)
{
    expectNeutral<double>(throwingProperties[0]);
    expectNeutral<HostInteger>(throwingProperties[1]);
    expectNeutral<HostBoolean>(throwingProperties[2]);
    expectNeutral<REALstringStruct*>(throwingProperties[3]);
    expectNeutral<HostInteger>(throwingProperties[4]);
    EXPECT_NO_THROW(reinterpret_cast<Setter<HostInteger>>(throwingProperties[5].setter)(nullptr, 0, 1));
}

std::vector<Word> wordsOf(const REALclassDefinition& definition)
{
    std::vector<Word> words(sizeof definition / sizeof(Word));
    std::memcpy(words.data(), &definition, sizeof definition);
    words[1] = 0; // address of the name, which tests compare as text
    return words;
}

TEST(ClassTable, ADefinitionCountsItsRows)
{
    using ClassData = char[123];
    const REALclassDefinition definition = classDefinition<ClassData, nothing, throwsAway>(
        "Made", {properties, methods, events, sharedMethods, constants});

    const auto word = [](auto* address) { return reinterpret_cast<Word>(address); };
    std::vector<Word> expected(sizeof definition / sizeof(Word));
    expected[0] = 13;
    expected[3] = 123;
    expected[5] = word(address<nothing>());
    expected[6] = word(address<throwsAway>());
    expected[7] = word(properties), expected[8] = 7;
    expected[9] = word(methods), expected[10] = 9;
    expected[11] = word(events), expected[12] = 2;
    expected[18] = word(constants), expected[19] = 3;
    expected[20] = 4;
    expected[23] = word(sharedMethods), expected[24] = 2;
    EXPECT_STREQ(definition.name, "Made");
    EXPECT_EQ(wordsOf(definition), expected) << "all other words are zero";
}

TEST(ClassTable, AConstructorOrDestructorThatThrowsReturns)
{
    const REALclassDefinition definition = classDefinition<Data, throwsAway, throwsAway>("Made", {});
    using Lifetime = void (*)(REALobjectStruct*);
    EXPECT_NO_THROW(reinterpret_cast<Lifetime>(definition.constructor)(nullptr));
    EXPECT_NO_THROW(reinterpret_cast<Lifetime>(definition.destructor)(nullptr));
}

TEST(ClassTable, ADefinitionWithoutRowsHasNoArrays)
{
    using ClassData = char[1];
    const REALclassDefinition definition = classDefinition<ClassData, nullptr, nullptr>("Bare", {});
    std::vector<Word> expected(sizeof definition / sizeof(Word));
    expected[0] = 13;
    expected[3] = 1;
    expected[20] = 4;
    EXPECT_STREQ(definition.name, "Bare");
    EXPECT_EQ(wordsOf(definition), expected);
}

TEST(ClassTable, ClassDataIsAtTheOffsetThatTheHostWrote)
{
    REALclassDefinition definition = {};
    alignas(Data) char object[64 + sizeof(Data)] = {};
    for (Word offset : {0, 4, 16, 64}) {
        definition.dataOffset = offset;
        Data& data = classData<Data>(reinterpret_cast<REALobjectStruct*>(object), definition);
        EXPECT_EQ(reinterpret_cast<char*>(&data), object + offset);
    }
}

} // namespace
