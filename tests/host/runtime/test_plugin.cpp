// A small plug-in for the runtime's tests: every kind of row, every type, in whichever layout the host reads.
// It uses the shared records only, as a stranger's plug-in would.
#include "abi/accessor_marks.h"
#include "abi/class_definition.h"
#include "abi/entry_point.h"
#include "abi/host_values.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

namespace {

REALResolver resolver = nullptr;
double hostVersion = 0.0;
std::int32_t layout = oldestLayout;
std::string lifeLog; ///< what constructors and destructors ran, in order

template <class Signature>
Signature* service(const char* name)
{
    return reinterpret_cast<Signature*>(resolver(name));
}

template <class Function>
AnyFunction any(Function* function)
{
    return reinterpret_cast<AnyFunction>(function);
}

REALstringStruct* newText(const std::string& text)
{
    auto* string = service<REALstringStruct*(const void*, HostInteger)>("REALBuildString")(
        text.data(), static_cast<HostInteger>(text.size()));
    service<void(REALstringStruct*, std::uint32_t)>("REALSetStringEncoding")(string, encodingUTF8);
    return string;
}

/// The bytes through the record, or through the services where there are such.
std::string textOf(REALstringStruct* string)
{
    if (!string) return "(nil)";
    if (hostVersion < 2016.0) return {string->buffer + 1, static_cast<std::size_t>(string->length)};
    const auto length =
        reinterpret_cast<HostInteger (*)(REALstringStruct*)>(service<AnyFunction(const void*, const char*)>(
            "REALLoadGlobalMethod")(nullptr, "LenB( s as string ) as integer"));
    const char* bytes = service<const char*(REALstringStruct*)>("StringGetCString")(string);
    return {bytes, static_cast<std::size_t>(length(string))};
}

template <class Record>
void lockObject(Record* object)
{
    service<void(REALobjectStruct*)>("REALLockObject")(reinterpret_cast<REALobjectStruct*>(object));
}
template <class Record>
void unlockObject(Record* object)
{
    service<void(REALobjectStruct*)>("REALUnlockObject")(reinterpret_cast<REALobjectStruct*>(object));
}

void raise(const char* className, const std::string& message, HostInteger number)
{
    auto* exception = service<REALobjectStruct*(const char*)>("PluginNewInstance")(className);
    auto* text = newText(message);
    service<void(REALobjectStruct*, const char*, REALstringStruct*)>("REALSetPropValueString")(
        exception, "Message", text);
    service<void(REALobjectStruct*, const char*, HostInteger)>("REALSetPropValueInt")(exception,
                                                                                      "ErrorNumber", number);
    service<void(REALobjectStruct*)>("RuntimeRaiseException")(exception);
    unlockObject(exception);
    service<void(REALstringStruct*)>("REALUnlockString")(text);
}

// ---- class data ----

struct ProbeData {
    std::uint8_t boolean;
    std::int8_t int8;
    std::int16_t int16;
    std::int32_t int32;
    alignas(8) std::int64_t int64;
    std::uint8_t uint8;
    std::uint16_t uint16;
    std::uint32_t uint32;
    alignas(8) std::uint64_t uint64;
    alignas(8) double number;
    float single;
    unsigned char crooked[8]; ///< a double that is not 8-aligned
    HostInteger integer;
    void* pointer;
    REALstringStruct* text;
    REALobjectStruct* object;
    REALobjectStruct* variant;
    REALmemoryBlockStruct* block;
    REALfolderItemStruct* folder;
    REALarrayStruct* numbers;
    double slots[4];
    HostInteger computed[3];
    char written[32];
};
static_assert(offsetof(ProbeData, crooked) % 8 == 4);

struct ChildData {
    HostInteger own;
};

extern REALclassDefinition probeClass;
extern REALclassDefinition childClass;
extern REALclassDefinition madeClass;

template <class Data>
Data& dataOf(REALobjectStruct* object, const REALclassDefinition& definition)
{
    return *reinterpret_cast<Data*>(reinterpret_cast<char*>(object) + definition.dataOffset);
}
ProbeData& probe(REALobjectStruct* object) { return dataOf<ProbeData>(object, probeClass); }

void constructProbe(REALobjectStruct* object)
{
    lifeLog += "+Probe ";
    const auto* bytes = reinterpret_cast<const unsigned char*>(&probe(object));
    for (std::size_t i = 0; i < sizeof(ProbeData); ++i) {
        if (bytes[i] != 0) lifeLog += "(not zeroed) ";
    }
    if (reinterpret_cast<std::uintptr_t>(bytes) % 16 != 0) lifeLog += "(not aligned) ";
    probe(object).int32 = 1000;
}
void destroyProbe(REALobjectStruct*) { lifeLog += "-Probe "; }

// ---- properties with functions ----

HostInteger getComputed(REALobjectStruct* object, HostInteger index) { return probe(object).computed[index]; }
void setComputed(REALobjectStruct* object, HostInteger index, HostInteger value)
{
    if (value < 0) return raise("OutOfBoundsException", "negative", 5);
    probe(object).computed[index] = value;
}
void setFirstOnly(REALobjectStruct* object, HostInteger offset, HostInteger value)
{
    setComputed(object, offset == offsetof(ProbeData, computed) ? 0 : 1, value);
}
REALstringStruct* getText(REALobjectStruct* object, HostInteger) { return newText(probe(object).written); }
void setText(REALobjectStruct* object, HostInteger, REALstringStruct* text)
{
    std::snprintf(probe(object).written, sizeof probe(object).written, "<%s>", textOf(text).c_str());
}
double getHalf(REALobjectStruct* object, HostInteger)
{
    return static_cast<double>(probe(object).computed[0]) / 2;
}
std::uint8_t getFlag(REALobjectStruct* object, HostInteger) { return probe(object).boolean ? 0 : 1; }
float getSingle(REALobjectStruct*, HostInteger parameter) { return static_cast<float>(parameter) / 4; }
std::uint64_t getWide(REALobjectStruct*, HostInteger) { return 0xFEDCBA9876543210u; }
REALobjectStruct* getDictionary(REALobjectStruct*, HostInteger)
{
    return service<REALobjectStruct*(const char*)>("PluginNewInstance")("Dictionary");
}
std::int32_t failingGetter(REALobjectStruct*, HostInteger)
{
    raise("NilObjectException", "nothing here", 0);
    return 99;
}

HostInteger sharedTotal = 0;
HostInteger getTotal(HostInteger parameter) { return sharedTotal + parameter; }
void setTotal(HostInteger, HostInteger value) { sharedTotal = value; }

#define FIELD(name, type, member)                                                                            \
    {                                                                                                        \
        "Fields", name, type, 6, reinterpret_cast<AnyFunction>(REALstandardGetter),                          \
            reinterpret_cast<AnyFunction>(REALstandardSetter), offsetof(ProbeData, member), nullptr,         \
            nullptr, 0,                                                                                      \
        {                                                                                                    \
        }                                                                                                    \
    }

// clang-format off
REALproperty probeProperties[] = {
    FIELD("FieldBoolean",  "Boolean",     boolean),
    FIELD("FieldInt8",     "Int8",        int8),
    FIELD("FieldInt16",    "Int16",       int16),
    FIELD("FieldInt32",    "Int32",       int32),
    FIELD("FieldInt64",    "Int64",       int64),
    FIELD("FieldUInt8",    "UInt8",       uint8),
    FIELD("FieldUInt16",   "UInt16",      uint16),
    FIELD("FieldUInt32",   "UInt32",      uint32),
    FIELD("FieldUInt64",   "UInt64",      uint64),
    FIELD("FieldInteger",  "Integer",     integer),
    FIELD("FieldSingle",   "Single",      single),
    FIELD("FieldDouble",   "Double",      number),
    FIELD("FieldCrooked",  "Double",      crooked),
    FIELD("FieldPtr",      "Ptr",         pointer),
    FIELD("FieldString",   "String",      text),
    FIELD("FieldObject",   "Object",      object),
    FIELD("FieldVariant",  "Variant",     variant),
    FIELD("FieldBlock",    "MemoryBlock", block),
    FIELD("FieldFolder",   "FolderItem",  folder),
    FIELD("FieldNumbers",  "Double()",    numbers),
    {"Fields", "OnlyInteger", "Integer", 6, reinterpret_cast<AnyFunction>(REALstandardGetter), nullptr, offsetof(ProbeData, integer), nullptr, nullptr, 0, {}},
    {"Fields", "OnlyString",  "String",  6, reinterpret_cast<AnyFunction>(REALstandardGetter), nullptr, offsetof(ProbeData, text), nullptr, nullptr, 0, {}},
    {"Fields", "MixedAccess", "Integer", 6, reinterpret_cast<AnyFunction>(REALstandardGetter), any(setFirstOnly), offsetof(ProbeData, computed), nullptr, nullptr, 0, {}},
    {"Functions", "First",     "Integer",    0, any(getComputed),  any(setComputed), 0, "Editor", nullptr, 0, {}},
    {"Functions", "Second",    "Integer",    0, any(getComputed),  any(setComputed), 1, nullptr, nullptr, 0, {}},
    {"Functions", "Text",      "String",     0, any(getText),      any(setText),     0, nullptr, nullptr, 0, {}},
    {"Functions", "Half",      "Double",     0, any(getHalf),      nullptr,          0, nullptr, nullptr, 0, {}},
    {"Functions", "NotFlag",   "Boolean",    0, any(getFlag),      nullptr,          0, nullptr, nullptr, 0, {}},
    {"Functions", "Quarter",   "Single",     0, any(getSingle),    nullptr,          -3, nullptr, nullptr, 0, {}},
    {"Functions", "Wide",      "UInt64",     0, any(getWide),      nullptr,          0, nullptr, nullptr, 0, {}},
    {"Functions", "Devices",   "Dictionary", 0, any(getDictionary), nullptr,         0, nullptr, nullptr, 0, {}},
    {"Functions", "Failing",   "Int32",      0, any(failingGetter), nullptr,         0, nullptr, nullptr, 0, {}},
    {"Functions", "WriteOnly", "Integer",    0, nullptr,           any(setComputed), 2, nullptr, nullptr, 0, {}},
};

REALproperty probeSharedProperties[] = {
    {"Shared", "Total",     "Integer", 0, any(getTotal), any(setTotal), 100, nullptr, nullptr, 0, {}},
    {"Shared", "OnlyTotal", "Integer", 0, any(getTotal), nullptr,       7,   nullptr, nullptr, 0, {}},
};
// clang-format on

// ---- methods: every type there and back ----

template <class T>
T echo(REALobjectStruct*, T value)
{
    return value;
}
template <class T>
T* echoReference(REALobjectStruct*, T* value)
{
    if (value) lockObject(value);
    return value;
}
REALstringStruct* echoString(REALobjectStruct*, REALstringStruct* value)
{
    if (value) service<void(REALstringStruct*)>("REALLockString")(value);
    return value;
}
std::uint32_t bitsOfSingle(REALobjectStruct*, float value)
{
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}
std::uint64_t bitsOfDouble(REALobjectStruct*, double value)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}
REALstringStruct* mixed(REALobjectStruct*, std::uint8_t a, double b, std::int64_t c, float d, std::int8_t e,
                        REALstringStruct* f, std::uint16_t g, HostInteger h)
{
    char text[200];
    std::snprintf(text, sizeof text, "%d %.17g %lld %.9g %d %s %u %lld", a, b, static_cast<long long>(c),
                  static_cast<double>(d), e, textOf(f).c_str(), g, static_cast<long long>(h));
    return newText(text);
}
REALstringStruct* defaults(REALobjectStruct* object, HostInteger a, std::uint8_t b, double c,
                           REALstringStruct* d, REALmemoryBlockStruct* e, std::uint64_t f)
{
    char text[200];
    std::snprintf(text, sizeof text, "%lld %d %.17g %s %s %llx", static_cast<long long>(a), b, c,
                  textOf(d).c_str(), e ? "block" : "nil", static_cast<unsigned long long>(f));
    (void)object;
    return newText(text);
}

