// Properties of the class Probe: fields of every type, properties with getter and setter, shared properties.
#include "tests/host/runtime/test_plugin/probe.h"

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
    // The program may drop its last reference here, but the object must live until the setter returns.
    service<void()>("REALYieldToRB")();
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

// clang-format off
REALproperty probeProperties[] = {
    field("FieldBoolean",  "Boolean",     offsetof(ProbeData, boolean)),
    field("FieldInt8",     "Int8",        offsetof(ProbeData, int8)),
    field("FieldInt16",    "Int16",       offsetof(ProbeData, int16)),
    field("FieldInt32",    "Int32",       offsetof(ProbeData, int32)),
    field("FieldInt64",    "Int64",       offsetof(ProbeData, int64)),
    field("FieldUInt8",    "UInt8",       offsetof(ProbeData, uint8)),
    field("FieldUInt16",   "UInt16",      offsetof(ProbeData, uint16)),
    field("FieldUInt32",   "UInt32",      offsetof(ProbeData, uint32)),
    field("FieldUInt64",   "UInt64",      offsetof(ProbeData, uint64)),
    field("FieldInteger",  "Integer",     offsetof(ProbeData, integer)),
    field("FieldSingle",   "Single",      offsetof(ProbeData, single)),
    field("FieldDouble",   "Double",      offsetof(ProbeData, number)),
    field("FieldCrooked",  "Double",      offsetof(ProbeData, crooked)),
    field("FieldPtr",      "Ptr",         offsetof(ProbeData, pointer)),
    field("FieldString",   "String",      offsetof(ProbeData, text)),
    field("FieldObject",   "Object",      offsetof(ProbeData, object)),
    field("FieldVariant",  "Variant",     offsetof(ProbeData, variant)),
    field("FieldBlock",    "MemoryBlock", offsetof(ProbeData, block)),
    field("FieldFolder",   "FolderItem",  offsetof(ProbeData, folder)),
    field("FieldNumbers",  "Double()",    offsetof(ProbeData, numbers)),
    field("OnlyInteger",   "Integer",     offsetof(ProbeData, integer), true),
    field("OnlyString",    "String",      offsetof(ProbeData, text), true),
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
