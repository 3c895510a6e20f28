// A small plug-in for tests, with every kind of member and type, in every class layout. It shares only abi/
// with the host. This file has the constructors and destructors, the class definitions and the entry point.
#include "tests/host/runtime/test_plugin/probe.h"

#include <cstdlib>
#include <cstring>

namespace probing {

namespace {

struct ChildData {
    HostInteger own;
};

extern REALclassDefinition childClass;
extern REALclassDefinition madeClass;

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

REALclassDefinition defined(const char* name, const char* superName, std::size_t dataSize)
{
    REALclassDefinition definition = {};
    definition.name = name;
    definition.superName = superName;
    definition.dataSize = (dataSize + 15) / 16 * 16;
    definition.flags = 4;
    return definition;
}

} // namespace

REALclassDefinition probeClass = [] {
    auto definition = defined("Probe", nullptr, sizeof(ProbeData));
    definition.constructor = any(constructProbe);
    definition.destructor = any(destroyProbe);
    definition.interfaces = "Readable";
    putProperties(definition);
    putMethods(definition);
    putEvents(definition);
    return definition;
}();

namespace {

// ---- a subclass of Probe ----

void constructChild(REALobjectStruct* object)
{
    lifeLog += "+Child ";
    dataOf<ChildData>(object, childClass).own = 77;
}
void destroyChild(REALobjectStruct*) { lifeLog += "-Child "; }
HostInteger echoNegative(REALobjectStruct*, HostInteger value) { return -value; }

REALproperty childProperties[] = {field("Own", "Integer", offsetof(ChildData, own))};
REALmethod childMethods[] = {
    {any(echoNegative), nullptr, "EchoNegative(v as integer) as integer", 0, {}},
};

// ---- a class with the methods "Constructor" and "Destructor" ----

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
    lockObject(object); // A destructor may add and drop references to its object.
    unlockObject(object);
    lifeLog += "-Made ";
}

REALproperty madeProperties[] = {field("A", "UInt32", 0, true), field("B", "UInt32", 4, true)};
REALmethod madeMethods[] = {
    {any(makeFromNumbers), nullptr, "Constructor(a as UInt32, b as UInt32 = 7)", 4, {}},
    {any(makeFromText), nullptr, "Constructor(text as string)", 4, {}},
    {any(unmake), nullptr, "Destructor", 4, {}},
};

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

// ---- the class layouts ----

/// Replace the rows of an array by copies that have only the fields of layout 9. The copies are never freed,
/// because the class definition refers to them.
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
    }
    service<void(REALclassDefinition*)>("PluginRegisterClass")(&definition);
}

} // namespace

} // namespace probing

extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALResolver given)
{
    using namespace probing;
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