// ---- variables lent by reference ----

template <class T>
void addOne(REALobjectStruct*, T* variable)
{
    *variable = static_cast<T>(*variable + 1);
}
void flip(REALobjectStruct*, std::uint8_t* variable) { *variable = !*variable; }
void exclaim(REALobjectStruct*, REALstringStruct** variable)
{
    auto* longer = newText(textOf(*variable) + "!");
    service<void(REALstringStruct*)>("REALUnlockString")(*variable);
    *variable = longer;
}
void forget(REALobjectStruct*, REALmemoryBlockStruct** variable)
{
    unlockObject(*variable);
    *variable = nullptr;
}
void setSize(REALobjectStruct*, HostInteger key, HostInteger* size, std::uint8_t* writeable)
{
    *size = key * 10;
    *writeable = key > 5;
    if (key < 0) raise("RuntimeException", "after writing", 3);
}

// ---- arrays ----

HostInteger boundOf(REALarrayStruct* array)
{
    return service<HostInteger(REALarrayStruct*)>("RuntimeUBound")(array);
}

template <class T>
double sum(REALarrayStruct* array, const char* newer)
{
    if (!array) return -1;
    auto* find = resolver(newer);
    if (!find) find = resolver("RuntimeArrayDirectGetGetProc");
    const auto getter = reinterpret_cast<T (*)(REALarrayStruct*, HostInteger)>(
        reinterpret_cast<AnyFunction (*)(REALarrayStruct*)>(find)(array));
    double total = 0;
    for (HostInteger i = 0; i <= boundOf(array); ++i) {
        const bool isDirect = hostVersion < 2016.0 && array->elements;
        total += static_cast<double>(isDirect ? static_cast<T*>(array->elements)[i] : getter(array, i));
    }
    return total;
}
double sumIntegers(REALobjectStruct*, REALarrayStruct* array)
{
    return sum<HostInteger>(array, "PluginIntegerArrayGetProc");
}
double sumSingles(REALobjectStruct*, REALarrayStruct* array)
{
    return 1000 + sum<float>(array, "PluginSingleArrayGetProc");
}
double sumDoubles(REALobjectStruct*, REALarrayStruct* array)
{
    return 2000 + sum<double>(array, "PluginDoubleArrayGetProc");
}
REALarrayStruct* countdown(REALobjectStruct*, HostInteger from)
{
    if (from < 0) return nullptr;
    auto* array =
        service<REALarrayStruct*(HostInteger, HostInteger)>("RuntimeArrayCreateSingleDimBoundedArray")(0, -1);
    auto* find = resolver("PluginIntegerArrayInsertProc");
    if (!find) find = resolver("RuntimeArrayDirectGetInsertProc");
    const auto insert = reinterpret_cast<void (*)(REALarrayStruct*, HostInteger, HostInteger)>(
        reinterpret_cast<AnyFunction (*)(REALarrayStruct*)>(find)(array));
    for (; from > 0; --from) insert(array, boundOf(array) + 1, from);
    return array;
}

