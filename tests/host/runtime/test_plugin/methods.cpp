// Methods of the class Probe, with every kind of parameter, result and variable, with overloads and indexed
// properties, and with the errors of a faulty plug-in.
#include "tests/host/runtime/test_plugin/probe.h"

#include <cstdio>
#include <cstring>

namespace probing {

namespace {

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

// ---- methods with ByRef parameters ----

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

// ---- methods that raise exceptions or use the host incorrectly ----

REALstringStruct* fail(REALobjectStruct*, REALstringStruct* className, REALstringStruct* message,
                       HostInteger number)
{
    raise(textOf(className).c_str(), textOf(message), number);
    return newText("a dropped result");
}
void leakString(REALobjectStruct*) { newText("lost"); }
void unlockTwice(REALobjectStruct*, REALmemoryBlockStruct* block)
{
    unlockObject(block);
    unlockObject(block);
}
REALstringStruct* garbage(REALobjectStruct*, REALstringStruct* exceptionClass)
{
    static REALstringStruct nothing = {};
    if (const auto name = textOf(exceptionClass); !name.empty()) raise(name.c_str(), "also raised", 0);
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
    {any(garbage),      nullptr, "Garbage(exceptionClass as string = \"\") as string",                 0, {}},
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

} // namespace

void putMethods(REALclassDefinition& definition)
{
    put(definition.methods, definition.methodCount, probeMethods);
    put(definition.sharedMethods, definition.sharedMethodCount, probeSharedMethods);
    put(definition.constants, definition.constantCount, probeConstants);
}

} // namespace probing
