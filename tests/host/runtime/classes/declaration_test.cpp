// Tests of the parser for declarations of members and constants, and of the names of types.
#include "host/runtime/classes/declaration.h"

#include "host/runtime/support/errors.h"

#include <gtest/gtest.h>

namespace {

using namespace host;

/// Print a declaration as "Name(parameters) Result". "&" marks a parameter passed by reference, ":="
/// the parameter that receives the right side of an assignment.
std::string shapeOf(const Declaration& declaration)
{
    std::string shape = declaration.name + "(";
    for (const auto& parameter : declaration.parameters) {
        if (shape.back() != '(') shape += ", ";
        if (parameter.isByRef) shape += "&";
        if (parameter.isAssigned) shape += ":=";
        shape += typeName(parameter.type);
        if (parameter.defaultValue) shape += "=" + print(*parameter.defaultValue);
    }
    return shape + ")" + (declaration.result.isVoid() ? "" : " " + typeName(declaration.result));
}

struct Fact {
    const char* text;
    const char* shape;
};

// Declarations of the plug-in's classes.
// clang-format off
const Fact memberFacts[] = {
    {"AddAudio(Data as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean",
     "AddAudio(MemoryBlock, Integer=0, Integer=0, Integer=16, Boolean=false) Boolean"},
    {"AddFloatAudio(FloatData as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean",
     "AddFloatAudio(MemoryBlock, Integer=0, Integer=0, Boolean=false) Boolean"},
    {"AddAudioStereo(Data1 as memoryblock, Data2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean",
     "AddAudioStereo(MemoryBlock, MemoryBlock, Integer=0, Integer=0, Integer=16, Boolean=false) Boolean"},
    {"AddFloatAudioStereo(FloatData1 as memoryblock, FloatData2 as memoryblock, offsetBytes as integer=0, countBytes as integer=0, ClearBuffers as boolean=false) as boolean",
     "AddFloatAudioStereo(MemoryBlock, MemoryBlock, Integer=0, Integer=0, Boolean=false) Boolean"},
    {"PlayAudio(Data as memoryblock, offsetBytes as integer=0, countBytes as integer=0, BitSize as integer=16, ClearBuffers as boolean=false) as boolean",
     "PlayAudio(MemoryBlock, Integer=0, Integer=0, Integer=16, Boolean=false) Boolean"},
    {"FreeSpace as integer",                "FreeSpace() Integer"},
    {"HasFreeSpace as boolean",             "HasFreeSpace() Boolean"},
    {"HardwareSampleRate as single",        "HardwareSampleRate() Single"},
    {"HardwareNumberOfChannels as integer", "HardwareNumberOfChannels() Integer"},
    {"Close",                               "Close()"},
    {"Stop",                                "Stop()"},
    {"Start as boolean",                    "Start() Boolean"},
    {"Data as Memoryblock",                 "Data() MemoryBlock"},
    {"LoadFile(file as folderitem, InputChannels as Integer = 2, OutputChannels as Integer = 2) as boolean",
     "LoadFile(FolderItem, Integer=2, Integer=2) Boolean"},
    {"updateEQ(eqBands() as double)",                "updateEQ(Double())"},
    {"updateEQ(eqBands() as single)",                "updateEQ(Single())"},
    {"InputVolume(inputNum as UInt32) as double",    "InputVolume(UInt32) Double"},
    {"InputEnabled(inputNum as UInt32) as boolean",  "InputEnabled(UInt32) Boolean"},
    {"ChannelMap as Integer()",                      "ChannelMap() Integer()"},
    {"setChannelMap(values() as Integer)",           "setChannelMap(Integer())"},
    {"AudioDeviceSetPropertyString(AudioDeviceID as integer, when as memoryblock, channel as integer, isinput as boolean, propertyID as string, data as string)",
     "AudioDeviceSetPropertyString(Integer, MemoryBlock, Integer, Boolean, String, String)"},
    {"AudioDeviceSetPropertyMemory(AudioDeviceID as integer, when as memoryblock, channel as integer, isinput as boolean, propertyID as string, data as memoryblock, offset as integer, length as integer)",
     "AudioDeviceSetPropertyMemory(Integer, MemoryBlock, Integer, Boolean, String, MemoryBlock, Integer, Integer)"},
    {"AudioDeviceGetPropertyInfo(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string, byref size as integer, byref writeable as boolean)",
     "AudioDeviceGetPropertyInfo(Integer, Integer, Boolean, String, &Integer, &Boolean)"},
    {"AudioDeviceGetPropertyMemory(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string) as memoryblock",
     "AudioDeviceGetPropertyMemory(Integer, Integer, Boolean, String) MemoryBlock"},
    {"AudioHardwareSetPropertyMemory(propertyID as string, data as memoryblock, offset as integer, length as integer)",
     "AudioHardwareSetPropertyMemory(String, MemoryBlock, Integer, Integer)"},
    {"AudioHardwareGetPropertyInfo(propertyID as string, byref size as integer, byref writeable as boolean)",
     "AudioHardwareGetPropertyInfo(String, &Integer, &Boolean)"},
    {"AudioUnitGetPropertyString(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as string",
     "AudioUnitGetPropertyString(Integer, Integer, Integer, Integer) String"},
    {"AudioObjectGetPropertyDataSize(inObjectID as integer, AddressSelector as UInt32, AddressScope as UInt32, AddressElement as UInt32, QualifierData as memoryblock = nil) as UInt32",
     "AudioObjectGetPropertyDataSize(Integer, UInt32, UInt32, UInt32, MemoryBlock=nil) UInt32"},
    {"AudioObjectGetPropertyData(inObjectID as integer, AddressSelector as UInt32, AddressScope as UInt32, AddressElement as UInt32, QualifierData as memoryblock = nil, InputData as Memoryblock = nil) as memoryblock",
     "AudioObjectGetPropertyData(Integer, UInt32, UInt32, UInt32, MemoryBlock=nil, MemoryBlock=nil) MemoryBlock"},
    {"AudioObjectSetPropertyData(inObjectID as integer, AddressSelector as UInt32, AddressScope as UInt32, AddressElement as UInt32, Data as Memoryblock, QualifierData as memoryblock = nil)",
     "AudioObjectSetPropertyData(Integer, UInt32, UInt32, UInt32, MemoryBlock, MemoryBlock=nil)"},
    {"AudioUnitInitialize(componenthandle as integer) as integer", "AudioUnitInitialize(Integer) Integer"},
    {"AudioUnitSetParameter(AudioUnit as integer, ParameterID as integer, AudioUnitScope as integer, AudioUnitElement as integer, value as single, BufferOffsetInFrames as integer)",
     "AudioUnitSetParameter(Integer, Integer, Integer, Integer, Single, Integer)"},
    {"AudioUnitGetParameter(AudioUnit as integer, ParameterID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as single",
     "AudioUnitGetParameter(Integer, Integer, Integer, Integer) Single"},
    {"OpenDefaultComponent(type as string, subtype as string) as integer", "OpenDefaultComponent(String, String) Integer"},
    {"CoreAudioGetHostClockFrequencyKVX as double",                        "CoreAudioGetHostClockFrequencyKVX() Double"},
    {"CoreAudioGetCurrentHostTimeKVX as UInt64",                           "CoreAudioGetCurrentHostTimeKVX() UInt64"},
    {"CoreAudioConvertHostTimeToNanosKVX(inHostTime as UInt64) as UInt64", "CoreAudioConvertHostTimeToNanosKVX(UInt64) UInt64"},
    {"CloseComponent",                                                     "CloseComponent()"},
    {"AttachToAudioUnitComponent(componenthandle as integer, element as integer) as integer",
     "AttachToAudioUnitComponent(Integer, Integer) Integer"},
    {"Constructor(ObjectID as UInt32, PropertySelector as UInt32, PropertyScope as UInt32, PropertyElement as UInt32)",
     "Constructor(UInt32, UInt32, UInt32, UInt32)"},
    {"Destructor",                                           "Destructor()"},
    {"Changed",                                              "Changed()"},
    {"LenB( s as string ) as integer",                       "LenB(String) Integer"},
    {"Value(key As Variant, Assigns _value As Variant)",     "Value(Variant, :=Variant)"},
    {"Value(key As Variant) As Variant",                     "Value(Variant) Variant"},
    {"Key(index As Integer) As Variant",                     "Key(Integer) Variant"},
};

// Declarations with unusual spaces, case, defaults and marks.
const Fact otherFacts[] = {
    {"f()",                                          "f()"},
    {"  f ( ) as  Double ",                          "f() Double"},
    {"F(BYREF A() AS INTEGER)",                      "F(&Integer())"},
    {"f(a as integer())",                            "f(Integer())"},
    {"f(byval a as Byte, b as UInt8) as Ptr",        "f(UInt8, UInt8) Ptr"},
    {"f(d as Dictionary) as Some.Class",             "f(Dictionary) Some.Class"},
    {"f(a as integer=-5, b as double=1.5, c as double=-2e3)", "f(Integer=-5, Double=1.5, Double=-2000.0)"},
    {"f(a as integer = &hFF, b as boolean=TRUE, c as string = \"a \"\"b\"\", c\")",
     "f(Integer=255, Boolean=true, String=\"a \"\"b\"\", c\")"},
    {"f(a as string=\"\", b as string=\"  x\")",     "f(String=\"\", String=\"  x\")"},
    {"f(a as Int8, b as Int16, c as Int32, d as Int64, e as UInt16, g as UInteger)", "f(Int8, Int16, Int32, Int64, UInt16, UInteger)"},
    {"as_is(asy as integer)",                        "as_is(Integer)"},
};
// clang-format on

template <std::size_t count>
void checkFacts(const Fact (&facts)[count])
{
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.text);
        const auto declaration = parseDeclaration(fact.text);
        EXPECT_EQ(shapeOf(declaration), fact.shape);
        const auto again = parseDeclaration(print(declaration));
        EXPECT_TRUE(sameSignature(declaration, again));
        EXPECT_EQ(shapeOf(again), fact.shape);
    }
}