// ---- overloads ----

template <int number>
HostInteger which0(REALobjectStruct*)
{
    return number;
}
template <int number, class T>
HostInteger which(REALobjectStruct*, T)
{
    return number;
}
template <int number, class T, class U>
HostInteger which2(REALobjectStruct*, T, U)
{
    return number;
}

// ---- exceptions, and what a bad plug-in does ----

REALstringStruct* fail(REALobjectStruct*, REALstringStruct* className, REALstringStruct* message,
                       HostInteger number)
{
    raise(textOf(className).c_str(), textOf(message), number);
    return newText("a result that nobody sees");
}
void leakString(REALobjectStruct*) { newText("lost"); }
void unlockTwice(REALobjectStruct*, REALmemoryBlockStruct* block)
{
    unlockObject(block);
    unlockObject(block);
}
REALstringStruct* garbage(REALobjectStruct*)
{
    static REALstringStruct nothing = {};
    return &nothing;
}
void callYield(REALobjectStruct*) { service<void()>("REALYieldToRB")(); }

// ---- indexed properties ----

double getSlot(REALobjectStruct* object, std::uint32_t index) { return probe(object).slots[index]; }
void setSlot(REALobjectStruct* object, std::uint32_t index, double value)
{
    probe(object).slots[index] = value;
}
std::uint8_t isSlotSet(REALobjectStruct* object, std::uint32_t index)
{
    return probe(object).slots[index] != 0;
}
void switchSlot(REALobjectStruct* object, std::uint32_t index, std::uint8_t isOn)
{
    probe(object).slots[index] = isOn ? 1 : 0;
}
HostInteger getItem(REALobjectStruct* object, HostInteger index) { return probe(object).computed[index]; }
void assignItem(REALobjectStruct* object, HostInteger index, HostInteger value)
{
    probe(object).computed[index] = value;
}

