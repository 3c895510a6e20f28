// Properties of the class Probe: fields of every type, properties with functions, and shared properties.
#include "tests/host/runtime/test_plugin/probe.h"

#include "abi/accessor_sentinels.h"

#include <cstdio>

namespace probing {

namespace {

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

} // namespace

void putProperties(REALclassDefinition& definition)
{
    put(definition.properties, definition.propertyCount, probeProperties);
    put(definition.sharedProperties, definition.sharedPropertyCount, probeSharedProperties);
}

} // namespace probing