TEST(Declaration, OfEachMemberOfTheClassesIsParsed) { checkFacts(memberFacts); }

TEST(Declaration, OfEachOtherFormIsParsed) { checkFacts(otherFacts); }

TEST(Declaration, KeepsTheNamesOfParameters)
{
    const auto declaration =
        parseDeclaration("f(First as integer, byref second as single, third() as double)");
    ASSERT_EQ(declaration.parameters.size(), 3u);
    EXPECT_EQ(declaration.parameters[0].name, "First");
    EXPECT_EQ(declaration.parameters[1].name, "second");
    EXPECT_EQ(declaration.parameters[2].name, "third");
}

TEST(Declaration, CountsRequiredArguments)
{
    EXPECT_EQ(requiredCount(parseDeclaration("f").parameters), 0u);
    EXPECT_EQ(requiredCount(parseDeclaration("f(a as integer=1)").parameters), 0u);
    EXPECT_EQ(requiredCount(parseDeclaration("f(a as integer, b as integer=1)").parameters), 1u);
    EXPECT_EQ(requiredCount(parseDeclaration("f(a as integer=1, b as integer)").parameters), 2u)
        << "only the last arguments may be missing";
    EXPECT_FALSE(parseDeclaration("f").isAssignment());
    EXPECT_FALSE(parseDeclaration("f(a as integer)").isAssignment());
    EXPECT_TRUE(parseDeclaration("f(a as integer, assigns b as integer)").isAssignment());
}