// ---- events ----

REALevent probeEvents[] = {
    {"Fired", 0, {}},
    {"Asked(a as integer, b as double, c as string, d as boolean) as string", 0, {}},
    {"Judged(v as Int8) as boolean", 0, {}},
    {"Halved(v as double) as double", 0, {}},
    {"Narrowed(v as single) as single", 0, {}},
    {"Widened(v as UInt64) as UInt64", 0, {}},
    {"Negated(v as Int16) as Int16", 0, {}},
};
REALevent9* olderEvents = nullptr;

template <class Result, class... Arguments>
Result raiseEvent(std::size_t index, REALobjectStruct* object, Result otherwise, Arguments... arguments)
{
    const Word use = layout == oldestLayout ? olderEvents[index].systemUse : probeEvents[index].systemUse;
    auto* handler = service<AnyFunction(REALobjectStruct*, Word)>("GetEventInstance")(object, use);
    if (!handler) return otherwise;
    return reinterpret_cast<Result (*)(REALobjectStruct*, Arguments...)>(handler)(object, arguments...);
}

std::uint8_t fire(REALobjectStruct* object)
{
    const Word use = layout == oldestLayout ? olderEvents[0].systemUse : probeEvents[0].systemUse;
    auto* handler = service<AnyFunction(REALobjectStruct*, Word)>("GetEventInstance")(object, use);
    if (handler) reinterpret_cast<void (*)(REALobjectStruct*)>(handler)(object);
    return handler != nullptr;
}
REALstringStruct* ask(REALobjectStruct* object, HostInteger a, double b, REALstringStruct* c, std::uint8_t d)
{
    return raiseEvent<REALstringStruct*>(1, object, nullptr, a, b, c, d);
}
std::uint8_t judge(REALobjectStruct* object, std::int8_t v)
{
    return raiseEvent<std::uint8_t>(2, object, std::uint8_t{1}, v);
}
double halve(REALobjectStruct* object, double v) { return raiseEvent(3, object, -1.0, v); }
float narrow(REALobjectStruct* object, float v) { return raiseEvent(4, object, -1.0f, v); }
std::uint64_t widen(REALobjectStruct* object, std::uint64_t v)
{
    return raiseEvent<std::uint64_t>(5, object, std::uint64_t{1}, v);
}
std::int16_t negate(REALobjectStruct* object, std::int16_t v)
{
    return raiseEvent<std::int16_t>(6, object, std::int16_t{1}, v);
}
AnyFunction askWithGarbage(REALobjectStruct* object)
{
    return service<AnyFunction(REALobjectStruct*, Word)>("GetEventInstance")(object, 12345);
}

// clang-format off
REALmethod probeMethods[] = {
    {any(echo<std::uint8_t>),   nullptr, "EchoBoolean(v as boolean) as boolean",  0, {}},
    {any(echo<std::int8_t>),    nullptr, "EchoInt8(v as Int8) as Int8",           0, {}},
    {any(echo<std::int16_t>),   nullptr, "EchoInt16(v as Int16) as Int16",        0, {}},
    {any(echo<std::int32_t>),   nullptr, "EchoInt32(v as Int32) as Int32",        0, {}},
    {any(echo<std::int64_t>),   nullptr, "EchoInt64(v as Int64) as Int64",        0, {}},
    {any(echo<std::uint8_t>),   nullptr, "EchoUInt8(v as UInt8) as UInt8",        0, {}},
    {any(echo<std::uint16_t>),  nullptr, "EchoUInt16(v as UInt16) as UInt16",     0, {}},
    {any(echo<std::uint32_t>),  nullptr, "EchoUInt32(v as UInt32) as UInt32",     0, {}},
    {any(echo<std::uint64_t>),  nullptr, "EchoUInt64(v as UInt64) as UInt64",     0, {}},
    {any(echo<HostInteger>),    nullptr, "EchoInteger(v as integer) as integer",  4, {}},
    {any(echo<Word>),           nullptr, "EchoUInteger(v as UInteger) as UInteger", 0, {}},
    {any(echo<float>),          nullptr, "EchoSingle(v as single) as single",     0, {}},
    {any(echo<double>),         nullptr, "EchoDouble(v as double) as double",     0, {}},
    {any(echo<void*>),          nullptr, "EchoPtr(v as ptr) as ptr",              0, {}},
    {any(echoString),           nullptr, "EchoString(v as string) as string",     0, {}},
    {any(echoReference<REALobjectStruct>),      nullptr, "EchoObject(v as Object) as Object",               0, {}},
    {any(echoReference<REALobjectStruct>),      nullptr, "EchoDictionary(v as Dictionary) as Dictionary",   0, {}},
    {any(echoReference<REALobjectStruct>),      nullptr, "EchoVariant(v as Variant) as Variant",            0, {}},
    {any(echoReference<REALmemoryBlockStruct>), nullptr, "EchoBlock(v as memoryblock = nil) as memoryblock", 0, {}},
    {any(echoReference<REALfolderItemStruct>),  nullptr, "EchoFolder(v as folderitem) as folderitem",       0, {}},
    {any(echoReference<REALarrayStruct>),       nullptr, "EchoArray(v() as string) as string()",            0, {}},
    {any(bitsOfSingle),         nullptr, "BitsOfSingle(v as single) as UInt32",   0, {}},
    {any(bitsOfDouble),         nullptr, "BitsOfDouble(v as double) as UInt64",   0, {}},
    {any(mixed),    nullptr, "Mixed(a as boolean, b as double, c as Int64, d as single, e as Int8, f as string, g as UInt16, h as integer) as string", 0, {}},
    {any(defaults), nullptr, "Defaults(a as integer=-3, b as boolean=true, c as double=1.5, d as string=\"d\", e as memoryblock=nil, f as UInt64=&hFFFFFFFFFF) as string", 0, {}},
    {any(addOne<std::int8_t>),   nullptr, "AddOneInt8(byref v as Int8)",      0, {}},
    {any(addOne<std::uint16_t>), nullptr, "AddOneUInt16(byref v as UInt16)",  0, {}},
    {any(addOne<std::int32_t>),  nullptr, "AddOneInt32(byref v as Int32)",    0, {}},
    {any(addOne<std::uint64_t>), nullptr, "AddOneUInt64(byref v as UInt64)",  0, {}},
    {any(addOne<HostInteger>),   nullptr, "AddOneInteger(byref v as integer)", 0, {}},
    {any(addOne<float>),         nullptr, "AddOneSingle(byref v as single)",  0, {}},
    {any(addOne<double>),        nullptr, "AddOneDouble(byref v as double)",  0, {}},
    {any(flip),                  nullptr, "Flip(byref v as boolean)",         0, {}},
    {any(exclaim),               nullptr, "Exclaim(byref v as string)",       0, {}},
    {any(forget),                nullptr, "Forget(byref v as memoryblock)",   0, {}},
    {any(setSize),  nullptr, "GetInfo(key as integer, byref size as integer, byref writeable as boolean)", 0, {}},
    {any(sumIntegers),           nullptr, "Sum(values() as integer) as double", 0, {}},
    {any(sumSingles),            nullptr, "Sum(values() as single) as double",  0, {}},
    {any(sumDoubles),            nullptr, "Sum(values() as double) as double",  0, {}},
    {any(countdown),             nullptr, "Countdown(from as integer) as integer()", 0, {}},
    {any(which0<0>),                     nullptr, "Which as integer",                    0, {}},
    {any(which<1, HostInteger>),         nullptr, "Which(a as integer) as integer",      0, {}},
    {any(which<2, double>),              nullptr, "Which(a as double) as integer",       0, {}},
    {any(which<3, REALstringStruct*>),   nullptr, "Which(a as string) as integer",       0, {}},
    {any(which<4, std::uint8_t>),        nullptr, "Which(a as boolean) as integer",      0, {}},
    {any(which<5, REALobjectStruct*>),   nullptr, "Which(a as Dictionary) as integer",   0, {}},
    {any(which<6, REALobjectStruct*>),   nullptr, "Which(a as Object) as integer",       0, {}},
    {any(which2<7, HostInteger, HostInteger>), nullptr, "Which(a as integer, b as integer) as integer", 0, {}},
    {any(which<8, HostInteger*>),        nullptr, "Which(byref a as integer) as integer", 0, {}},
    {any(fail),         nullptr, "Fail(className as string, message as string, number as integer) as string", 0, {}},
    {any(leakString),   nullptr, "LeakString",                        0, {}},
    {any(unlockTwice),  nullptr, "UnlockTwice(block as memoryblock)", 0, {}},
    {any(garbage),      nullptr, "Garbage as string",                 0, {}},
    {any(callYield),    nullptr, "CallYield",                         0, {}},
    {any(getSlot),      any(setSlot),    "Slot(index as UInt32) as double",    0, {}},
    {any(isSlotSet),    any(switchSlot), "SlotIsSet(index as UInt32) as boolean", 0, {}},
    {any(getItem),      nullptr, "Item(index as integer) as integer",               0, {}},
    {any(assignItem),   nullptr, "Item(index as integer, assigns value as integer)", 0, {}},
    {any(fire),   nullptr, "Fire as boolean", 0, {}},
    {any(ask),    nullptr, "Ask(a as integer, b as double, c as string, d as boolean) as string", 0, {}},
    {any(judge),  nullptr, "Judge(v as Int8) as boolean",   0, {}},
    {any(halve),  nullptr, "Halve(v as double) as double",  0, {}},
    {any(narrow), nullptr, "Narrow(v as single) as single", 0, {}},
    {any(widen),  nullptr, "Widen(v as UInt64) as UInt64",  0, {}},
    {any(negate), nullptr, "Negate(v as Int16) as Int16",   0, {}},
    {any(askWithGarbage), nullptr, "AskWithGarbage as ptr", 0, {}},
};
// clang-format on