TEST(Declaration, ErrorNamesTextAndPosition)
{
    const struct {
        const char* text;
        const char* expected;
    } facts[] = {
        {"", "expected a name at character 1, found the end"},
        {"3f", "expected a name at character 1"},
        {"f(", "expected a parameter's name at character 3, found the end"},
        {"f(a", "expected 'as' at character 4, found the end"},
        {"f(a integer)", "expected 'as' at character 5, found 'integer)'"},
        {"f(a as )", "expected a type at character 8"},
        {"f(a as integer", "expected ')' at character 15, found the end"},
        {"f(a as integer,)", "expected a parameter's name at character 16"},
        {"f(a as integer=)", "expected a value at character 16"},
        {"f(a as string=\"x)", "expected a closing quote"},
        {"f as", "expected a type at character 5, found the end"},
        {"f as integer x", "expected the end at character 14, found 'x'"},
        {"f(a as integer) integer", "expected the end at character 17"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.text);
        try {
            parseDeclaration(fact.text);
            ADD_FAILURE() << "the parser threw no exception";
        } catch (const ProgramError& error) {
            EXPECT_NE(std::string(error.what()).find(fact.expected), std::string::npos) << error.what();
            EXPECT_NE(std::string(error.what()).find(fact.text), std::string::npos) << error.what();
        }
    }
}

TEST(Declaration, OfAConstantIsParsed)
{
    const struct {
        const char* text;
        const char* name;
        const char* type; // declared type; null if the declaration has no type
        Literal value;
    } facts[] = {
        {"TimePitchUnitDefault = 0", "TimePitchUnitDefault", nullptr, std::int64_t{0}},
        {"TimePitchUnitTimePitch = 1", "TimePitchUnitTimePitch", nullptr, std::int64_t{1}},
        {"OutputUnitSystemOutput = 4", "OutputUnitSystemOutput", nullptr, std::int64_t{4}},
        {"Name as Integer = -7", "Name", "Integer", std::int64_t{-7}},
        {"Pi As Double=3.25", "Pi", "Double", 3.25},
        {"Flag as Boolean = True", "Flag", "Boolean", true},
        {"Text as String = \"a, b\"", "Text", "String", std::string("a, b")},
        {"Big as UInt64 = &hFFFFFFFFFFFFFFFF", "Big", "UInt64", std::int64_t{-1}},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.text);
        const auto constant = parseConstant(fact.text);
        EXPECT_EQ(constant.name, fact.name);
        EXPECT_EQ(constant.type ? typeName(*constant.type) : "", fact.type ? fact.type : "");
        EXPECT_EQ(constant.value, fact.value);
    }
    for (const char* text : {"", "Name", "Name as Integer", "Name =", "= 3", "Name = word", "Name = 3 4"})
        EXPECT_THROW(parseConstant(text), ProgramError) << text;
}

TEST(Declaration, SignatureIgnoresNamesOfParametersAndDefaults)
{
    const struct {
        const char* left;
        const char* right;
        bool same;
        const char* why;
    } facts[] = {
        {"LenB( s as string ) as integer", "lenb(text As String) As Integer", true, "case, spaces and names"},
        {"f(a as integer=0)", "f(a as integer)", true, "defaults"},
        {"f(a as integer)", "f(a as single)", false, "types"},
        {"f(a as integer)", "f(a() as integer)", false, "arrays"},
        {"f(a as integer)", "f(byref a as integer)", false, "ByRef"},
        {"f(a as integer)", "f(assigns a as integer)", false, "Assigns"},
        {"f(a as integer)", "f(a as integer, b as integer)", false, "counts"},
        {"f as integer", "f", false, "results"},
        {"f", "g", false, "names"},
        {"f(a as Dictionary)", "f(a as DICTIONARY)", true, "class names are compared without regard to case"},
        {"f(a as Dictionary)", "f(a as Object)", false, "classes"},
    };
    for (const auto& fact : facts) {
        EXPECT_EQ(sameSignature(parseDeclaration(fact.left), parseDeclaration(fact.right)), fact.same)
            << fact.why;
    }
}

TEST(Type, HasNameAndSize)
{
    const struct {
        const char* name;
        const char* printed;
        std::size_t bytes;
        bool isReference;
    } facts[] = {
        {"boolean", "Boolean", 1, false},
        {"INT8", "Int8", 1, false},
        {"Byte", "UInt8", 1, false},
        {"int16", "Int16", 2, false},
        {"uint16", "UInt16", 2, false},
        {"int32", "Int32", 4, false},
        {"uint32", "UInt32", 4, false},
        {"integer", "Integer", sizeof(HostInteger), false},
        {"uinteger", "UInteger", sizeof(HostInteger), false},
        {"int64", "Int64", 8, false},
        {"uint64", "UInt64", 8, false},
        {"single", "Single", 4, false},
        {"double", "Double", 8, false},
        {"ptr", "Ptr", sizeof(void*), false},
        {"string", "String", sizeof(void*), true},
        {"variant", "Variant", sizeof(void*), true},
        {"Memoryblock", "MemoryBlock", sizeof(void*), true},
        {"folderitem", "FolderItem", sizeof(void*), true},
        {"Dictionary", "Dictionary", sizeof(void*), true},
        {"object", "Object", sizeof(void*), true},
        {"integer()", "Integer()", sizeof(void*), true},
        {"Integer ( )", "Integer()", sizeof(void*), true},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        const auto type = typeNamed(fact.name);
        EXPECT_EQ(typeName(type), fact.printed);
        EXPECT_EQ(sizeInMemory(type), fact.bytes);
        EXPECT_EQ(type.isReference(), fact.isReference);
    }
    EXPECT_TRUE(typeNamed("").isVoid());
    EXPECT_TRUE(typeNamed(" ").isVoid());
}

} // namespace