// ---- shared methods and constants ----

HostInteger sharedAdd(HostInteger a, HostInteger b) { return a + b; }
std::uint64_t sharedWide(std::uint64_t value) { return value ^ 0xFFFFFFFFFFFFFFFFu; }
double sharedDouble() { return 0.1; }
REALstringStruct* takeLifeLog()
{
    auto* text = newText(lifeLog);
    lifeLog.clear();
    return text;
}

REALmethod probeSharedMethods[] = {
    {any(sharedAdd), nullptr, "Add(a as integer, b as integer=1) as integer", 4, {}},
    {any(sharedWide), nullptr, "Invert(v as UInt64) as UInt64", 4, {}},
    {any(sharedDouble), nullptr, "Tenth as double", 4, {}},
    {any(takeLifeLog), nullptr, "LifeLog as string", 4, {}},
};

REALconstant probeConstants[] = {
    {"ConstPlain = 5", {}},
    {"ConstInteger as Integer = -2", {}},
    {"ConstText as String = \"x, y\"", {}},
    {"ConstDouble as Double = 2.5", {}},
    {"ConstFlag as Boolean = true", {}},
};

// ---- a class that descends from it ----

void constructChild(REALobjectStruct* object)
{
    lifeLog += "+Child ";
    dataOf<ChildData>(object, childClass).own = 77;
}
void destroyChild(REALobjectStruct*) { lifeLog += "-Child "; }
HostInteger echoNegative(REALobjectStruct*, HostInteger value) { return -value; }

REALproperty childProperties[] = {
    {"",
     "Own",
     "Integer",
     0,
     reinterpret_cast<AnyFunction>(REALstandardGetter),
     reinterpret_cast<AnyFunction>(REALstandardSetter),
     offsetof(ChildData, own),
     nullptr,
     nullptr,
     0,
     {}},
};
REALmethod childMethods[] = {
    {any(echoNegative), nullptr, "EchoNegative(v as integer) as integer", 0, {}},
};

// ---- a class whose life begins and ends in methods ----

void makeFromNumbers(REALobjectStruct* object, std::uint32_t a, std::uint32_t b)
{
    lifeLog += "+Made ";
    auto* fields = &dataOf<std::uint32_t>(object, madeClass);
    fields[0] = a;
    fields[1] = b;
    if (a == 0) raise("NilObjectException", "zero", 0);
}
void makeFromText(REALobjectStruct* object, REALstringStruct* text)
{
    makeFromNumbers(object, static_cast<std::uint32_t>(textOf(text).size()), 1);
}
void unmake(REALobjectStruct* object)
{
    lockObject(object); // a destructor may use its object
    unlockObject(object);
    lifeLog += "-Made ";
}

REALproperty madeProperties[] = {
    {"",
     "A",
     "UInt32",
     0,
     reinterpret_cast<AnyFunction>(REALstandardGetter),
     nullptr,
     0,
     nullptr,
     nullptr,
     0,
     {}},
    {"",
     "B",
     "UInt32",
     0,
     reinterpret_cast<AnyFunction>(REALstandardGetter),
     nullptr,
     4,
     nullptr,
     nullptr,
     0,
     {}},
};
REALmethod madeMethods[] = {
    {any(makeFromNumbers), nullptr, "Constructor(a as UInt32, b as UInt32 = 7)", 4, {}},
    {any(makeFromText), nullptr, "Constructor(text as string)", 4, {}},
    {any(unmake), nullptr, "Destructor", 4, {}},
};

template <class Row, std::size_t rows>
void put(void*& array, Word& count, Row (&list)[rows])
{
    array = list;
    count = rows;
}

REALclassDefinition defined(const char* name, const char* superName, std::size_t dataSize)
{
    REALclassDefinition definition = {};
    definition.name = name;
    definition.superName = superName;
    definition.dataSize = (dataSize + 15) / 16 * 16;
    definition.flags = 4;
    return definition;
}

REALclassDefinition probeClass = [] {
    auto definition = defined("Probe", nullptr, sizeof(ProbeData));
    definition.constructor = any(constructProbe);
    definition.destructor = any(destroyProbe);
    definition.interfaces = "Readable";
    put(definition.properties, definition.propertyCount, probeProperties);
    put(definition.sharedProperties, definition.sharedPropertyCount, probeSharedProperties);
    put(definition.methods, definition.methodCount, probeMethods);
    put(definition.sharedMethods, definition.sharedMethodCount, probeSharedMethods);
    put(definition.events, definition.eventCount, probeEvents);
    put(definition.constants, definition.constantCount, probeConstants);
    return definition;
}();

REALclassDefinition childClass = [] {
    auto definition = defined("ProbeChild", "Probe", sizeof(ChildData));
    definition.constructor = any(constructChild);
    definition.destructor = any(destroyChild);
    put(definition.properties, definition.propertyCount, childProperties);
    put(definition.methods, definition.methodCount, childMethods);
    return definition;
}();

REALclassDefinition madeClass = [] {
    auto definition = defined("ProbeMade", nullptr, 8);
    put(definition.properties, definition.propertyCount, madeProperties);
    put(definition.methods, definition.methodCount, madeMethods);
    return definition;
}();

// ---- the layouts ----

/// The first words of each row, as the oldest layout has them. The host keeps the copy for good.
template <class Row9, class Row>
void shorten(void*& array, Word count)
{
    if (!array) return;
    auto* copies = static_cast<Row9*>(std::calloc(count, sizeof(Row9)));
    for (Word i = 0; i < count; ++i) std::memcpy(&copies[i], &static_cast<Row*>(array)[i], sizeof(Row9));
    array = copies;
}

void registerClass(REALclassDefinition& definition)
{
    definition.version = static_cast<Word>(layout);
    if (layout == oldestLayout) {
        shorten<REALproperty9, REALproperty>(definition.properties, definition.propertyCount);
        shorten<REALproperty9, REALproperty>(definition.sharedProperties, definition.sharedPropertyCount);
        shorten<REALmethod9, REALmethod>(definition.methods, definition.methodCount);
        shorten<REALmethod9, REALmethod>(definition.sharedMethods, definition.sharedMethodCount);
        shorten<REALevent9, REALevent>(definition.events, definition.eventCount);
        shorten<REALconstant9, REALconstant>(definition.constants, definition.constantCount);
        if (definition.eventCount != 0) olderEvents = static_cast<REALevent9*>(definition.events);
    }
    service<void(REALclassDefinition*)>("PluginRegisterClass")(&definition);
}

} // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALResolver given)
{
    resolver = given;
    if (const auto version = service<double()>("REALGetRBVersion")) hostVersion = version();
    layout = hostVersion >= 2013.04   ? 13
             : hostVersion >= 2013.03 ? 12
             : hostVersion >= 2013.0  ? 11
             : hostVersion >= 2012.0  ? 10
                                      : 9;
    service<void(std::int32_t)>("RegisterPluginVersion")(layout);
    registerClass(probeClass);
    registerClass(childClass);
    registerClass(madeClass);
}
